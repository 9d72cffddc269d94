#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "mouth/shape_costs.h"

namespace tessarin {

/// What a change costs: two frames of a shape that most of the mouth shows are worth it.
inline constexpr double kChangeCost = 0.4;

/// The shape of each frame on the path of the least cost, where each change costs, too. A shape
/// lasts at least `seen` frames, and `held` frames unless a closed one follows or the track ends.
std::vector<uint32_t> FindShapePath(const ShapeCosts& costs, size_t seen, size_t held);

} // namespace tessarin
