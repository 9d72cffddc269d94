#include "mouth/switches.h"

namespace tessarin {

std::vector<tessarin_switch> FindSwitches(std::span<const tessarin_frame> frames,
                                          const ShapeMap& map, int32_t holdMs) {
    std::vector<tessarin_switch> switches = {{0, static_cast<uint32_t>(map.GetRest())}};
    for (const tessarin_frame& frame : frames) {
        const auto shape = static_cast<uint32_t>(map.FindStrongest(frame));
        tessarin_switch& last = switches.back();
        if (shape == last.shape) {
            continue;
        }
        const bool isHeld = int64_t{frame.start_ms} - last.start_ms < holdMs;
        if (frame.start_ms <= last.start_ms) {
            last.shape = shape;
        } else if (!isHeld || (map.IsClosed(shape) && !map.IsClosed(last.shape))) {
            switches.push_back({frame.start_ms, shape});
        }
    }
    return switches;
}

} // namespace tessarin
