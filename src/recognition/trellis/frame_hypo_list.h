#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tessarin {

/// One state that is alive at an observation.
struct frame_hypo {
    uint32_t state;
    uint32_t predecessor;
    double score;
};

/// The best hypotheses of one observation, at most as many as it has room for.
class FrameHypoList {
public:
    static constexpr uint32_t kPruned = 0xFFFFFFFF; ///< in place of the state

    /// Throws std::bad_alloc.
    explicit FrameHypoList(int32_t room) : entries(static_cast<size_t>(room)) {}

    void Clear() { count = 0; }
    bool IsEmpty() const { return count == 0; }
    /// All entries, pruned ones too.
    std::span<const frame_hypo> Entries() const {
        return {entries.data(), static_cast<size_t>(count)};
    }
    uint32_t BestState() const { return entries[static_cast<size_t>(best)].state; }

    /// Takes a hypothesis if there is room for it, or in place of the worst one, the first of
    /// equals, if it is better.
    void Insert(const frame_hypo& hypo) {
        if (count < static_cast<int32_t>(entries.size())) {
            Put(count++, hypo);
            if (count == 1 || hypo.score < worstScore) {
                worst = count - 1;
                worstScore = hypo.score;
            }
        } else if (hypo.score > worstScore) {
            Put(worst, hypo);
            FindWorst();
        }
    }

    /// Marks what lies more than `beam` below the best; `beam` is negative, and nothing is marked
    /// otherwise.
    void Prune(double beam) {
        if (!(beam < 0.0)) {
            return;
        }
        for (int32_t i = 0; i < count; ++i) {
            frame_hypo& entry = entries[static_cast<size_t>(i)];
            if (entry.score < bestScore + beam) {
                entry.state = kPruned;
            }
        }
    }

private:
    void Put(int32_t place, const frame_hypo& hypo) {
        entries[static_cast<size_t>(place)] = hypo;
        if (count == 1 || hypo.score > bestScore) {
            best = place;
            bestScore = hypo.score;
        }
    }

    void FindWorst() {
        worst = 0;
        worstScore = entries[0].score;
        for (int32_t i = 1; i < count; ++i) {
            if (entries[static_cast<size_t>(i)].score < worstScore) {
                worst = i;
                worstScore = entries[static_cast<size_t>(i)].score;
            }
        }
    }

    std::vector<frame_hypo> entries;
    int32_t count = 0;
    int32_t worst = 0;
    double bestScore = 0.0;
    int32_t best = 0;
    double worstScore = 0.0;
};

} // namespace tessarin
