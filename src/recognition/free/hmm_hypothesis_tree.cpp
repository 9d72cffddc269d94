#include "recognition/free/hmm_hypothesis_tree.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "base/allocation.h"

namespace tessarin {

CHmmHypothesisTree::CHmmHypothesisTree(int32_t growthStep)
    : step(growthStep < 1 ? kGrowthStep : growthStep) {}

CHmmHypothesisTree::~CHmmHypothesisTree() {
    tessarin::free(array);
}

bool CHmmHypothesisTree::AddRoot(uint16_t phone, double score, uint16_t state) {
    hmm_hypothesis* place = Take();
    if (place == nullptr) {
        return false;
    }
    *place = {
        .phone = phone, .score = score, .state = state, .parent = -1, .ended = -1, .frames = 1};
    return true;
}

bool CHmmHypothesisTree::AddChild(const hmm_hypothesis& parent, int32_t parentIndex, uint16_t phone,
                                  double score, uint16_t state) {
    const bool stays = parent.phone == phone;
    const hmm_hypothesis child{.phone = phone,
                               .score = score,
                               .state = state,
                               .parent = parentIndex,
                               .ended = stays ? parent.ended : parentIndex,
                               .frames =
                                   stays ? static_cast<uint16_t>(parent.frames + 1) : uint16_t{1}};
    hmm_hypothesis* place = Take(); // may move the parent
    if (place == nullptr) {
        return false;
    }
    *place = child;
    return true;
}

void CHmmHypothesisTree::Compact() {
    const int32_t live = std::max(count - firstLive, 0);
    if (live > 0) {
        // Kept: as many bytes are moved as there are live hypotheses; only their number and that
        // they are roots hold afterwards, and callers count on no more.
        std::memmove(static_cast<void*>(array), array + firstLive, static_cast<size_t>(live));
    }
    count = live;
    firstLive = 0;
    for (int32_t i = 0; i < live; ++i) {
        array[i].parent = -1;
        array[i].ended = -1;
    }
}

int32_t CHmmHypothesisTree::DropDeadEnds() {
    constexpr int32_t kNowhere = -1;
    std::vector<int32_t> places(static_cast<size_t>(count), kNowhere);
    const auto placeOf = [&](int32_t index) -> int32_t& {
        return places[static_cast<size_t>(index)];
    };
    for (int32_t i = count - 1; i >= 0; --i) {
        const bool stays = i >= firstLive || placeOf(i) != kNowhere;
        placeOf(i) = stays ? i : kNowhere;
        if (stays && array[i].parent >= 0) {
            placeOf(array[i].parent) = array[i].parent;
        }
    }
    int32_t kept = 0;
    for (int32_t i = 0; i < count; ++i) {
        if (placeOf(i) == kNowhere) {
            continue;
        }
        placeOf(i) = kept;
        hmm_hypothesis& moved = array[kept++];
        moved = array[i];
        moved.parent = moved.parent < 0 ? -1 : placeOf(moved.parent);
        moved.ended = moved.ended < 0 ? -1 : placeOf(moved.ended); // it is one of the ancestors
    }
    const int32_t dropped = count - kept;
    count = kept;
    firstLive = std::max(firstLive - dropped, 0);
    return dropped;
}

bool CHmmHypothesisTree::Reserve(int32_t additional) {
    const int64_t wanted = int64_t{count} + additional;
    if (wanted < capacity) {
        return true;
    }
    return wanted < std::numeric_limits<int32_t>::max() && Grow(static_cast<int32_t>(wanted + 1));
}

bool CHmmHypothesisTree::Grow(int32_t wanted) {
    int64_t grown = int64_t{capacity} + step;
    if (grown < wanted) {
        grown += (wanted - grown + step - 1) / step * step;
    }
    if (grown > std::numeric_limits<int32_t>::max()) {
        return false;
    }
    void* moved = tessarin::realloc(array, static_cast<size_t>(grown) * sizeof(hmm_hypothesis));
    if (moved == nullptr) {
        return false;
    }
    array = static_cast<hmm_hypothesis*>(moved);
    capacity = static_cast<int32_t>(grown);
    return true;
}

hmm_hypothesis* CHmmHypothesisTree::Take() {
    if (count >= capacity) {
        const int64_t wanted = int64_t{count} + step;
        if (wanted > std::numeric_limits<int32_t>::max() || !Grow(static_cast<int32_t>(wanted))) {
            return nullptr;
        }
    }
    return array + count++;
}

} // namespace tessarin
