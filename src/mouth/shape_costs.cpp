#include "mouth/shape_costs.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace tessarin {

namespace {

/// A mouth that rests for less is on its way from one sound to the next.
constexpr int32_t kPauseMs = 60;
constexpr double kRestInWord = 4.0;

/// Lips rest closed, so rest does not speak against a closed sound, however soft it is; from this
/// weight on it is there.
constexpr double kClosedWeight = 0.1;
/// From this share on lips are shut, which an eye does not miss.
constexpr double kLipsShut = 0.7;
constexpr double kLipsMissed = 8.0;

struct frame_shares {
    std::vector<double> moving; ///< of each shape but rest
    double rest = 0.0;
    double sum = 0.0; ///< of those that move

    bool Rests() const { return rest >= sum; }
};

frame_shares SharesOf(const tessarin_frame& frame, const ShapeMap& map) {
    frame_shares shares{map.Mix(frame)};
    shares.rest = std::exchange(shares.moving[map.GetRest()], 0.0);
    shares.sum = std::accumulate(shares.moving.begin(), shares.moving.end(), 0.0);
    return shares;
}

} // namespace

ShapeCosts::ShapeCosts(std::span<const tessarin_frame> allFrames, const ShapeMap& shapeMap)
    : frames(allFrames), map(shapeMap), isPause(allFrames.size()) {
    FindPauses();
}

void ShapeCosts::FindPauses() {
    for (size_t begin = 0; begin < frames.size();) {
        size_t end = begin;
        while (end < frames.size() && SharesOf(frames[end], map).Rests()) {
            ++end;
        }
        const bool isAtEdge = begin == 0 || end == frames.size();
        if (end > begin &&
            (isAtEdge || int64_t{frames[end - 1].end_ms} - frames[begin].start_ms >= kPauseMs)) {
            std::fill(isPause.begin() + static_cast<std::ptrdiff_t>(begin),
                      isPause.begin() + static_cast<std::ptrdiff_t>(end), true);
        }
        begin = end + 1;
    }
}

void ShapeCosts::Find(size_t frame, std::vector<double>& costs) const {
    const frame_shares shares = SharesOf(frames[frame], map);
    const auto strongest = std::ranges::max_element(shares.moving);
    const auto strongestShape = static_cast<size_t>(strongest - shares.moving.begin());
    const bool isClosed = map.IsClosed(strongestShape) && *strongest >= kClosedWeight;
    // Outside pauses, the weight of rest only says how softly the other shapes are shown.
    const bool counts = isPause[frame] && !isClosed;
    const double whole = counts ? shares.sum + shares.rest : shares.sum;
    costs.assign(map.GetShapes().size(), 1.0);
    for (size_t shape = 0; shape < costs.size() && whole > 0.0; ++shape) {
        costs[shape] -= shares.moving[shape] / whole;
    }
    costs[map.GetRest()] = counts ? 1.0 - shares.rest / whole : kRestInWord;
    if (isClosed && *strongest >= kLipsShut * whole) {
        for (size_t shape = 0; shape < costs.size(); ++shape) {
            costs[shape] += map.IsClosed(shape) ? 0.0 : kLipsMissed;
        }
    }
}

} // namespace tessarin
