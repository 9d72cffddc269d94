#include "features/spectral_stream.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <functional>

#include "base/flog.h"
#include "base/guarded.h"
#include "features/decibel_power.h"
#include "features/delta_layouts.h"
#include "features/hamming_window.h"
#include "features/spectral_feature_descriptor.h"

namespace tessarin {

namespace {

constexpr int32_t kMaxWindowSize = 65536;
constexpr float kHzPerFixed = 1.5258789e-5f; // 1 / 65536
constexpr float kNoEnergyYet = 1e33f;

bool FitsWindow(int32_t samples) {
    return samples >= 2 && samples <= kMaxWindowSize &&
           std::has_single_bit(static_cast<uint32_t>(samples));
}

float RateInHz(CPCMRdrStream& pcm) {
    return static_cast<float>(pcm.GetSampleRate()) * kHzPerFixed;
}

} // namespace

CSpectralStream::CSpectralStream() {
    flog scope("CSpectralStream::CSpectralStream");
}

CSpectralStream::~CSpectralStream() {
    flog scope("CSpectralStream::~CSpectralStream");
    CSpectralStream::Stop();
}

error_code CSpectralStream::Init(CPCMRdrStream* pcm, uint32_t sourceChannel, int32_t samples,
                                 int32_t overlapSamples) {
    noiseFloor.StopLearning();
    flog scope("CSpectralStream::Init");
    FreeBuffers();
    history = {};
    channel = sourceChannel;
    source = counted_ptr<CPCMRdrStream>::Share(pcm);
    minEnergy = kNoEnergyYet;
    maxEnergy = 0.0f;
    firstFrame = true;
    meanDone = false;
    previousSample = 0.0f;
    if (!source) {
        return kInvalidArgument;
    }
    windowSize = samples;
    sampleRate = RateInHz(*source);
    if (!FitsWindow(samples) || overlapSamples < 0 || overlapSamples >= samples) {
        return kInvalidArgument;
    }
    overlap = overlapSamples;
    hop = windowSize - overlap;
    return PrepareBuffers();
}

error_code CSpectralStream::PrepareBuffers() {
    const auto size = static_cast<size_t>(windowSize);
    const error_code code = Guarded([&] {
        frame.assign(3 * size + 8192, 0.0f);
        window.resize(size);
    });
    if (code != kNoError) {
        FreeBuffers();
        return code;
    }
    HammingWindow(window);
    spectralMean.fill(0.0f);
    return kNoError;
}

void CSpectralStream::FreeBuffers() {
    window = {};
    frame = {};
    spectrum = {};
}

error_code CSpectralStream::Init2(CPCMRdrStream* pcm, uint32_t sourceChannel,
                                  const CSpectralFeatureDescriptor* descriptor) {
    flog scope("CSpectralStream::Init2");
    if (descriptor == nullptr) {
        return kInvalidArgument;
    }
    error_code code = Init(pcm, sourceChannel, descriptor->windowSize, descriptor->windowOverlap);
    if (code == kNoError) {
        code = Guarded([&] { return PrepareLayout(*descriptor); });
    }
    if (code != kNoError) {
        FreeBuffers();
    }
    return code;
}

error_code CSpectralStream::PrepareLayout(const CSpectralFeatureDescriptor& descriptor) {
    const TArray<tagBandFilter>& filters = descriptor.bands;
    const bool withEnergy = LayoutHasEnergy(descriptor.numFeatures);
    const int32_t maxCepstra = withEnergy ? kMaxFrameValues - 1 : kMaxFrameValues;
    const int32_t maxBands = windowSize + windowSize / 2 - 1; // after the powers in `spectrum`
    if (descriptor.numFeatures < 0 || descriptor.numCepstra < 1 ||
        descriptor.numCepstra > maxCepstra || filters.GetSize() > maxBands) {
        return kInvalidArgument;
    }
    if (filters.GetSize() != bands.GetNumBands()) {
        noiseFloor.Clear();
    }
    numFeatures = descriptor.numFeatures;
    numCepstra = descriptor.numCepstra;
    descriptorFlags = descriptor.flags;
    hasEnergy = withEnergy;
    cosineTransform.Prepare(filters.GetSize(), numCepstra);
    bands.SetFilters({filters.begin(), static_cast<size_t>(filters.GetSize())});
    return bands.Prepare(windowSize / 2, sampleRate) ? kNoError : kInvalidArgument;
}

void CSpectralStream::Stop() {
    flog scope("CSpectralStream::Stop");
    FreeBuffers();
    history.frameHistory = {};
    history.energyHistory = {};
    history.featureWidth = 0;
}

void CSpectralStream::Restart() {
    flog scope("CSpectralStream::Restart");
    previousSample = 0.0f;
    firstFrame = true;
    meanDone = false;
    history.featureWidth = 0;
    history.observationCount = 0;
    minEnergy = kNoEnergyYet;
    maxEnergy = 0.0f;
    if (source) {
        sampleRate = RateInHz(*source);
        source->Start();
    }
}

uint32_t CSpectralStream::GetNumObservations() {
    if (!source) {
        return 0;
    }
    return std::min(maxObservations, source->GetHeldSamples() / static_cast<uint32_t>(hop));
}

void CSpectralStream::GetFrameGeometry(uint32_t* outWindowSize, uint32_t* outOverlap) {
    if (outWindowSize != nullptr) {
        *outWindowSize = static_cast<uint32_t>(windowSize);
    }
    if (outOverlap != nullptr) {
        *outOverlap = static_cast<uint32_t>(overlap);
    }
}

float CSpectralStream::GetSampleRate() {
    return source ? RateInHz(*source) : 0.0f;
}

void CSpectralStream::GetEnergyRange(float* minimum, float* maximum) {
    if (minimum != nullptr) {
        *minimum = minEnergy;
    }
    if (maximum != nullptr) {
        *maximum = maxEnergy;
    }
}

error_code CSpectralStream::SetNoiseFloor(uint32_t kind, const float* bandEnergies, int32_t count) {
    if (kind != 1) {
        return kNotAvailable;
    }
    // Kept: a floor of the wrong width still turns the subtraction on, and one is learned instead.
    processingFlags |= kSubtractNoiseFloor;
    if (count != bands.GetNumBands()) {
        return kOutOfRange;
    }
    if (bandEnergies == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] { noiseFloor.Install({bandEnergies, static_cast<size_t>(count)}); });
}

