#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "recognition/markers/flush_markers.h"
#include "tessarin/error_codes.h"

namespace tessarin {

class CAccousticHMM;
class CConcreteSyncMarkerCollection;
class heard_frames;

/// The flushes of one run: takes observations out of what was heard and makes markers of them.
/// Used by one thread at a time.
class live_flusher {
public:
    /// The first observation that `frames` receives is number `firstFrame` since Start.
    live_flusher(const CAccousticHMM& acousticModel, heard_frames& frames, double framePeriodMs,
                 int64_t firstFrame = 0);

    /// The end, in milliseconds since Start, of all but the last `delayMs`; none while less than
    /// twice that is pending.
    std::optional<int64_t> EndBefore(int32_t delayMs) const;
    /// Traces the pending path back, and takes what lies before `endMs` and half of the overlap
    /// out of it. Returns how many observations that is.
    size_t TakePath(int64_t endMs, int32_t overlapMs);
    /// Replaces `results` by the markers of the first `frames` observations of the path that was
    /// taken last, after the tail of the flushes before when there is an overlap.
    error_code BuildMarkers(int32_t frames, int32_t overlapMs,
                            CConcreteSyncMarkerCollection& results);

private:
    const CAccousticHMM& model;
    heard_frames& heard;
    const double periodMs;
    int64_t baseFrame; ///< of the first observation that is pending
    std::vector<uint8_t> path;
    std::vector<float> pathEnergies;
    flush_overlap overlap;
};

} // namespace tessarin
