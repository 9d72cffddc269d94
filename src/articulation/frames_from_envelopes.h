#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "articulation/phoneme_mixture.h"
#include "tessarin/articulator.h"

namespace tessarin {

/// No run makes more frames than this: a day at 30 frames a second.
inline constexpr int32_t kMostFrames = 24 * 60 * 60 * 30;

/// Samples curves at the frames of `frameMs` milliseconds, the first of which is at time 0. What a
/// frame lacks to a sum of 1 is silence.
std::vector<phoneme_mixture> SampleEnvelopes(std::span<const articulation_envelope> envelopes,
                                             float frameMs);

} // namespace tessarin