// Samples past the end of the audio are silence.
error_code CSpectralStream::ReadSamples(float* samples, int32_t count) {
    const auto wanted = static_cast<uint32_t>(count);
    uint32_t delivered = wanted;
    const error_code code = source->ReadChannelFloat(samples, &delivered, channel);
    if (code == kNoError && delivered < wanted) {
        std::fill(samples + delivered, samples + wanted, 0.0f);
    }
    return code;
}

error_code CSpectralStream::ReadNextFrame() {
    if (window.empty() || !source) {
        return kInvalidArgument;
    }
    if (firstFrame && overlap > 0) {
        const error_code code = ReadSamples(frame.data() + hop, overlap);
        if (code != kNoError) {
            return code;
        }
    }
    firstFrame = false;
    std::copy_n(frame.begin() + hop, overlap, frame.begin());
    return ReadSamples(frame.data() + overlap, hop);
}

error_code CSpectralStream::CalcFrameSpectrum(float* out, float* decibels) {
    const error_code code = ReadNextFrame();
    if (code != kNoError) {
        return code;
    }
    if (decibels != nullptr) {
        const std::span<const float> middle(frame.data() + overlap / 2, static_cast<size_t>(hop));
        *decibels = DecibelPower(middle, previousSample);
    }
    std::transform(window.begin(), window.end(), frame.begin(), out, std::multiplies<>());
    fft.Transform(out, static_cast<uint32_t>(windowSize));
    return kNoError;
}

} // namespace tessarin
