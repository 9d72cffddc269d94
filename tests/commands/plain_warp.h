#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "commands/time_warp.h"

namespace tessarin::test {

/// Time warping by its definition: the whole table of costs, the whole table of back-pointers, and
/// a walk through it.
class plain_warp {
public:
    /// `distances[i][j]` of row frame i and column frame j.
    explicit plain_warp(std::vector<std::vector<float>> distances) : d(std::move(distances)) {
        costs = d;
        from.assign(d.size(), std::vector<std::pair<size_t, size_t>>(d[0].size()));
        for (size_t i = 0; i < d.size(); ++i) {
            for (size_t j = 0; j < d[0].size(); ++j) {
                sum += d[i][j];
                FillCell(i, j);
            }
        }
    }

    size_t CheapestColumn() const {
        size_t cheapest = d[0].size() - 1;
        float lowest = kNoWarpDistance;
        for (size_t j = 0; j < d[0].size(); ++j) {
            if (costs.back()[j] < lowest) {
                lowest = costs.back()[j];
                cheapest = j;
            }
        }
        return cheapest;
    }

    float Distance(size_t pathColumn) const {
        std::pair<size_t, size_t> place(d.size() - 1, pathColumn);
        int steps = 0;
        for (; place != std::pair<size_t, size_t>(0, 0); ++steps) {
            place = from[place.first][place.second];
        }
        const auto cells = static_cast<float>(d.size() * d[0].size());
        return costs.back().back() / (static_cast<float>(steps) * (sum / cells));
    }

private:
    void FillCell(size_t i, size_t j) {
        if (i == 0 && j == 0) {
            return;
        }
        const float up = i > 0 ? costs[i - 1][j] : kNoWarpDistance;
        const float diagonal = i > 0 && j > 0 ? costs[i - 1][j - 1] : kNoWarpDistance;
        const float left = j > 0 ? costs[i][j - 1] : kNoWarpDistance;
        if (diagonal <= up || left <= up) {
            if (diagonal <= left || up <= left) {
                costs[i][j] = d[i][j] + diagonal;
                from[i][j] = {i - 1, j - 1};
            } else {
                costs[i][j] = d[i][j] + left;
                from[i][j] = {i, j - 1};
            }
        } else {
            costs[i][j] = d[i][j] + up;
            from[i][j] = {i - 1, j};
        }
    }

    std::vector<std::vector<float>> d;
    std::vector<std::vector<float>> costs;
    std::vector<std::vector<std::pair<size_t, size_t>>> from;
    float sum = 0.0f;
};

} // namespace tessarin::test
