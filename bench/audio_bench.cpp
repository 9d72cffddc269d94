// The audio chain. The counter `x_real_time` is seconds of audio for each second of work.

#include <algorithm>
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

#include "audio/pcm_pre_emph_stream.h"
#include "audio/quib_stream.h"
#include "audio/resampled_pcm_stream.h"
#include "audio/resampler.h"

using namespace tessarin;

namespace {

constexpr int32_t kModelRate = 16000;
constexpr uint32_t kHop = 160;
constexpr float kCutoff = 0.8f;

void SetRealTimeCounter(benchmark::State& state, double secondsPerIteration) {
    state.counters["x_real_time"] =
        benchmark::Counter(secondsPerIteration, benchmark::Counter::kIsIterationInvariantRate);
}

/// One second in blocks of a hop, as the chain asks for it.
void Resample(benchmark::State& state) {
    const int32_t rate = static_cast<int32_t>(state.range(0));
    CResampler resampler;
    if (resampler.Instantiate(rate, kModelRate, kCutoff) != kNoError) {
        state.SkipWithError("not converted");
        return;
    }
    const uint32_t blockSize = static_cast<uint32_t>(resampler.GetInputCount(kHop));
    std::vector<float> in(blockSize, 1000.0f);
    std::vector<float> out(kHop);
    for (auto _ : state) {
        for (int hop = 0; hop < 100; ++hop) {
            benchmark::DoNotOptimize(resampler.Process(out.data(), in.data(), blockSize, kHop));
        }
    }
    SetRealTimeCounter(state, 100.0 * blockSize / rate);
}
BENCHMARK(Resample)->Arg(8000)->Arg(11025)->Arg(22050)->Arg(32000)->Arg(44100)->Arg(48000);

void DesignFilter(benchmark::State& state) {
    for (auto _ : state) {
        CResampler resampler;
        benchmark::DoNotOptimize(
            resampler.Instantiate(static_cast<int32_t>(state.range(0)), kModelRate, kCutoff));
    }
}
BENCHMARK(DesignFilter)->Arg(44100)->Arg(48000)->Unit(benchmark::kMillisecond);

/// Stereo of silence in memory, as a host gives it.
class Silence : public IQuibPCMStream {
public:
    explicit Silence(uint32_t rate) : rateHz(rate) {}
    virtual ~Silence() = default;
    void GetFormat(PCMFormat* out) override { *out = {rateHz, 16, 2}; }
    uint32_t GetSize() override { return rateHz * 4; }
    int32_t Read(void* buffer, int32_t bytes) override {
        const int32_t left = static_cast<int32_t>(GetSize()) - position;
        const int32_t size = bytes < left ? bytes : left;
        std::fill_n(static_cast<uint8_t*>(buffer), size, uint8_t{1});
        position += size;
        return size;
    }
    error_code Start() override {
        position = 0;
        return kNoError;
    }

private:
    uint32_t rateHz;
    int32_t position = 0;
};

/// One second through reader, resampler and pre-emphasis.
void ReadChain(benchmark::State& state) {
    Silence host(static_cast<uint32_t>(state.range(0)));
    CQuibStream reader;
    CResampledPCMStream resampled;
    CPCMPreEmphStream emphasized;
    const PCMFormat target{uint32_t{kModelRate} << 16, 16, 1};
    if (reader.Open(&host) != kNoError ||
        resampled.Instantiate(&reader, &target, 1, kCutoff) != kNoError ||
        emphasized.Instantiate(&resampled, 1, 0.97f) != kNoError) {
        state.SkipWithError("no chain");
        return;
    }
    std::vector<float> block(kHop);
    for (auto _ : state) {
        emphasized.Start();
        uint32_t frames = kHop;
        while (frames != 0) {
            frames = kHop;
            emphasized.ReadChannelFloat(block.data(), &frames, 1);
        }
    }
    SetRealTimeCounter(state, 1.0);
}
BENCHMARK(ReadChain)->Arg(16000)->Arg(44100);

} // namespace
