#include "recognition/live/input_meter.h"

#include <algorithm>
#include <array>

#include "features/spectral_feature_descriptor.h"

namespace tessarin {

void input_meter::silence::Open(uint32_t sampleRate) {
    format = {sampleRate, 16, 1};
    bytesPerFrame = 2;
}

error_code input_meter::silence::ReadBlock(void* buffer, uint32_t* frames) {
    std::fill_n(static_cast<int16_t*>(buffer), *frames, int16_t{0});
    numRead += *frames;
    return kNoError;
}

error_code input_meter::silence::ReadChannelFloat(float* buffer, uint32_t* frames, uint32_t) {
    std::fill_n(buffer, *frames, 0.0f);
    numRead += *frames;
    return kNoError;
}

error_code input_meter::Open(const PCMFormat& format,
                             const CSpectralFeatureDescriptor& descriptor) {
    source.Open(format.sampleRate);
    const error_code code = chain.Connect(source, descriptor);
    if (code == kNoError) {
        chain.spectral.Restart();
    }
    return code;
}

std::optional<uint64_t> input_meter::GetNextFrames() {
    if (!next) {
        std::array<float, kObservationScratch> features;
        float energy = 0.0f;
        const uint64_t before = source.numRead;
        if (chain.spectral.GetFeatureCount() > kObservationScratch ||
            chain.spectral.GetObservation(features.data(), &energy) != kNoError) {
            return std::nullopt;
        }
        next = source.numRead - before;
    }
    return next;
}

} // namespace tessarin
