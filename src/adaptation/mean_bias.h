#pragma once

#include <array>
#include <span>
#include <vector>

#include "adaptation/gaussian_pool.h"

namespace tessarin {

class CAccousticHMM;

/// By how much a voice and its microphone lie apart from those of a model.
struct mean_bias {
    /// What is added to each mean: a value a feature, for each sound_class. Differences over time
    /// have 0.
    std::array<std::vector<double>, kSoundClasses> values;
    /// By how much the logarithm of the likelihood of an observation is greater with it, on
    /// average: about 0.3 for a voice that the model knows, 1.3 to 1.7 for a stranger, 6 and more
    /// by telephone.
    double gain = 0.0;
};

/// Estimates the bias of `observations`, one after the other, from the model alone: stochastic
/// matching in the feature space, without a text and without a search first (Sankar and Lee,
/// "A maximum-likelihood approach to stochastic matching for robust speech recognition", 1996).
/// Observations that are not finite are left out.
mean_bias FindMeanBias(const CAccousticHMM& model, std::span<const float> observations);

/// Adds a bias to the means of a model.
void AddMeanBias(const mean_bias& bias, CAccousticHMM& model);

} // namespace tessarin
