#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "articulation/markers/phn_marker_list.h"
#include "articulation/phoneme_label.h"
#include "articulation/phoneme_mixture.h"

namespace tessarin {

/// A stretch of sounds that close the lips, in frames.
struct closure {
    std::set<phoneme_label> labels;
    int32_t first_frame;
    int32_t start_ms;
    int32_t end_ms;
    int32_t last_frame; ///< exclusive
    int32_t previous_last_frame;
    int32_t next_first_frame;
    int32_t peak_frame; ///< the frame in which the closure shows best, or -1
    double best_score;
};

/// Makes every closure visible: where the mixture has swallowed it, about `wanted` frames around
/// its peak lose everything but the closed sounds and silence. Frame 0 is at time 0.
void ForceClosures(const phn_marker_list& phonemes, const std::set<phoneme_label>& closedSet,
                   float frameMs, int32_t wanted, std::vector<phoneme_mixture>& frames);

} // namespace tessarin
