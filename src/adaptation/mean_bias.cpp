#include "adaptation/mean_bias.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "adaptation/feature_layers.h"
#include "model/accoustic_hmm.h"

namespace tessarin {

namespace {

constexpr int kRounds = 3;

/// The bias is held to 0 as by so many observations that lie at their means.
constexpr double kPriorCount = 50.0;

/// The sums of one round, a value a feature.
struct bias_sums {
    std::vector<double> deviations; ///< from the model's means, over the variance
    std::vector<double> precisions;
};

class BiasEstimate {
public:
    explicit BiasEstimate(const CAccousticHMM& model)
        : pool(model), features(FindLayers(model.descriptor).cepstra) {
        for (size_t c = 0; c < kSoundClasses; ++c) {
            bias.values[c].assign(pool.GetNumFeatures(), 0.0);
            meanPrecision[c].assign(pool.GetNumFeatures(), 0.0);
        }
        FindMeanPrecisions();
    }

    size_t GetNumFeatures() const { return pool.GetNumFeatures(); }
    bool IsEmpty() const { return pool.GetCount() == 0; }

    /// Sums up and returns the mean of the logarithms of the likelihoods, as the bias stands.
    double Listen(const std::vector<const float*>& observations);
    void Move();

    mean_bias bias;

private:
    void FindMeanPrecisions();

    GaussianPool pool;
    std::vector<size_t> features; ///< those that have a bias
    std::array<std::vector<double>, kSoundClasses> meanPrecision;
    std::array<bias_sums, kSoundClasses> sums;
    std::vector<GaussianPool::share> shares;
};

void BiasEstimate::FindMeanPrecisions() {
    std::array<double, kSoundClasses> counts{};
    for (size_t g = 0; g < pool.GetCount(); ++g) {
        const auto c = static_cast<size_t>(pool.GetClass(g));
        counts[c] += 1.0;
        for (const size_t k : features) {
            meanPrecision[c][k] += static_cast<double>(pool.GetInverseVariance(g, k));
        }
    }
    for (size_t c = 0; c < kSoundClasses; ++c) {
        for (double& value : meanPrecision[c]) {
            value /= std::max(counts[c], 1.0);
        }
    }
}

double BiasEstimate::Listen(const std::vector<const float*>& observations) {
    for (bias_sums& each : sums) {
        each.deviations.assign(GetNumFeatures(), 0.0);
        each.precisions.assign(GetNumFeatures(), 0.0);
    }
    double total = 0.0;
    for (const float* x : observations) {
        total += pool.Share(x, shares);
        for (const auto& [g, weight] : shares) {
            bias_sums& into = sums[static_cast<size_t>(pool.GetClass(g))];
            for (const size_t k : features) {
                const double precision =
                    weight * static_cast<double>(pool.GetInverseVariance(g, k));
                into.deviations[k] += precision * static_cast<double>(x[k] - pool.GetMean(g, k));
                into.precisions[k] += precision;
            }
        }
    }
    return total / static_cast<double>(observations.size());
}

void BiasEstimate::Move() {
    for (size_t c = 0; c < kSoundClasses; ++c) {
        for (const size_t k : features) {
            const double held = sums[c].precisions[k] + kPriorCount * meanPrecision[c][k];
            bias.values[c][k] = held > 0.0 ? sums[c].deviations[k] / held : 0.0;
        }
        pool.Shift(static_cast<sound_class>(c), bias.values[c]);
    }
}

std::vector<const float*> FiniteOnes(std::span<const float> observations, size_t width) {
    std::vector<const float*> chosen;
    for (size_t first = 0; first + width <= observations.size(); first += width) {
        const auto x = observations.subspan(first, width);
        if (std::ranges::all_of(x, [](float value) { return std::isfinite(value); })) {
            chosen.push_back(x.data());
        }
    }
    return chosen;
}

} // namespace

mean_bias FindMeanBias(const CAccousticHMM& model, std::span<const float> observations) {
    BiasEstimate estimate(model);
    if (estimate.IsEmpty() || estimate.GetNumFeatures() == 0) {
        return estimate.bias;
    }
    const std::vector<const float*> chosen = FiniteOnes(observations, estimate.GetNumFeatures());
    if (chosen.empty()) {
        return estimate.bias;
    }
    double before = 0.0;
    for (int round = 0; round < kRounds; ++round) {
        const double likelihood = estimate.Listen(chosen);
        before = round == 0 ? likelihood : before;
        estimate.Move();
    }
    estimate.bias.gain = estimate.Listen(chosen) - before;
    return estimate.bias;
}

void AddMeanBias(const mean_bias& bias, CAccousticHMM& model) {
    for (size_t phoneme = 0; phoneme < model.models.size(); ++phoneme) {
        const auto& values = bias.values[static_cast<size_t>(ClassOf(model, phoneme))];
        for (CAccousticHMMState& state : model.models[phoneme].states) {
            for (CGaussMixture& mixture : state.mixtures) {
                for (size_t k = 0; k < values.size() && k < mixture.mean.size(); ++k) {
                    mixture.mean[k] += static_cast<float>(values[k]);
                }
            }
        }
    }
    model.BuildScoring();
}

} // namespace tessarin
