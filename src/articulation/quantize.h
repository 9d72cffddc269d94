#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "tessarin/articulator.h"

namespace tessarin {

/// The one mouth shape of at most `maxCount` phonemes that stands best for the frames that start
/// from `startMs` up to `endMs` (-1: all): frames count the more the nearer they are to the middle,
/// visible lips count double and silence little. Nothing when there are no such frames.
std::optional<articulation> Quantize(std::span<const articulation> frames, int32_t startMs,
                                     int32_t endMs, int32_t maxCount);

} // namespace tessarin
