#include "recognition/graph/log_state_graph.h"

#include <cmath>

#include "model/accoustic_hmm.h"

namespace tessarin {

log_state_graph log_state_graph::FromProbabilities(state_rec* const* records, uint32_t numStates) {
    constexpr float kSmallest = 1e-15f;
    for (uint32_t n = 0; n < numStates; ++n) {
        state_arc* const arcs = records[n]->Arcs();
        for (uint16_t i = 0; i < records[n]->predecessors; ++i) {
            const float probability = arcs[i].probability;
            arcs[i].probability = probability < kSmallest ? static_cast<float>(kImpossibleLog)
                                                          : std::log(probability);
        }
    }
    return {records, numStates};
}

} // namespace tessarin
