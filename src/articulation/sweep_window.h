#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <queue>
#include <span>
#include <utility>
#include <vector>

namespace tessarin {

/// The items of a list that matter at a moment which only moves forward, in list order. Each item
/// joins when its time comes and leaves for good when it is over, so that a walk over the list at
/// every moment costs no more than a walk over the few items that can matter.
class sweep_window {
public:
    /// Announces item `index`, which joins at time `from`.
    void Add(int32_t index, int64_t from) { awaited.emplace(from, index); }

    /// Moves on to `time`; `isOver(index)` says which items never matter again.
    template <class IsOver> void Advance(int64_t time, IsOver isOver) {
        std::erase_if(live, isOver);
        while (!awaited.empty() && awaited.top().first <= time) {
            const int32_t index = awaited.top().second;
            awaited.pop();
            if (!isOver(index)) {
                live.insert(std::upper_bound(live.begin(), live.end(), index), index);
            }
        }
    }

    /// The indices of the items that matter, rising.
    std::span<const int32_t> Live() const { return live; }

private:
    using awaited_item = std::pair<int64_t, int32_t>;

    std::priority_queue<awaited_item, std::vector<awaited_item>, std::greater<>> awaited;
    std::vector<int32_t> live;
};

} // namespace tessarin
