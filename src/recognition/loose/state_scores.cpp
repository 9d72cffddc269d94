#include "recognition/loose/state_scores.h"

#include <algorithm>
#include <cmath>

#include "model/accoustic_hmm.h"

namespace tessarin {

state_scores::state_scores(const CAccousticHMM& acousticModel)
    : model(acousticModel), numStates(static_cast<size_t>(acousticModel.GetTotalStates())) {}

void state_scores::Add(const float* x) {
    for (size_t state = 0; state < numStates; ++state) {
        const double likelihood = model.GetStateProbability(x, static_cast<int32_t>(state));
        rows.push_back(std::max(static_cast<float>(std::log(likelihood)), kLowest));
    }
}

float state_scores::Best(size_t observation) const {
    const float* const row = (*this)[observation];
    return *std::max_element(row, row + numStates);
}

} // namespace tessarin
