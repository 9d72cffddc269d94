#pragma once

#include <cstddef>
#include <vector>

#include "apps/train/labelled_speech.h"
#include "apps/train/state_mixture.h"
#include "apps/train/state_transitions.h"

namespace tessarin::training {

/// Moves the Gaussians so that more is heard rightly without a text: the frames of phones are
/// counted that all paths through the free loop of phones have right, each path by its share
/// (minimum phone frame error: Zheng and Stolcke, Improved discriminative training using phone
/// lattices, 2005). In the loop one phone follows another as often as in the speech. All rounds
/// together go through the speech once. Returns for each the share of the observations of its part
/// that are heard rightly, those of silence counting less, before its update.
std::vector<double> TrainPhones(const std::vector<labelled_speech>& speech,
                                const transition_model& transitions,
                                const std::vector<double>& floors, size_t numRounds,
                                size_t numThreads, std::vector<state_mixture>& mixtures);

} // namespace tessarin::training
