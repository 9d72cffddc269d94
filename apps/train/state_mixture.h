#pragma once

#include <cstddef>
#include <vector>

#include "model/gaussian_distances.h"

namespace tessarin::training {

/// A Gaussian with a diagonal covariance while it is trained.
struct diagonal_gaussian {
    double weight = 0.0;
    std::vector<double> mean;
    std::vector<double> variance;
};

/// The mixture of a state. The last Gaussian is broad and the same for all states: it keeps the
/// likelihood of what no state has heard above 0, and is not trained.
using state_mixture = std::vector<diagonal_gaussian>;

/// A mixture laid out for scoring.
class mixture_scorer {
public:
    explicit mixture_scorer(const state_mixture& mixture);

    size_t GetSize() const { return constants.size(); }
    /// Logarithm of the likelihood of `x`. `shares`, with room for GetSize values, receives how
    /// much of it comes from each Gaussian.
    double Score(const float* x, double* shares) const;
    double Score(const float* x) const;

private:
    double Joint(const float* x, double* logs) const;

    gaussian_distances distances;
    size_t width = 0;
    size_t groups = 0;
    std::vector<float> means;
    std::vector<double> inverses;
    std::vector<double> constants; ///< log of weight and of the normalising factor
};

/// Sums that a Gaussian is estimated from.
struct gaussian_sums {
    explicit gaussian_sums(size_t width) : first(width), second(width) {}
    void Add(const float* x, double share);
    void Add(const gaussian_sums& other);

    double occupancy = 0.0;
    std::vector<double> first;
    std::vector<double> second;
};

} // namespace tessarin::training
