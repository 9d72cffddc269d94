#pragma once

#include <vector>

#include "apps/train/labelled_speech.h"
#include "apps/train/state_mixture.h"
#include "apps/train/state_transitions.h"

namespace tessarin::training {

/// Divides the observations of each phone among its states again, in the likeliest way. The phones
/// stay where they are.
void DivideByLikelihood(std::vector<labelled_speech>& speech,
                        const std::vector<state_mixture>& mixtures,
                        const transition_model& transitions, size_t numThreads);

} // namespace tessarin::training
