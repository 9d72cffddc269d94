#include "commands/time_warp.h"

#include <cmath>

namespace tessarin {
namespace {

/// The cell that a path comes from. Costs are compared as "not above", so that a cost that is not a
/// number is passed on like any other, and the diagonal is preferred on ties.
template <class Cell> const Cell& Cheapest(const Cell& up, const Cell& diagonal, const Cell& left) {
    const auto isAbove = [](const Cell& a, const Cell& b) { return a.cost > b.cost; };
    if (isAbove(diagonal, up) && isAbove(left, up)) {
        return up;
    }
    return isAbove(diagonal, left) && isAbove(up, left) ? left : diagonal;
}

} // namespace

float FrameDistance(const float* a, const float* b, int32_t count) {
    float sum = 0.0f;
    for (int32_t k = 0; k < count; ++k) {
        const float difference = a[k] - b[k];
        sum += difference * difference;
    }
    return std::sqrt(sum);
}

void time_warp::AddRow(std::span<const float> distances) {
    const bool isFirstRow = rows == 0;
    if (isFirstRow) {
        lastRow.resize(distances.size());
    }
    cell diagonal{};
    for (size_t j = 0; j < distances.size(); ++j) {
        const cell up = lastRow[j];
        cell from{};
        if (isFirstRow) {
            from = j > 0 ? lastRow[j - 1] : cell{};
        } else {
            from = j > 0 ? Cheapest(up, diagonal, lastRow[j - 1]) : up;
        }
        const bool isOrigin = isFirstRow && j == 0;
        lastRow[j] = {from.cost + distances[j], from.steps + (isOrigin ? 0 : 1)};
        distanceSum += distances[j];
        diagonal = up;
    }
    ++rows;
}

void time_warp::Reset() {
    lastRow.clear();
    rows = 0;
    distanceSum = 0.0f;
}

size_t time_warp::CheapestColumn() const {
    size_t cheapest = lastRow.size() - 1;
    float cost = kNoWarpDistance;
    for (size_t j = 0; j < lastRow.size(); ++j) {
        if (lastRow[j].cost < cost) {
            cost = lastRow[j].cost;
            cheapest = j;
        }
    }
    return cheapest;
}

float time_warp::Distance(size_t pathColumn) const {
    const auto cells = static_cast<float>(uint64_t{rows} * lastRow.size());
    const auto steps = static_cast<float>(lastRow[pathColumn].steps);
    return lastRow.back().cost / (steps * (distanceSum / cells));
}

} // namespace tessarin
