#pragma once

#include <cstddef>
#include <vector>

namespace tessarin {

class CAccousticHMM;

/// The log-likelihoods of all states of a model, observation by observation: what several searches
/// over the same audio share.
class state_scores {
public:
    /// A state that cannot have made an observation costs this much and not more, so that one odd
    /// observation does not forbid a path.
    static constexpr float kLowest = -1000.0f;

    explicit state_scores(const CAccousticHMM& acousticModel);

    /// Scores the next observation, `x`. Throws std::bad_alloc.
    void Add(const float* x);

    size_t GetCount() const { return rows.size() / numStates; }
    size_t GetNumStates() const { return numStates; }
    /// One value for each global state of the model.
    const float* operator[](size_t observation) const {
        return rows.data() + observation * numStates;
    }
    /// The largest of them.
    float Best(size_t observation) const;

private:
    const CAccousticHMM& model;
    const size_t numStates;
    std::vector<float> rows;
};

} // namespace tessarin
