#pragma once

#include <cstdint>
#include <vector>

#include "recognition/graph/phone_loop.h"
#include "recognition/observation_source.h"

namespace tessarin {

class CSpectralStream;
class heard_frames;

/// The search of one run, owned by the worker thread: it reads observations and appends what it
/// finds to `heard`.
class live_search {
public:
    /// The model of `phones` scores `featureCount` values of each observation.
    live_search(CSpectralStream& observations, int32_t featureCount, phone_loop<uint8_t> phones,
                heard_frames& frames);

    /// To be called first; the code of observation_source::Open.
    [[nodiscard]] error_code Open() { return source.Open(nullptr); }

    /// Reads the next observation. Returns whether there is one.
    bool Read();
    /// Begins with the observation that was read.
    void Seed();
    /// Goes on with the observation that was read.
    void Advance();

private:
    void Push(std::vector<uint8_t> row, uint8_t best);

    CSpectralStream& stream;
    observation_source source;
    phone_loop<uint8_t> loop;
    heard_frames& heard;
    int64_t workedNs = 0;
};

/// What GetPerfCount returns: how long the search that worked last has worked.
int64_t RealtimeSearchNs();

} // namespace tessarin
