#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "mouth/shape_map.h"
#include "tessarin/tessarin_c.h"

namespace tessarin {

/// One mouth shape at a time, as 2-D tools show it: the first entry is rest at 0 ms, and each shape
/// stays until the next one. Of all sequences that hold every shape for 50 ms, rounded up to whole
/// frames, and for `holdMs` unless closed lips come, the one that stands best for the frames: it
/// shows what the weights hold, changes seldom, rests only in pauses and leaves out no closed lips.
std::vector<tessarin_switch> FindSwitches(std::span<const tessarin_frame> frames,
                                          const ShapeMap& map, int32_t holdMs);

} // namespace tessarin
