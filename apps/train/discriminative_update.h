#pragma once

#include <cstddef>
#include <vector>

#include "apps/train/state_mixture.h"

namespace tessarin::training {

/// A share of an observation below this changes nothing.
inline constexpr double kNegligibleShare = 1e-4;

/// Sums for and against each Gaussian of each state: what the observations would have it be where
/// the known division puts them, and where its rivals do.
class rival_sums {
public:
    rival_sums(const std::vector<state_mixture>& mixtures, size_t width);

    /// Counts the observation `x` for a state `share` times; below 0 against it.
    void Add(size_t state, const mixture_scorer& scorer, const float* x, double share);
    void Add(const rival_sums& other);

    /// The extended Baum-Welch update of all Gaussians (Povey: Discriminative training for large
    /// vocabulary speech recognition, 2004), drawn to those of `likeliest` as by `prior`
    /// observations, with variances above `floors`.
    void Update(const std::vector<state_mixture>& likeliest, const std::vector<double>& floors,
                double prior, std::vector<state_mixture>& mixtures) const;

    double merit = 0.0; ///< how well the known division fares, as the trainer measures it, summed
    double observations = 0.0;

private:
    std::vector<std::vector<gaussian_sums>> known;
    std::vector<std::vector<gaussian_sums>> rival;
    std::vector<double> shares;
};

} // namespace tessarin::training
