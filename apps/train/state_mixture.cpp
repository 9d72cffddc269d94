#include "apps/train/state_mixture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tessarin::training {
namespace {

constexpr size_t kMaxMixtures = 256;
/// Shares below exp of this are nothing.
constexpr double kNegligibleLog = -30.0;

} // namespace

mixture_scorer::mixture_scorer(const state_mixture& mixture)
    : distances(GaussianDistanceKernels().back()), width(mixture.front().mean.size()),
      groups((mixture.size() + kGaussianLanes - 1) / kGaussianLanes),
      means(groups * width * kGaussianLanes), inverses(means.size()) {
    for (size_t m = 0; m < mixture.size(); ++m) {
        const diagonal_gaussian& gaussian = mixture[m];
        double constant = std::log(gaussian.weight);
        for (size_t k = 0; k < width; ++k) {
            const size_t place =
                (m / kGaussianLanes * width + k) * kGaussianLanes + m % kGaussianLanes;
            means[place] = static_cast<float>(gaussian.mean[k]);
            inverses[place] = 1.0 / gaussian.variance[k];
            constant -= 0.5 * std::log(2.0 * std::numbers::pi * gaussian.variance[k]);
        }
        constants.push_back(constant);
    }
}

double mixture_scorer::Joint(const float* x, double* logs) const {
    double best = -1e300;
    for (size_t group = 0; group < groups; ++group) {
        double distance[kGaussianLanes];
        const size_t place = group * width * kGaussianLanes;
        distances(means.data() + place, inverses.data() + place, x, width, distance);
        const size_t first = group * kGaussianLanes;
        const size_t count = std::min(kGaussianLanes, constants.size() - first);
        for (size_t lane = 0; lane < count; ++lane) {
            logs[first + lane] = constants[first + lane] - 0.5 * distance[lane];
            best = std::max(best, logs[first + lane]);
        }
    }
    return best;
}

double mixture_scorer::Score(const float* x, double* shares) const {
    const double best = Joint(x, shares);
    double sum = 0.0;
    for (size_t m = 0; m < constants.size(); ++m) {
        const double difference = shares[m] - best;
        shares[m] = difference < kNegligibleLog ? 0.0 : std::exp(difference);
        sum += shares[m];
    }
    for (size_t m = 0; m < constants.size(); ++m) {
        shares[m] /= sum;
    }
    return best + std::log(sum);
}

double mixture_scorer::Score(const float* x) const {
    std::array<double, kMaxMixtures> logs;
    const double best = Joint(x, logs.data());
    double sum = 0.0;
    for (size_t m = 0; m < constants.size(); ++m) {
        const double difference = logs[m] - best;
        sum += difference < kNegligibleLog ? 0.0 : std::exp(difference);
    }
    return best + std::log(sum);
}

void gaussian_sums::Add(const float* x, double share) {
    occupancy += share;
    for (size_t k = 0; k < first.size(); ++k) {
        const double value = static_cast<double>(x[k]);
        first[k] += share * value;
        second[k] += share * value * value;
    }
}

void gaussian_sums::Add(const gaussian_sums& other) {
    occupancy += other.occupancy;
    for (size_t k = 0; k < first.size(); ++k) {
        first[k] += other.first[k];
        second[k] += other.second[k];
    }
}

} // namespace tessarin::training
