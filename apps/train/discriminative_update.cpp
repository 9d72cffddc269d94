#include "apps/train/discriminative_update.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessarin::training {
namespace {

constexpr double kSlowness = 2.0;
constexpr size_t kMostGaussians = 256;

/// Slow enough that all variances stay above their floors.
void UpdateGaussian(const gaussian_sums& known, const gaussian_sums& rival,
                    const diagonal_gaussian& likeliest, const std::vector<double>& floors,
                    double prior, diagonal_gaussian& gaussian) {
    const size_t width = gaussian.mean.size();
    double slowness = kSlowness * rival.occupancy + 1.0;
    for (int attempt = 0; attempt < 30; ++attempt, slowness *= 1.5) {
        const double occupancy = known.occupancy - rival.occupancy + slowness + prior;
        if (occupancy <= 0.0) {
            continue;
        }
        diagonal_gaussian updated = gaussian;
        bool valid = true;
        for (size_t k = 0; k < width && valid; ++k) {
            const double mean = gaussian.mean[k];
            const double priorMean = likeliest.mean[k];
            updated.mean[k] =
                (known.first[k] - rival.first[k] + slowness * mean + prior * priorMean) / occupancy;
            const double second = known.second[k] - rival.second[k] +
                                  slowness * (gaussian.variance[k] + mean * mean) +
                                  prior * (likeliest.variance[k] + priorMean * priorMean);
            updated.variance[k] = second / occupancy - updated.mean[k] * updated.mean[k];
            valid = updated.variance[k] > 0.25 * gaussian.variance[k];
            updated.variance[k] = std::max(updated.variance[k], floors[k]);
        }
        if (valid) {
            gaussian = std::move(updated);
            return;
        }
    }
}

} // namespace

rival_sums::rival_sums(const std::vector<state_mixture>& mixtures, size_t width)
    : shares(kMostGaussians) {
    for (const state_mixture& mixture : mixtures) {
        known.emplace_back(mixture.size() - 1, gaussian_sums(width));
        rival.emplace_back(mixture.size() - 1, gaussian_sums(width));
    }
}

void rival_sums::Add(size_t state, const mixture_scorer& scorer, const float* x, double share) {
    if (std::abs(share) < kNegligibleShare) {
        return;
    }
    scorer.Score(x, shares.data());
    auto& target = share > 0.0 ? known[state] : rival[state];
    for (size_t m = 0; m < target.size(); ++m) {
        const double part = shares[m] * std::abs(share);
        if (part > kNegligibleShare) {
            target[m].Add(x, part);
        }
    }
}

void rival_sums::Add(const rival_sums& other) {
    for (size_t state = 0; state < known.size(); ++state) {
        for (size_t m = 0; m < known[state].size(); ++m) {
            known[state][m].Add(other.known[state][m]);
            rival[state][m].Add(other.rival[state][m]);
        }
    }
    merit += other.merit;
    observations += other.observations;
}

void rival_sums::Update(const std::vector<state_mixture>& likeliest,
                        const std::vector<double>& floors, double prior,
                        std::vector<state_mixture>& mixtures) const {
    for (size_t state = 0; state < mixtures.size(); ++state) {
        for (size_t m = 0; m + 1 < mixtures[state].size(); ++m) {
            UpdateGaussian(known[state][m], rival[state][m], likeliest[state][m], floors, prior,
                           mixtures[state][m]);
        }
    }
}

} // namespace tessarin::training
