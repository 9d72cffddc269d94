#pragma once

#include <cstddef>
#include <vector>

#include "apps/train/labelled_speech.h"

namespace tessarin::training {

/// What the labels say about the order of phones.
struct transition_model {
    /// For each global state, the probability to stay.
    std::vector<double> stay;
    /// For each pair of phones, the probability of the second after the first. None is 0.
    std::vector<std::vector<double>> follow;
};

/// Counts stays and successions in the unchanged speech.
transition_model CountTransitions(const std::vector<labelled_speech>& speech, size_t numPhones);

} // namespace tessarin::training
