#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "model/accoustic_hmm.h"
#include "recognition/graph/transition_lists.h"

namespace tessarin {

/// All non-zero transitions of `model`.
transition_lists AllTransitions(const CAccousticHMM& model);

/// For a model whose states lead to themselves and the next one only: the transitions to try are
/// from the state itself, from the one before and, into a phoneme, from the last state of each.
transition_lists StepTransitions(const CAccousticHMM& model);

/// The scores of the Viterbi algorithm over the loop of all phonemes, observation by observation:
/// linear probabilities, rescaled so that the best of an observation is 1.
template <class Cell> class phone_loop {
public:
    /// With `weighsEntries` a step into a phoneme also has the weight of the model's pairs of
    /// phonemes, where it has such statistics.
    phone_loop(const CAccousticHMM& acousticModel, transition_lists steps,
               bool weighsEntries = false)
        : model(acousticModel), numStates(static_cast<uint32_t>(acousticModel.GetTotalStates())),
          statesPerPhone(static_cast<uint32_t>(acousticModel.numStates)),
          weighs(weighsEntries && !acousticModel.bigrams.empty() &&
                 !acousticModel.unigrams.empty()),
          transitions(std::move(steps)), previous(numStates), current(numStates) {}

    /// Begins with the first observation, `x`: each phoneme is as probable as the others.
    void Seed(const float* x) {
        for (uint32_t s = 0; s < numStates; s += statesPerPhone) {
            previous[s] = Likelihood(x, s) * (1.0 / model.numModels);
        }
    }

    /// Goes on with the observation `x`. `row` has a zeroed cell a state and receives
    /// the states that they are entered from. Returns the cell of the best state.
    Cell Advance(const float* x, Cell* row) {
        double largest = 0.0;
        Cell cellOfLargest = 0;
        for (uint32_t s = 0; s < numStates; ++s) {
            double best = 0.0;
            uint32_t bestSource = 0;
            for (const auto& [from, probability] : transitions.Into(s)) {
                const double value = double{probability} * previous[from];
                if (value > best) { // the first one tried wins a tie
                    best = value;
                    bestSource = from;
                }
            }
            if (best != 0.0) {
                row[s] = static_cast<Cell>(bestSource);
                best *= Likelihood(x, s);
                if (weighs && bestSource != s && s % statesPerPhone == 0) {
                    best *= EntryWeight(bestSource / statesPerPhone, s / statesPerPhone);
                }
            }
            if (best > largest) {
                largest = best;
                cellOfLargest = row[s];
            }
            current[s] = best;
        }
        if (largest != 0.0) {
            for (double& score : current) {
                score /= largest;
            }
        }
        std::swap(previous, current);
        return cellOfLargest;
    }

    /// Of the last observation, one a state.
    const std::vector<double>& GetScores() const { return previous; }

private:
    double Likelihood(const float* x, uint32_t state) const {
        return model.GetStateProbability(x, static_cast<int32_t>(state));
    }
    double EntryWeight(uint32_t from, uint32_t to) const {
        constexpr double kBigramShare = 0.99;
        constexpr double kUnigramShare = 1e-7;
        return double{model.bigrams[from][to]} * kBigramShare +
               double{model.unigrams[to]} * kUnigramShare;
    }

    const CAccousticHMM& model;
    const uint32_t numStates;
    const uint32_t statesPerPhone;
    const bool weighs;
    const transition_lists transitions;
    std::vector<double> previous;
    std::vector<double> current;
};

} // namespace tessarin
