// Matching of spoken commands against samples. `commands_in_real_time` is how many samples can be
// followed live by one core, when a frame comes every 10 ms.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "commands/audio_footprint.h"
#include "features/buffer_feature_stream.h"
#include "features/spectral_feature_descriptor.h"
#include "recognition/fixtures.h"

using namespace tessarin;

namespace {

constexpr int32_t kFeatures = 39;
constexpr double kFrameSeconds = 0.01;

/// `count` random observations.
test::list_stream RandomStream(size_t count) {
    std::mt19937 random(1);
    std::normal_distribution<float> normal;
    test::list_stream stream;
    for (size_t i = 0; i < count; ++i) {
        std::vector<float> features(kFeatures);
        std::generate(features.begin(), features.end(), [&] { return normal(random); });
        stream.observations.push_back(features);
        stream.energies.push_back(50.0f);
    }
    return stream;
}

/// A live stream that goes on as long as it is asked to.
class endless_live final : public buffer_feature_stream {
public:
    endless_live() : source(RandomStream(100)) {
        CSpectralFeatureDescriptor descriptor;
        descriptor.numFeatures = kFeatures;
        static_cast<void>(Init(&descriptor, 0.0f));
    }
    int32_t GetNumFeatures() override { return count; }
    const float* GetFeature(int32_t index) override {
        return source.observations[static_cast<size_t>(index) % source.observations.size()].data();
    }

    int32_t count = 0;

private:
    test::list_stream source;
};

/// One new frame of live audio against a sample of so many frames.
void MatchLiveFrame(benchmark::State& state) {
    test::list_stream source = RandomStream(static_cast<size_t>(state.range(0)));
    audio_footprint footprint;
    static_cast<void>(footprint.Record(source, kFeatures, 0.0f));
    endless_live live;
    float distance = 0.0f;
    for ([[maybe_unused]] auto round : state) {
        ++live.count;
        static_cast<void>(footprint.MatchLive(live, &distance));
        benchmark::DoNotOptimize(distance);
    }
    state.counters["commands_in_real_time"] = benchmark::Counter(
        kFrameSeconds * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(MatchLiveFrame)->Arg(50)->Arg(100)->Arg(300);

/// A whole utterance against a sample, both of so many frames.
void MatchRecordings(benchmark::State& state) {
    test::list_stream source = RandomStream(static_cast<size_t>(state.range(0)));
    CFeatureStream sample;
    static_cast<void>(sample.Record(source, kFeatures, 0.0f));
    float distance = 0.0f;
    for ([[maybe_unused]] auto round : state) {
        sample.MatchStream(sample, &distance);
        benchmark::DoNotOptimize(distance);
    }
}
BENCHMARK(MatchRecordings)->Arg(50)->Arg(100)->Arg(300)->Unit(benchmark::kMicrosecond);

} // namespace
