#include "adaptation/gaussian_pool.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "model/accoustic_hmm.h"

namespace tessarin {

namespace {

/// A Gaussian whose share is less than exp of this does not count.
constexpr double kLeastLogShare = -12.0;

constexpr const char* kSilenceLabel = "x";

} // namespace

sound_class ClassOf(const CAccousticHMM& model, size_t phoneme) {
    const bool isSilence = phoneme < model.labels.size() && model.labels[phoneme] == kSilenceLabel;
    return isSilence ? sound_class::kSilence : sound_class::kSpeech;
}

GaussianPool::GaussianPool(const CAccousticHMM& model)
    : distances(GaussianDistanceKernels().back()),
      numFeatures(static_cast<size_t>(std::max(model.descriptor.numFeatures, 0))) {
    std::vector<const CGaussMixture*> mixtures;
    for (size_t phoneme = 0; phoneme < model.models.size(); ++phoneme) {
        const sound_class soundClass = ClassOf(model, phoneme);
        for (const CAccousticHMMState& state : model.models[phoneme].states) {
            for (const CGaussMixture& mixture : state.mixtures) {
                const double logFactor = std::log(mixture.weight * mixture.gConst);
                if (std::isfinite(logFactor)) {
                    mixtures.push_back(&mixture);
                    origins.push_back({mixture.mean.data(), soundClass, logFactor});
                }
            }
        }
    }
    const size_t groups = (origins.size() + kGaussianLanes - 1) / kGaussianLanes;
    means.resize(groups * numFeatures * kGaussianLanes);
    inverses.resize(means.size());
    scores.resize(groups * kGaussianLanes);
    for (size_t g = 0; g < mixtures.size(); ++g) {
        for (size_t k = 0; k < numFeatures; ++k) {
            means[Place(g, k)] = mixtures[g]->mean[k];
            inverses[Place(g, k)] = static_cast<double>(mixtures[g]->inverseCovariance[k]);
        }
    }
}

float GaussianPool::GetInverseVariance(size_t gaussian, size_t feature) const {
    return static_cast<float>(inverses[Place(gaussian, feature)]);
}

float GaussianPool::GetMean(size_t gaussian, size_t feature) const {
    return origins[gaussian].mean[feature];
}

void GaussianPool::Shift(sound_class soundClass, const std::vector<double>& bias) {
    for (size_t g = 0; g < origins.size(); ++g) {
        for (size_t k = 0; k < numFeatures && origins[g].soundClass == soundClass; ++k) {
            means[Place(g, k)] = origins[g].mean[k] + static_cast<float>(bias[k]);
        }
    }
}

double GaussianPool::Share(const float* x, std::vector<share>& out) {
    double best = -std::numeric_limits<double>::infinity();
    for (size_t first = 0; first < origins.size(); first += kGaussianLanes) {
        const size_t place = Place(first, 0);
        distances(means.data() + place, inverses.data() + place, x, numFeatures,
                  scores.data() + first);
        const size_t end = std::min(first + kGaussianLanes, origins.size());
        for (size_t g = first; g < end; ++g) {
            scores[g] = origins[g].logFactor - 0.5 * scores[g];
            best = std::max(best, scores[g]);
        }
    }
    out.clear();
    double sum = 0.0;
    for (size_t g = 0; g < origins.size(); ++g) {
        if (scores[g] - best > kLeastLogShare) {
            const double weight = std::exp(scores[g] - best);
            out.push_back({g, weight});
            sum += weight;
        }
    }
    for (share& each : out) {
        each.weight /= sum;
    }
    return best + std::log(sum);
}

} // namespace tessarin
