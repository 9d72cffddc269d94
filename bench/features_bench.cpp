#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

#include "features/band_filters.h"
#include "features/cosine_transform.h"
#include "features/half_complex_fft.h"
#include "features/observation_chain.h"
#include "features/power_spectrum.h"
#include "features/spectral_feature_descriptor.h"
#include "features/spectral_stream.h"

#include "features/test_descriptors.h"
#include "support/signals.h"

namespace tessarin {
namespace {

/// The analysis of a usual model: 24 bands, 12 cepstra, 39 features, 10 ms.
struct usual_analysis {
    CSpectralFeatureDescriptor descriptor;
    usual_analysis() {
        test::SetMelBands(descriptor, 24);
        descriptor.preEmphasis = 0.97f;
        descriptor.numCepstra = 12;
        descriptor.numFeatures = 39;
        descriptor.flags = kKeepLastCepstrum;
    }
};

/// Ten seconds of noise that a host delivers over and over.
class EndlessNoise final : public IQuibPCMStream {
public:
    explicit EndlessNoise(uint32_t rateHz) : rate(rateHz) {
        for (const float sample : test::WhiteNoise(size_t{rateHz} * 10, 3000.0f, 1)) {
            samples.push_back(static_cast<int16_t>(sample));
        }
    }
    void GetFormat(PCMFormat* out) override { *out = {rate, 16, 1}; }
    uint32_t GetSize() override { return static_cast<uint32_t>(samples.size() * 2); }
    int32_t Read(void* buffer, int32_t bytes) override {
        const size_t wanted = static_cast<size_t>(bytes) / 2;
        if (samples.size() - place < wanted) {
            place = 0;
        }
        const size_t count = std::min(wanted, samples.size());
        std::memcpy(buffer, samples.data() + place, count * 2);
        place += count;
        return static_cast<int32_t>(count * 2);
    }
    error_code Start() override { return kNoError; }

private:
    uint32_t rate;
    std::vector<int16_t> samples;
    size_t place = 0;
};

void Transform(benchmark::State& state) {
    const auto size = static_cast<uint32_t>(state.range(0));
    const std::vector<float> noise = test::WhiteNoise(size, 3000.0f, 1);
    std::vector<float> data(size);
    ForwardHalfComplexFFT fft;
    for (auto _ : state) {
        std::copy(noise.begin(), noise.end(), data.begin());
        fft.Transform(data.data(), size);
        benchmark::DoNotOptimize(data.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(Transform)->Arg(256)->Arg(512)->Arg(2048);

void PowerOfFrame(benchmark::State& state) {
    const std::vector<float> noise = test::WhiteNoise(1024, 3000.0f, 1);
    std::vector<float> data(1024);
    for (auto _ : state) {
        std::copy(noise.begin(), noise.end(), data.begin());
        benchmark::DoNotOptimize(PowerSpectrum(data, 512));
    }
}
BENCHMARK(PowerOfFrame);

void BandFilters(benchmark::State& state) {
    usual_analysis model;
    CBandFilterBank bank;
    bank.SetFilters({model.descriptor.bands.begin(), 24});
    if (!bank.Prepare(256, 16000.0f)) {
        state.SkipWithError("the bank does not fit");
        return;
    }
    const std::vector<float> power = test::WhiteNoise(257, 1e6f, 1);
    std::vector<float> energies(24);
    for (auto _ : state) {
        bank.Apply(power, energies);
        benchmark::DoNotOptimize(energies.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BandFilters);

void CosineTransform(benchmark::State& state) {
    CCosineTransform transform;
    transform.Prepare(24, 12);
    const std::vector<float> energies = test::WhiteNoise(24, 8.0f, 1);
    std::vector<float> cepstra(12);
    for (auto _ : state) {
        transform.Apply(energies, cepstra);
        benchmark::DoNotOptimize(cepstra.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(CosineTransform);

/// The whole road from the host's bytes to observations, at the rate of the source.
void Observations(benchmark::State& state) {
    usual_analysis model;
    EndlessNoise host(static_cast<uint32_t>(state.range(0)));
    std::unique_ptr<CSpectralStream> stream;
    if (OpenObservationChain(&host, model.descriptor, stream) != kNoError) {
        state.SkipWithError("the chain does not open");
        return;
    }
    std::vector<float> features(39);
    float energy = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(stream->GetObservation(features.data(), &energy));
    }
    state.counters["audio seconds per second"] = benchmark::Counter(
        0.01 * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(Observations)->Arg(16000)->Arg(44100)->Arg(48000);

} // namespace
} // namespace tessarin
