#include "recognition/aligner/back_pointer_store.h"

#include <algorithm>
#include <tuple>

namespace tessarin {
namespace {

constexpr size_t kBlockBytes = size_t{1} << 18;
constexpr uint8_t kEmptyCell = 0;
constexpr uint8_t kFarCell = 255; // the arc's number stands in the list of far arcs
constexpr uint16_t kMaxNearArc = 253;

} // namespace

void back_pointer_store::AddRow(size_t index, uint32_t windowStart, uint32_t firstState,
                                std::span<const uint16_t> arcs) {
    uint8_t* cells = TakeCells(arcs.size());
    for (size_t i = 0; i < arcs.size(); ++i) {
        const uint16_t arc = arcs[i];
        if (arc == kNotComputed) {
            cells[i] = kEmptyCell;
        } else if (arc <= kMaxNearArc) {
            cells[i] = static_cast<uint8_t>(arc + 1);
        } else {
            cells[i] = kFarCell;
            farArcs.push_back({index, firstState + static_cast<uint32_t>(i), arc});
        }
    }
    rows[index] = {cells, windowStart, firstState, static_cast<uint32_t>(arcs.size())};
}

uint32_t back_pointer_store::Predecessor(const state_rec* const* graph, size_t index,
                                         uint32_t state, uint32_t beam,
                                         uint32_t whenNotComputed) const {
    const row& at = rows[index];
    const uint32_t inside = std::clamp(state, at.windowStart, at.windowStart + (beam - 1));
    if (inside < at.firstState || inside - at.firstState >= at.count) {
        return whenNotComputed;
    }
    const uint8_t cell = at.cells[inside - at.firstState];
    if (cell == kEmptyCell) {
        return whenNotComputed;
    }
    const uint16_t arc = cell == kFarCell ? FarArc(index, inside) : static_cast<uint16_t>(cell - 1);
    return graph[inside]->Arcs()[arc].state;
}

uint8_t* back_pointer_store::TakeCells(size_t count) {
    if (count > blockLeft) {
        const size_t bytes = std::max(kBlockBytes, count);
        blocks.push_back(std::make_unique_for_overwrite<uint8_t[]>(bytes));
        blockNext = blocks.back().get();
        blockLeft = bytes;
    }
    uint8_t* cells = blockNext;
    blockNext += count;
    blockLeft -= count;
    return cells;
}

uint16_t back_pointer_store::FarArc(size_t index, uint32_t state) const {
    const auto before = [](const far_arc& a, const std::tuple<size_t, uint32_t>& key) {
        return std::tie(a.row, a.state) < key;
    };
    return std::lower_bound(farArcs.begin(), farArcs.end(), std::tuple(index, state), before)->arc;
}

} // namespace tessarin
