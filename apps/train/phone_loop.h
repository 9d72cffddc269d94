#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "apps/train/state_transitions.h"

namespace tessarin::training {

/// The loop of all phones, which any path through an utterance follows that is heard without a
/// text, in probabilities that are scaled as those of the observations are.
class phone_loop {
public:
    /// Probabilities count with the power `scale`, those of one phone after another with
    /// `followPower` times as much.
    phone_loop(const transition_model& transitions, double scale, double followPower);

    size_t GetNumStates() const { return stay.size(); }

    /// What arrives in each state at an observation, of what was in each at the one before.
    void Forward(const double* before, double* after) const;
    /// What each state leads to at the next observation, where states are worth `after`.
    void Backward(const double* after, double* before) const;

private:
    size_t numPhones;
    std::vector<double> stay;
    std::vector<double> go;
    std::vector<double> follow;
};

/// How the paths through an utterance divide into those that hear it well and the others.
struct path_gains {
    /// For each observation and state: the share of the paths that pass there, times how many more
    /// observations these hear rightly than all paths do on average. So much the utterance gains
    /// with the logarithm of the state's likelihood there.
    std::vector<double> gains;
    /// What a path is worth on average: 1 for each observation in which it has the phone that is
    /// known, and less in silence.
    double worth = 0.0;
};

/// Follows all paths at once, forward and backward. `weights` are the scaled likelihoods of each
/// observation in each state, `known` the states that are known.
path_gains FindGains(const phone_loop& loop, const std::vector<double>& weights,
                     const std::vector<uint16_t>& known);

/// What a path is worth that has `state` where `known` is known.
double FindWorth(size_t state, size_t known);

} // namespace tessarin::training
