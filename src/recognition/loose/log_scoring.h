#pragma once

#include <cstddef>
#include <vector>

namespace tessarin {

class CAccousticHMM;

/// The log-likelihoods of all states of a model at a few observations at once, in single precision:
/// for searches that compare whole paths, to which a thousandth more or less does not matter, and
/// which need every state at every observation. Gaussians that are e^15 times less likely than the
/// best one of their state are left out.
class log_scoring {
public:
    /// Observations are scored together, so that the Gaussians are fetched once for all of them.
    static constexpr size_t kTogether = 4;
    /// A state that cannot have made an observation costs this much and not more, so that one odd
    /// observation does not forbid a path.
    static constexpr float kLowest = -1000.0f;

    explicit log_scoring(const CAccousticHMM& model);

    size_t GetNumStates() const { return states.size(); }
    /// Scores kTogether observations `x`; `out` has a row of GetNumStates() values for each.
    void Score(const float* const* x, float* const* out) const;

private:
    struct state_groups {
        size_t first;
        size_t count;
    };

    size_t numFeatures;
    std::vector<state_groups> states;
    std::vector<float> means;     ///< [group][k][lane]
    std::vector<float> halves;    ///< [group][k][lane]: half the inverse variance
    std::vector<float> constants; ///< [group][lane]: logarithm of weight and norm
    size_t mostGroups = 0;        ///< of one state
};

} // namespace tessarin
