#include "recognition/loose/state_scores.h"

#include <algorithm>

namespace tessarin {

void state_scores::Add(const float* x) {
    const size_t before = rows.size();
    const float* const same[log_scoring::kTogether] = {x, x, x, x};
    AddTogether(same);
    rows.resize(before + numStates);
}

void state_scores::AddTogether(const float* const* x) {
    const size_t before = rows.size();
    rows.resize(before + log_scoring::kTogether * numStates);
    float* out[log_scoring::kTogether];
    for (size_t i = 0; i < log_scoring::kTogether; ++i) {
        out[i] = rows.data() + before + i * numStates;
    }
    scoring.Score(x, out);
}

void state_scores::DropFirst(size_t observations) {
    rows.erase(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(observations * numStates));
}

float state_scores::Best(size_t observation) const {
    const float* const row = (*this)[observation];
    return *std::max_element(row, row + numStates);
}

} // namespace tessarin
