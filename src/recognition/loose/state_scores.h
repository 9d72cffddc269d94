#pragma once

#include <cstddef>
#include <vector>

#include "recognition/loose/log_scoring.h"

namespace tessarin {

/// The log-likelihoods of all states of a model, observation by observation: what several searches
/// over the same audio share. Those of the past can be dropped; the numbers of the others then
/// begin at 0 again.
class state_scores {
public:
    explicit state_scores(const CAccousticHMM& model)
        : scoring(model), numStates(scoring.GetNumStates()) {}

    /// Scores the next observation, `x`. Throws std::bad_alloc.
    void Add(const float* x);
    /// Scores the next log_scoring::kTogether observations, which is faster.
    void AddTogether(const float* const* x);
    void DropFirst(size_t observations);

    size_t GetCount() const { return rows.size() / numStates; }
    size_t GetNumStates() const { return numStates; }
    /// One value for each global state of the model.
    const float* operator[](size_t observation) const {
        return rows.data() + observation * numStates;
    }
    /// The largest of them.
    float Best(size_t observation) const;

private:
    const log_scoring scoring;
    const size_t numStates;
    std::vector<float> rows;
};

} // namespace tessarin
