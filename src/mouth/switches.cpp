#include "mouth/switches.h"

#include <algorithm>
#include <cstddef>

#include "mouth/shape_costs.h"
#include "mouth/switch_path.h"

namespace tessarin {

namespace {

/// Less is not seen as a shape, but as a flicker.
constexpr int32_t kSeenMs = 50;

/// How many frames last `ms`, by the length of the first one.
size_t FramesOf(int32_t ms, const tessarin_frame& first) {
    const int64_t lengthMs = std::max<int64_t>(int64_t{first.end_ms} - first.start_ms, 1);
    return static_cast<size_t>(std::max<int64_t>((ms + lengthMs - 1) / lengthMs, 1));
}

} // namespace

std::vector<tessarin_switch> FindSwitches(std::span<const tessarin_frame> frames,
                                          const ShapeMap& map, int32_t holdMs) {
    std::vector<tessarin_switch> switches = {{0, static_cast<uint32_t>(map.GetRest())}};
    if (frames.empty()) {
        return switches;
    }
    const size_t seen = FramesOf(kSeenMs, frames.front());
    const size_t held = std::max(FramesOf(holdMs, frames.front()), seen);
    const std::vector<uint32_t> path = FindShapePath(ShapeCosts(frames, map), seen, held);
    for (size_t i = 0; i < frames.size(); ++i) {
        tessarin_switch& last = switches.back();
        if (path[i] == last.shape) {
            continue;
        }
        if (frames[i].start_ms <= last.start_ms) {
            last.shape = path[i];
        } else {
            switches.push_back({frames[i].start_ms, path[i]});
        }
    }
    return switches;
}

} // namespace tessarin
