#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "base/crit_section.h"
#include "recognition/live/pending_path.h"

namespace tessarin {

/// The observations of one run, between the search that appends them and the flushes that take
/// them. The lock is held for the length of an append or of a trace back.
class heard_frames {
public:
    struct energy_range {
        float lowest = 0.0f;
        float highest = 0.0f;
    };

    explicit heard_frames(CCritSection& lock) : section(lock) {}

    pending_path::row TakeRow(size_t numStates);
    /// Appends an observation; `range` is that of all energies so far.
    void Push(pending_path::row row, uint8_t best, float energy, energy_range range);

    /// Moves the first observations, `Count(pending)` of those that are pending, into `path` and
    /// `pathEnergies`. Returns how many.
    template <class Count>
    size_t TakePath(Count&& count, std::vector<uint8_t>& path, std::vector<float>& pathEnergies) {
        const crit_section_scope scope(section);
        const size_t taken = std::forward<Count>(count)(pending.Size());
        pending.TakePath(taken, path, pathEnergies);
        numPending = pending.Size();
        return taken;
    }
    energy_range GetEnergyRange();

    // These two do not wait for the lock.
    size_t GetNumPending() const { return numPending; }
    uint64_t GetNumHeard() const { return numHeard; }

private:
    CCritSection& section;
    pending_path pending;
    energy_range energies;
    std::atomic<size_t> numPending = 0;
    std::atomic<uint64_t> numHeard = 0;
};

} // namespace tessarin
