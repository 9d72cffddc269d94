#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "recognition/graph/state_rec.h"

namespace tessarin {

/// Where each state of each observation was entered from, for the way back of a search. A search
/// window has thousands of states, but only those near the best one are alive, and each has few
/// arcs. So a row holds the span of states that were computed, one byte a state: 1 + the number of
/// the arc, or 0 for a state that was passed over. Ten minutes take some ten megabytes where a
/// table of state numbers takes hundreds.
class back_pointer_store {
public:
    static constexpr uint16_t kNotComputed = UINT16_MAX;

    /// `numRows` rows without a computed state. Throws std::bad_alloc, as AddRow does.
    explicit back_pointer_store(size_t numRows) : rows(numRows) {}

    /// Fills row `index`, for a search window that begins at `windowStart`; `arcs` are the arc
    /// numbers of the states from `firstState` on, or kNotComputed. Rows are filled in order, each
    /// once.
    void AddRow(size_t index, uint32_t windowStart, uint32_t firstState,
                std::span<const uint16_t> arcs);

    /// The state from which `state` was entered at observation `index`, or `whenNotComputed`.
    /// States outside the window of `beam` states count as its nearest one.
    uint32_t Predecessor(const state_rec* const* graph, size_t index, uint32_t state, uint32_t beam,
                         uint32_t whenNotComputed) const;

    uint32_t WindowStart(size_t index) const { return rows[index].windowStart; }

private:
    struct row {
        const uint8_t* cells = nullptr;
        uint32_t windowStart = 0;
        uint32_t firstState = 0;
        uint32_t count = 0;
    };
    /// An arc whose number does not fit a cell.
    struct far_arc {
        size_t row;
        uint32_t state;
        uint16_t arc;
    };

    uint8_t* TakeCells(size_t count);
    uint16_t FarArc(size_t index, uint32_t state) const;

    std::vector<row> rows;
    std::vector<far_arc> farArcs; // by row, then state
    std::vector<std::unique_ptr<uint8_t[]>> blocks;
    size_t blockLeft = 0;
    uint8_t* blockNext = nullptr;
};

} // namespace tessarin
