#pragma once

#include <cstdint>
#include <vector>

#include "recognition/graph/phone_loop.h"

namespace tessarin {

class CSpectralStream;
class heard_frames;

/// The search of one run, owned by the worker thread: it reads observations and appends what it
/// finds to `heard`.
class live_search {
public:
    live_search(CSpectralStream& observations, phone_loop<uint8_t> phones, heard_frames& frames);

    /// Reads the next observation. Returns whether there is one.
    bool Read();
    /// Begins with the observation that was read.
    void Seed();
    /// Goes on with the observation that was read.
    void Advance();

private:
    void Push(std::vector<uint8_t> row, uint8_t best);

    CSpectralStream& stream;
    phone_loop<uint8_t> loop;
    heard_frames& heard;
    float energy = 0.0f;
    int64_t workedNs = 0;
};

/// What GetPerfCount returns: how long the search that worked last has worked.
int64_t RealtimeSearchNs();

} // namespace tessarin
