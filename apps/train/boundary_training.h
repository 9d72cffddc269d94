#pragma once

#include <cstddef>
#include <vector>

#include "apps/train/labelled_speech.h"
#include "apps/train/state_mixture.h"
#include "apps/train/state_transitions.h"

namespace tessarin::training {

/// Moves the Gaussians so that the known boundaries of phones win over those that an alignment
/// might choose instead: maximum mutual information, the known division against all divisions of
/// the same chain of phones, by the extended Baum-Welch update (Povey: Discriminative training for
/// large vocabulary speech recognition, 2004). Returns for each round the logarithm of the known
/// divisions' share in all, a second of speech on average, before its update.
std::vector<double> TrainBoundaries(const std::vector<labelled_speech>& speech,
                                    const transition_model& transitions,
                                    const std::vector<double>& floors, size_t numRounds,
                                    size_t numThreads, std::vector<state_mixture>& mixtures);

} // namespace tessarin::training
