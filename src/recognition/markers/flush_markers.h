#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/tarray.h"
#include "recognition/markers/amplitude_scale.h"
#include "tessarin/error_codes.h"
#include "tessarin/sync_results.h"

namespace tessarin {

class CAccousticHMM;

/// Replaces `results` by the phonemes of a stretch of live audio: `path` has the model state of
/// each of its observations, `periodMs` apart, from which times count. Scores are whole percents.
/// With `stateMarkers` phonemes are followed by their segments. Returns 1 without memory.
///
/// Kept, for hosts that distinguish sounds by what follows a phoneme: its first segment only lends
/// it its score; a segment as strong as the one before it is left out; the last phoneme has none,
/// since it goes on in the next stretch.
[[nodiscard]] error_code GenerateFlushMarkers(std::span<const uint8_t> path,
                                              const CAccousticHMM& model,
                                              const amplitude_scale& amplitudes, double periodMs,
                                              bool stateMarkers, TArray<CSyncMarker>& results);

/// The markers that consecutive flushes have in common, so that whoever draws one flush at a time
/// sees how it begins.
class flush_overlap {
public:
    /// Puts the last half of `overlapMs` of what came before in front of the new markers in
    /// `results`, and has their times begin at 0. Returns 1 without memory.
    [[nodiscard]] error_code Join(int32_t overlapMs, TArray<CSyncMarker>& results);

private:
    std::vector<CSyncMarker> history;
};

} // namespace tessarin
