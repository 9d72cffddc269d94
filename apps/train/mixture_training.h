#pragma once

#include <cstddef>
#include <vector>

#include "apps/train/labelled_speech.h"
#include "apps/train/state_mixture.h"

namespace tessarin::training {

/// What all observations have in common.
struct observation_statistics {
    std::vector<double> mean;
    std::vector<double> variance;
};
observation_statistics MeasureObservations(const std::vector<labelled_speech>& speech);

/// Makes the mixtures of all states from the observations that each has, by splitting: one
/// Gaussian becomes two, those four and so on, with a few rounds of expectation maximisation in
/// between. States get about `numGaussians` each and the broad one, the more the more observations
/// they have.
std::vector<state_mixture> TrainMixtures(const std::vector<labelled_speech>& speech,
                                         const observation_statistics& statistics, size_t numStates,
                                         size_t numGaussians, size_t numThreads);

} // namespace tessarin::training
