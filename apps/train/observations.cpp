#include "apps/train/observations.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "audio/files/audio_file_registry.h"
#include "base/counted_ptr.h"
#include "features/observation_chain.h"
#include "features/spectral_feature_descriptor.h"
#include "features/spectral_stream.h"
#include "tessarin/pcm_stream.h"

namespace tessarin::training {
namespace {

double ToMel(double hertz) {
    return 2595.0 * std::log10(1.0 + hertz / 700.0);
}
double FromMel(double mel) {
    return 700.0 * (std::pow(10.0, mel / 2595.0) - 1.0);
}

/// A recording as the engine's hosts hand it over.
class memory_stream final : public IQuibPCMStream {
public:
    explicit memory_stream(const recording& speech) : rate(speech.rate) {
        samples.reserve(speech.samples.size());
        for (const float sample : speech.samples) {
            samples.push_back(
                static_cast<int16_t>(std::lround(std::clamp(sample, -32768.0f, 32767.0f))));
        }
    }

    void GetFormat(PCMFormat* out) override {
        *out = {static_cast<uint32_t>(std::lround(rate)), 16, 1};
    }
    uint32_t GetSize() override { return static_cast<uint32_t>(samples.size() * 2); }
    int32_t Read(void* buffer, int32_t bytes) override {
        const size_t count = std::min(static_cast<size_t>(bytes) / 2, samples.size() - place);
        std::memcpy(buffer, samples.data() + place, count * 2);
        place += count;
        return static_cast<int32_t>(count * 2);
    }
    error_code Start() override {
        place = 0;
        return kNoError;
    }

private:
    double rate;
    std::vector<int16_t> samples;
    size_t place = 0;
};

} // namespace

void DescribeFeatures(CSpectralFeatureDescriptor& descriptor) {
    constexpr int kBands = 24;
    constexpr double kLowestHz = 100.0;
    constexpr double kHighestHz = 7800.0;
    const double step = (ToMel(kHighestHz) - ToMel(kLowestHz)) / (kBands + 1);
    const auto edge = [&](int i) {
        return static_cast<float>(FromMel(ToMel(kLowestHz) + step * i));
    };
    descriptor.preEmphasis = 0.97f;
    descriptor.numBands = kBands;
    descriptor.bands.RemoveAll();
    for (int band = 0; band < kBands; ++band) {
        descriptor.bands.Add({edge(band), edge(band + 1), edge(band + 2), 0.0f});
    }
    descriptor.numCepstra = 12;
    // The layout of 39 ends in a value that it has twice; this is that layout without it.
    descriptor.numFeatures = 38;
    descriptor.flags = kKeepLastCepstrum;
}

bool ReadRecording(const std::string& path, recording& out) {
    CPCMRdrStream* opened = nullptr;
    if (OpenAudioFileStream(path.c_str(), &opened) != kNoError) {
        return false;
    }
    const auto reader = counted_ptr<CPCMRdrStream>::Adopt(opened);
    out.rate = reader->GetSampleRate() / 65536.0;
    out.samples.assign(reader->GetNumSamples(), 0.0f);
    uint32_t count = reader->GetNumSamples();
    if (reader->Start() != kNoError ||
        reader->ReadChannelFloat(out.samples.data(), &count, 1) != kNoError) {
        return false;
    }
    out.samples.resize(count);
    return true;
}

observation_matrix Analyse(const recording& speech, const CSpectralFeatureDescriptor& descriptor) {
    memory_stream samples(speech);
    std::unique_ptr<CSpectralStream> stream;
    observation_matrix observations;
    if (OpenObservationChain(&samples, descriptor, stream) != kNoError) {
        return observations;
    }
    observations.width = static_cast<size_t>(descriptor.numFeatures);
    const uint32_t count = stream->GetNumObservations();
    observations.values.resize(count * observations.width);
    for (uint32_t t = 0; t < count; ++t) {
        float energy = 0.0f;
        if (stream->GetObservation(observations.values.data() + t * observations.width, &energy) !=
            kNoError) {
            return {};
        }
    }
    return observations;
}

} // namespace tessarin::training
