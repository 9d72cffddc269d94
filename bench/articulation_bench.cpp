#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "articulation/phoneme_mixture_articulator.h"
#include "base/text_copy.h"
#include "results/concrete_sync_marker_collection.h"
#include "results/sync_marker.h"

namespace tessarin {
namespace {

/// Speech of as many seconds: phonemes of 20 to 150 ms, one after the other.
void FillSpeech(CConcreteSyncMarkerCollection& results, int64_t seconds) {
    static const char* const labels[] = {"x", "b", "AA", "s", "m", "IY", "t", "OW", "n", "AH", "d"};
    std::mt19937 random(1);
    for (int32_t time = 0; time < seconds * 1000;) {
        CSyncMarker marker = {};
        ClearSyncMarker(marker);
        marker.type = kPhonemeMarker;
        marker.start = time;
        marker.end = time += 20 + static_cast<int32_t>(random() % 131);
        marker.score = static_cast<float>(40 + random() % 61);
        CopyText(marker.label, labels[random() % std::size(labels)]);
        results.Add(marker);
    }
}

/// Frames at 60 a second. Arguments: seconds of speech, articulator_flags.
void BM_GenerateArticulations(benchmark::State& state) {
    CConcreteSyncMarkerCollection results;
    FillSpeech(results, state.range(0));
    CPhonemeMixtureArticulator articulator;
    articulator.SetFrameRate(60.0f);
    articulator.SetFlags(static_cast<uint32_t>(state.range(1)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(articulator.GenerateArticulations(&results, nullptr));
    }
    const auto frames = articulator.GetArticulationsEnd() - articulator.GetArticulationsBegin();
    state.counters["frames"] = benchmark::Counter(static_cast<double>(frames),
                                                  benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_GenerateArticulations)
    ->ArgsProduct({{60, 3600}, {0, kSmoothFrames}})
    ->Unit(benchmark::kMillisecond);

/// Envelopes of frames at 60 a second. Arguments: seconds of speech, articulator_flags.
void BM_GenerateEnvelopes(benchmark::State& state) {
    CConcreteSyncMarkerCollection results;
    FillSpeech(results, state.range(0));
    CPhonemeMixtureArticulator articulator;
    articulator.SetFrameRate(60.0f);
    articulator.SetFlags(static_cast<uint32_t>(state.range(1)));
    articulator.GenerateArticulations(&results, nullptr);
    for (auto _ : state) {
        benchmark::DoNotOptimize(articulator.GenerateEnvelopes());
    }
    const auto frames = articulator.GetArticulationsEnd() - articulator.GetArticulationsBegin();
    state.counters["frames"] = benchmark::Counter(static_cast<double>(frames),
                                                  benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_GenerateEnvelopes)
    ->ArgsProduct({{60, 3600}, {0, kCommonKeyTimes}})
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tessarin
