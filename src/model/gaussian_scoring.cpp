#include "model/gaussian_scoring.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "model/accoustic_hmm.h"

namespace tessarin {
namespace {

/// exp(-d / 2) is exactly 0 from d = 1490.3 on, the end of the denormals: no need to ask.
constexpr double kVanishingDistance = 1500.0;

size_t GroupCount(size_t mixtures) {
    return (mixtures + kGaussianLanes - 1) / kGaussianLanes;
}

bool IsFinite(const std::vector<float>& values) {
    return std::ranges::all_of(values, [](float value) { return std::isfinite(value); });
}

/// How many Gaussians of a state count. Those of weight 0 at its end, by which a model fills up
/// states that need fewer than others, add 0 to any sum.
size_t CountScored(const CAccousticHMMState& state) {
    size_t count = state.mixtures.size();
    while (count > 0) {
        const CGaussMixture& last = state.mixtures[count - 1];
        if (last.gConst * last.weight != 0.0 || !IsFinite(last.mean) ||
            !IsFinite(last.inverseCovariance)) {
            break;
        }
        --count;
    }
    return count;
}

} // namespace

gaussian_scoring::gaussian_scoring(const std::vector<CSingleAccHmm>& models, size_t featureCount)
    : distances(GaussianDistanceKernels().back()), numFeatures(featureCount) {
    size_t groups = 0;
    for (const CSingleAccHmm& model : models) {
        for (const CAccousticHMMState& state : model.states) {
            states.push_back({groups, CountScored(state)});
            groups += GroupCount(states.back().mixtures);
        }
    }
    means.resize(groups * numFeatures * kGaussianLanes);
    inverses.resize(groups * numFeatures * kGaussianLanes);
    factors.resize(groups * kGaussianLanes);
    auto block = states.begin();
    for (const CSingleAccHmm& model : models) {
        for (const CAccousticHMMState& state : model.states) {
            for (size_t m = 0; m < block->mixtures; ++m) {
                Place(state.mixtures[m], block->firstGroup * kGaussianLanes + m);
            }
            ++block;
        }
    }
}

void gaussian_scoring::Place(const CGaussMixture& mixture, size_t slot) {
    assert(mixture.mean.size() >= numFeatures && mixture.inverseCovariance.size() >= numFeatures);
    const size_t group = slot / kGaussianLanes;
    const size_t lane = slot % kGaussianLanes;
    for (size_t k = 0; k < numFeatures; ++k) {
        const size_t place = (group * numFeatures + k) * kGaussianLanes + lane;
        means[place] = mixture.mean[k];
        inverses[place] = static_cast<double>(mixture.inverseCovariance[k]);
    }
    factors[slot] = mixture.gConst * mixture.weight;
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
