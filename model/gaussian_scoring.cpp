#include "model/gaussian_scoring.h"

#include "model/accoustic_hmm.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace tessarin {
namespace {

/// exp(-d / 2) is exactly 0 from d = 1490.3 on, the end of the denormals: no need to ask.
constexpr double kVanishingDistance = 1500.0;

size_t GroupCount(size_t mixtures) {
    return (mixtures + kGaussianLanes - 1) / kGaussianLanes;
}

} // namespace

gaussian_scoring::gaussian_scoring(const std::vector<CSingleAccHmm>& models, size_t featureCount)
    : distances(GaussianDistanceKernels().back()), numFeatures(featureCount) {
    size_t groups = 0;
    for (const CSingleAccHmm& model : models) {
        for (const CAccousticHMMState& state : model.states) {
            states.push_back({groups, state.mixtures.size()});
            groups += GroupCount(state.mixtures.size());
        }
    }
    means.resize(groups * numFeatures * kGaussianLanes);
    inverses.resize(groups * numFeatures * kGaussianLanes);
    factors.resize(groups * kGaussianLanes);
    size_t block = 0;
    for (const CSingleAccHmm& model : models) {
        for (const CAccousticHMMState& state : model.states) {
            const size_t firstGroup = states[block++].firstGroup;
            for (size_t m = 0; m < state.mixtures.size(); ++m) {
                const CGaussMixture& mixture = state.mixtures[m];
                assert(mixture.mean.size() >= numFeatures &&
                       mixture.inverseCovariance.size() >= numFeatures);
                const size_t group = firstGroup + m / kGaussianLanes;
                const size_t lane = m % kGaussianLanes;
                for (size_t k = 0; k < numFeatures; ++k) {
                    const size_t place = (group * numFeatures + k) * kGaussianLanes + lane;
                    means[place] = mixture.mean[k];
                    inverses[place] = static_cast<double>(mixture.inverseCovariance[k]);
                }
                factors[group * kGaussianLanes + lane] = mixture.gConst * mixture.weight;
            }
        }
    }
}

double gaussian_scoring::Likelihood(size_t state, const float* x) const {
    const state_block& block = states[state];
    double likelihood = 0.0;
    size_t group = block.firstGroup;
    for (size_t left = block.mixtures; left != 0; ++group) {
        const size_t place = group * numFeatures * kGaussianLanes;
        double distance[kGaussianLanes];
        distances(means.data() + place, inverses.data() + place, x, numFeatures, distance);
        const double* factor = factors.data() + group * kGaussianLanes;
        const size_t count = std::min(left, kGaussianLanes);
        for (size_t lane = 0; lane < count; ++lane) {
            const double density =
                distance[lane] > kVanishingDistance ? 0.0 : std::exp(-0.5 * distance[lane]);
            likelihood += density * factor[lane];
        }
        left -= count;
    }
    return likelihood;
}

} // namespace tessarin
