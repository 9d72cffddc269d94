#pragma once

#include <cstddef>
#include <vector>

#include "model/gaussian_distances.h"

namespace tessarin {

class CGaussMixture;
class CSingleAccHmm;

/// The Gaussians of all states laid out for speed: those of one state side by side in groups of
/// kGaussianLanes, value k of all Gaussians of a group next to each other, so that the machine
/// works on several at once while each keeps its own order of summation. The results are those of
/// the plain loop to the last bit.
class gaussian_scoring {
public:
    gaussian_scoring() = default;
    /// `models` have the same number of states each; their Gaussians have `featureCount` values.
    gaussian_scoring(const std::vector<CSingleAccHmm>& models, size_t featureCount);

    /// The sum over the Gaussians of a global state, in order, of weight * gConst * exp(-d / 2),
    /// where d is the sum over k of inverseCovariance[k] * (x[k] - mean[k])^2: the difference is
    /// taken in single precision, all else in double.
    double Likelihood(size_t state, const float* x) const;

private:
    struct state_block {
        size_t firstGroup;
        size_t mixtures;
    };

    void Place(const CGaussMixture& mixture, size_t slot);

    gaussian_distances distances = nullptr;
    size_t numFeatures = 0;
    std::vector<state_block> states;
    std::vector<float> means;     ///< [group][k][lane]
    std::vector<double> inverses; ///< [group][k][lane], widened beforehand, which is exact
    std::vector<double> factors;  ///< [group][lane]: gConst * weight
};

} // namespace tessarin
