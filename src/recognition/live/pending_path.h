#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace tessarin {

/// What a search that goes on has found and nobody has asked for yet: a row of back-pointers for
/// each observation, from which the path is traced back piece by piece. Rows are used again. An
/// operation that runs out of memory throws and changes nothing. Not locked.
class pending_path {
public:
    using row = std::vector<uint8_t>;

    /// A zeroed row of `numStates` cells.
    row TakeRow(size_t numStates);
    /// Appends an observation: its back-pointers, that of its best state, and its energy.
    void Push(row backPointers, uint8_t best, float energy);
    /// Traces the best path back from the last observation to the first, and moves the first
    /// `count` observations out of it. `path` and `pathEnergies` receive those.
    void TakePath(size_t count, std::vector<uint8_t>& path, std::vector<float>& pathEnergies);

    size_t Size() const { return observations.size(); }

private:
    struct observation {
        row backPointers;
        uint8_t best;
        float energy;
    };

    std::deque<observation> observations;
    std::vector<row> spareRows;
};

} // namespace tessarin
