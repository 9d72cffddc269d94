#pragma once

#include <cstdint>

#include "recognition/graph/state_rec.h"

namespace tessarin {

/// A search graph whose arcs carry logarithms of probabilities. Only the searches that add take it;
/// those that multiply take the plain records, so that no search is given the wrong one.
class log_state_graph {
public:
    log_state_graph() = default;

    /// Turns the probabilities of a plain graph of `numStates` states into logarithms, in place: no
    /// other search may read its records any more, and it is turned only once. A probability below
    /// 1e-15 becomes -1e10. The records stay where they are and must outlive the result.
    static log_state_graph FromProbabilities(state_rec* const* records, uint32_t numStates);

    const state_rec& operator[](uint32_t state) const { return *states[state]; }
    uint32_t GetNumStates() const { return count; }

private:
    log_state_graph(const state_rec* const* records, uint32_t numStates)
        : states(records), count(numStates) {}

    const state_rec* const* states = nullptr;
    uint32_t count = 0;
};

} // namespace tessarin
