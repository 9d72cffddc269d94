#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "mouth/shape_map.h"
#include "tessarin/tessarin_c.h"

namespace tessarin {

/// One mouth shape at a time, as 2-D tools show it: the first entry is rest at 0 ms, and each shape
/// stays until the next one. A switch stays at least `holdMs`, unless closed lips come.
std::vector<tessarin_switch> FindSwitches(std::span<const tessarin_frame> frames,
                                          const ShapeMap& map, int32_t holdMs);

} // namespace tessarin
