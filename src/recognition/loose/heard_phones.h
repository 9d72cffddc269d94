#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessarin {

class CAccousticHMM;
class state_scores;

/// What is heard in audio without a text: the best path through a loop of all phones.
struct heard_phones {
    std::vector<uint16_t> states; ///< of the model, one for each observation
    std::vector<float> scores;    ///< log-likelihoods of the observations in these states

    bool IsSilence(size_t observation, int32_t statesPerPhone) const {
        return int32_t{states[observation]} < statesPerPhone;
    }
};

/// The Viterbi algorithm over the loop of all phones. Entering a phone costs the logarithm of their
/// number and a little more, which keeps the path from changing phones at every observation.
heard_phones HearPhones(const CAccousticHMM& model, const state_scores& scores);

/// How far the best state of each observation, silence left out, is above the path that was heard.
/// Sums, so that stretches of a recording add up.
struct heard_distance {
    double sum = 0.0;
    size_t count = 0;

    /// Adds the first `observations` of a stretch.
    void Add(const CAccousticHMM& model, const state_scores& scores, const heard_phones& heard,
             size_t observations);
    /// By how much the model's log-likelihoods differ more from path to path than they do for the
    /// voices that it was trained on: 1 for these, up to 2.2 for strangers and bad microphones. No
    /// text is needed to know it. 1 when there is nothing but silence.
    double Spread() const;
};

} // namespace tessarin
