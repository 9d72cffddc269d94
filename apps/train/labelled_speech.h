#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "apps/train/corpus.h"
#include "apps/train/observations.h"

namespace tessarin::training {

inline constexpr size_t kStates = 3; ///< of a phoneme

/// A phone of an utterance and its observations.
struct phone_run {
    size_t phone;
    size_t first;
    size_t count;
};

/// Observations of which it is known what phone, and supposed which of its states, each belongs to.
struct labelled_speech {
    observation_matrix observations;
    std::vector<phone_run> runs; ///< one after the other, without gaps
    std::vector<uint16_t> state; ///< global state of each observation
    bool isChanged = false;      ///< a changed copy
};

/// Finds the observations of each phone. Those of a copy that is spoken `speed` times as fast come
/// earlier. A phone gets at least one observation a state, at the cost of its neighbours. Returns
/// no runs when there are too few observations for that.
std::vector<phone_run> FindRuns(const std::vector<phone_interval>& phones, double speed,
                                size_t numObservations);

/// Cuts each phone into equal parts, one a state.
void DivideEvenly(labelled_speech& speech);

} // namespace tessarin::training
