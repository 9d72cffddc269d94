#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessarin {

/// One entry of a path into a sentence. The path takes it along until it leaves the sentence.
struct word_path {
    static constexpr uint32_t kNone = 0xFFFFFFFF;

    uint32_t span = kNone; ///< number of the sentence; kNone outside of all
    uint32_t frame = 0;
    double score = 0.0;

    bool IsInside() const { return span != kNone; }
};

/// The live hypothesis of one graph state.
struct pw_hype {
    uint32_t state;
    uint8_t acousticState;
    double score;
    word_path path;
};

/// The best hypotheses of an observation, found without sorting: a list with links both ways, whose
/// lowest goes when it is full.
///
/// Kept: the links upwards pass by nodes that came in between two others. Insertion walks them, so
/// it is fast, the order is not quite that of the scores, and what stands between the lowest node
/// and its upper neighbour is lost together with the lowest. A search with room for all states does
/// not notice; in a narrow one, which hypotheses live depends on it.
class TopHypoList {
public:
    struct node {
        pw_hype hype;
        node* down;
        node* up;
    };

    /// Throws std::bad_alloc.
    explicit TopHypoList(size_t room) : capacity(room), nodes(room + 2) { Clear(); }
    TopHypoList(const TopHypoList&) = delete;
    TopHypoList& operator=(const TopHypoList&) = delete;

    /// The first one of a walk along `down`; null when the list is empty.
    const node* Highest() const { return highest; }

    void Insert(const pw_hype& hype) {
        if (count > capacity && !(hype.score > lowest->hype.score)) {
            return;
        }
        node* added = free;
        free = added->down;
        added->hype = hype;
        ++count;
        node* above = lowest;
        while (above != nullptr && above->hype.score < hype.score) {
            above = above->up;
        }
        if (above != nullptr) {
            LinkBelow(above, added);
        } else {
            LinkHighest(added);
        }
        if (count > capacity) {
            DropLowest();
        }
    }

    /// Empties the list. Nodes that it has lost come back.
    void Clear() {
        highest = nullptr;
        lowest = nullptr;
        count = 0;
        free = nullptr;
        for (node& each : nodes) {
            each.down = free;
            free = &each;
        }
    }

private:
    void LinkBelow(node* above, node* added) {
        added->up = above;
        added->down = above->down;
        above->down = added;
        if (added->down == nullptr) {
            lowest = added;
        }
    }

    void LinkHighest(node* added) {
        added->up = nullptr;
        added->down = highest;
        if (highest != nullptr) {
            highest->up = added;
        } else {
            lowest = added;
        }
        highest = added;
    }

    /// What is lost here is still counted, so that the nodes always suffice.
    void DropLowest() {
        --count;
        node* dropped = lowest;
        lowest = dropped->up;
        if (lowest != nullptr) {
            lowest->down = nullptr;
        } else {
            highest = nullptr;
        }
        dropped->down = free;
        free = dropped;
    }

    size_t capacity;
    std::vector<node> nodes;
    node* highest = nullptr;
    node* lowest = nullptr;
    node* free = nullptr;
    size_t count = 0;
};

} // namespace tessarin
