#include <benchmark/benchmark.h>

#include <cmath>
#include <string>

#include "model/accoustic_hmm.h"
#include "support/tiny_model.h"

namespace tessarin {
namespace {

constexpr size_t kFeatures = 38;
constexpr int32_t kMixtures = 16;

/// As large as an English model.
std::unique_ptr<CAccousticHMM> EnglishSizedModel() {
    test::tiny_model tiny{.numMixtures = kMixtures, .numFeatures = kFeatures, .variance = 4000.0f};
    tiny.labels.clear();
    for (int i = 0; i < 40; ++i) {
        tiny.labels.push_back(std::string(1, static_cast<char>('A' + i)));
    }
    return tiny.Make();
}

/// The formula as it is read, over the objects of the model.
double PlainStateProbability(const CAccousticHMM& model, const float* x, int32_t state) {
    const auto& mixtures = model.models[static_cast<size_t>(state / 3)]
                               .states[static_cast<size_t>(state % 3)]
                               .mixtures;
    double p = 0.0;
    for (const CGaussMixture& mixture : mixtures) {
        double d = 0.0;
        for (size_t k = 0; k < kFeatures; ++k) {
            const double difference = static_cast<double>(x[k] - mixture.mean[k]);
            d += static_cast<double>(mixture.inverseCovariance[k]) * (difference * difference);
        }
        p += std::exp(-0.5 * d) * (mixture.gConst * mixture.weight);
    }
    return p;
}

template <class Score> void ScoreAllStates(benchmark::State& bench, Score score) {
    const std::unique_ptr<CAccousticHMM> model = EnglishSizedModel();
    const std::vector<float> x(kFeatures, 2.5f);
    for (auto _ : bench) {
        for (int32_t state = 0; state < model->GetTotalStates(); ++state) {
            benchmark::DoNotOptimize(score(*model, x.data(), state));
        }
    }
    const double mixtures = static_cast<double>(model->GetTotalStates() * kMixtures);
    bench.counters["s_per_mixture"] = benchmark::Counter(
        mixtures, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void GetStateProbability(benchmark::State& bench) {
    ScoreAllStates(bench, [](const CAccousticHMM& model, const float* x, int32_t state) {
        return model.GetStateProbability(x, state);
    });
}
BENCHMARK(GetStateProbability);

void GetStateProbabilityPlain(benchmark::State& bench) {
    ScoreAllStates(bench, PlainStateProbability);
}
BENCHMARK(GetStateProbabilityPlain);

/// Distances alone, by each kernel that this machine can run, the plain one first.
void GaussianDistances(benchmark::State& bench) {
    const gaussian_distances kernel =
        GaussianDistanceKernels()[static_cast<size_t>(bench.range(0))];
    constexpr size_t kGroups = 240;
    const std::vector<float> means(kGroups * kFeatures * kGaussianLanes, 1.0f);
    const std::vector<double> inverses(means.size(), 0.5);
    const std::vector<float> x(kFeatures, 2.5f);
    double distances[kGaussianLanes];
    for (auto _ : bench) {
        for (size_t group = 0; group < kGroups; ++group) {
            const size_t place = group * kFeatures * kGaussianLanes;
            kernel(means.data() + place, inverses.data() + place, x.data(), kFeatures, distances);
            benchmark::DoNotOptimize(distances);
        }
    }
    bench.counters["s_per_mixture"] = benchmark::Counter(
        static_cast<double>(kGroups * kGaussianLanes),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(GaussianDistances)
    ->DenseRange(0, static_cast<int64_t>(GaussianDistanceKernels().size()) - 1);

} // namespace
} // namespace tessarin
