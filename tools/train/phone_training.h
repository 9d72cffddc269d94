#pragma once

#include <cstddef>
#include <vector>

#include "tools/train/labelled_speech.h"
#include "tools/train/state_mixture.h"
#include "tools/train/state_transitions.h"

namespace tessarin::training {

/// Moves the Gaussians so that the phones that are said win over all others that could be heard
/// without a text: maximum mutual information, the known division against the free loop of all
/// phones, in which one follows another as often as in the speech. All rounds together go through
/// the speech once. Returns for each the mean share that the known state has in an observation of
/// its part, before its update.
std::vector<double> TrainPhones(const std::vector<labelled_speech>& speech,
                                const transition_model& transitions,
                                const std::vector<double>& floors, size_t numRounds,
                                size_t numThreads, std::vector<state_mixture>& mixtures);

} // namespace tessarin::training
