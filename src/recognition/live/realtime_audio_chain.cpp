#include "recognition/live/realtime_audio_chain.h"

#include "base/trunc_sat.h"
#include "features/spectral_feature_descriptor.h"

namespace tessarin {

namespace {

constexpr uint32_t kChannel = 1;
constexpr float kStopBandCutoff = 0.8f;

} // namespace

// The stages hold each other, so they are taken apart before the first of them goes.
realtime_audio_chain::~realtime_audio_chain() {
    spectral.SetSource(nullptr);
    static_cast<void>(emphasis.SetSourceStream(nullptr));
    static_cast<void>(resampler.SetSourceStream(nullptr));
}

error_code realtime_audio_chain::Init(const PCMFormat& format,
                                      const CSpectralFeatureDescriptor& descriptor) {
    const error_code code = input.Instantiate(&format);
    return code == kNoError ? Connect(input, descriptor) : code;
}

error_code realtime_audio_chain::Connect(CPCMRdrStream& source,
                                         const CSpectralFeatureDescriptor& descriptor) {
    const PCMFormat target{TruncSat<uint32_t>(descriptor.sampleRate * 65536.0f), 16, 1};
    error_code code = resampler.Instantiate(&source, &target, kChannel, kStopBandCutoff);
    if (code != kNoError) {
        return code;
    }
    static_cast<void>(emphasis.Instantiate(&resampler, kChannel, descriptor.preEmphasis));
    code = spectral.Init2(&emphasis, kChannel, &descriptor);
    spectral.SetMaxObservations(0); // there is no whole recording to take a mean of
    return code;
}

} // namespace tessarin
