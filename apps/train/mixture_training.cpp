#include "apps/train/mixture_training.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "apps/train/parallel.h"

namespace tessarin::training {
namespace {

constexpr double kVarianceFloor = 0.01; ///< of the variance of all observations
constexpr double kBroadWeight = 1e-5;
constexpr double kBroadVariance = 4.0; ///< in variances of all observations
constexpr int kRounds = 4;             ///< after each split
/// A Gaussian has at least this many observations on average.
constexpr size_t kObservationsPerGaussian = 60;
constexpr double kLeastOccupancy = 10.0;
constexpr double kSplitDistance = 0.3; ///< in standard deviations

/// Successive observations.
using stretch = std::span<const float>;

class mixture_trainer {
public:
    mixture_trainer(const std::vector<stretch>& ownStretches,
                    const observation_statistics& ofAllStates)
        : stretches(ownStretches), statistics(ofAllStates), width(ofAllStates.mean.size()) {
        for (const stretch& each : stretches) {
            numObservations += each.size() / width;
        }
    }

    state_mixture Train(size_t numGaussians) {
        gaussian_sums sums(width);
        ForEachObservation([&](const float* x) { sums.Add(x, 1.0); });
        mixture.resize(1);
        mixture[0].weight = 1.0 - kBroadWeight;
        if (sums.occupancy < 1.0) { // a phone that nobody said
            mixture[0].mean = statistics.mean;
            mixture[0].variance = statistics.variance;
        } else {
            Estimate(mixture[0], sums);
        }
        const size_t most =
            std::clamp<size_t>(numObservations / kObservationsPerGaussian, 1, numGaussians);
        for (size_t size = 1; size < most;) {
            size = std::min(size * 2, most);
            SplitTo(size);
            for (int round = 0; round < kRounds; ++round) {
                Reestimate();
            }
        }
        AddBroadGaussian();
        return mixture;
    }

private:
    template <class Visit> void ForEachObservation(Visit visit) const {
        for (const stretch& each : stretches) {
            for (size_t place = 0; place < each.size(); place += width) {
                visit(each.data() + place);
            }
        }
    }

    void Estimate(diagonal_gaussian& gaussian, const gaussian_sums& sums) const {
        gaussian.mean.resize(width);
        gaussian.variance.resize(width);
        for (size_t k = 0; k < width; ++k) {
            const double mean = sums.first[k] / sums.occupancy;
            const double variance = sums.second[k] / sums.occupancy - mean * mean;
            gaussian.mean[k] = mean;
            gaussian.variance[k] = std::max(variance, kVarianceFloor * statistics.variance[k]);
        }
    }

    /// Splits the heaviest Gaussian along its deviations until there are `size`.
    void SplitTo(size_t size) {
        while (mixture.size() < size) {
            const auto heaviest = std::ranges::max_element(
                mixture, {}, [](const diagonal_gaussian& gaussian) { return gaussian.weight; });
            heaviest->weight *= 0.5;
            diagonal_gaussian twin = *heaviest;
            for (size_t k = 0; k < width; ++k) {
                const double step = kSplitDistance * std::sqrt(twin.variance[k]);
                heaviest->mean[k] -= step;
                twin.mean[k] += step;
            }
            mixture.push_back(std::move(twin));
        }
    }

    void Reestimate() {
        const size_t own = mixture.size();
        AddBroadGaussian();
        const mixture_scorer scorer(mixture);
        mixture.resize(own);
        std::vector<gaussian_sums> sums(own, gaussian_sums(width));
        std::vector<double> shares(scorer.GetSize());
        ForEachObservation([&](const float* x) {
            scorer.Score(x, shares.data());
            for (size_t m = 0; m < own; ++m) {
                if (shares[m] > 1e-4) {
                    sums[m].Add(x, shares[m]);
                }
            }
        });
        double total = 0.0;
        for (size_t m = 0; m < own; ++m) {
            if (sums[m].occupancy >= kLeastOccupancy) {
                Estimate(mixture[m], sums[m]);
            }
            mixture[m].weight = sums[m].occupancy;
            total += sums[m].occupancy;
        }
        std::erase_if(mixture, [](const diagonal_gaussian& gaussian) {
            return gaussian.weight < kLeastOccupancy;
        });
        for (diagonal_gaussian& gaussian : mixture) {
            gaussian.weight *= (1.0 - kBroadWeight) / total;
        }
        SplitTo(own);
    }

    void AddBroadGaussian() {
        diagonal_gaussian broad{kBroadWeight, statistics.mean, statistics.variance};
        for (double& variance : broad.variance) {
            variance *= kBroadVariance;
        }
        mixture.push_back(std::move(broad));
    }

    const std::vector<stretch>& stretches;
    const observation_statistics& statistics;
    size_t width;
    size_t numObservations = 0;
    state_mixture mixture;
};

std::vector<std::vector<stretch>> FindStretches(const std::vector<labelled_speech>& speech,
                                                size_t numStates) {
    std::vector<std::vector<stretch>> stretches(numStates);
    for (const labelled_speech& each : speech) {
        const size_t count = each.state.size();
        const size_t width = each.observations.width;
        for (size_t first = 0; first < count;) {
            size_t end = first + 1;
            while (end < count && each.state[end] == each.state[first]) {
                ++end;
            }
            stretches[each.state[first]].emplace_back(each.observations[first],
                                                      (end - first) * width);
            first = end;
        }
    }
    return stretches;
}

/// More Gaussians for states with more observations, which are more various: silence above all. The
/// broad one included they fill the lanes that they are scored in.
size_t GaussiansFor(const std::vector<stretch>& own, double average, size_t numGaussians) {
    double values = 0.0;
    for (const stretch& each : own) {
        values += static_cast<double>(each.size());
    }
    const double share = std::clamp(std::sqrt(values / average), 0.25, 4.0);
    const auto groups = std::lround(static_cast<double>(numGaussians + 1) * share /
                                    static_cast<double>(kGaussianLanes));
    return static_cast<size_t>(std::max(groups, 1L)) * kGaussianLanes - 1;
}

} // namespace

observation_statistics MeasureObservations(const std::vector<labelled_speech>& speech) {
    gaussian_sums sums(speech.front().observations.width);
    for (const labelled_speech& each : speech) {
        for (size_t t = 0; t < each.observations.GetCount(); ++t) {
            sums.Add(each.observations[t], 1.0);
        }
    }
    observation_statistics statistics;
    for (size_t k = 0; k < sums.first.size(); ++k) {
        const double mean = sums.first[k] / sums.occupancy;
        statistics.mean.push_back(mean);
        statistics.variance.push_back(sums.second[k] / sums.occupancy - mean * mean);
    }
    return statistics;
}

std::vector<state_mixture> TrainMixtures(const std::vector<labelled_speech>& speech,
                                         const observation_statistics& statistics, size_t numStates,
                                         size_t numGaussians, size_t numThreads) {
    const std::vector<std::vector<stretch>> stretches = FindStretches(speech, numStates);
    double values = 0.0;
    for (const labelled_speech& each : speech) {
        values += static_cast<double>(each.observations.values.size());
    }
    const double average = values / static_cast<double>(numStates);
    std::vector<state_mixture> mixtures(numStates);
    ParallelFor(numStates, numThreads, [&](size_t state) {
        mixtures[state] = mixture_trainer(stretches[state], statistics)
                              .Train(GaussiansFor(stretches[state], average, numGaussians));
    });
    return mixtures;
}

} // namespace tessarin::training
