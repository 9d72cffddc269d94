#include "features/observation_chain.h"

#include <utility>

#include "audio/files/audio_file_registry.h"
#include "audio/pcm_pre_emph_stream.h"
#include "audio/quib_stream.h"
#include "audio/resampled_pcm_stream.h"
#include "base/counted_ptr.h"
#include "base/trunc_sat.h"
#include "features/spectral_feature_descriptor.h"
#include "features/spectral_stream.h"

namespace tessarin {

namespace {

constexpr uint32_t kChannel = 1;
constexpr float kStopBandCutoff = 0.8f;

PCMFormat AnalysisFormat(const CSpectralFeatureDescriptor& descriptor) {
    return {TruncSat<uint32_t>(descriptor.sampleRate * 65536.0f), 16, 1};
}

} // namespace

error_code OpenObservationChain(CPCMRdrStream* reader, const CSpectralFeatureDescriptor& descriptor,
                                std::unique_ptr<CSpectralStream>& out) {
    if (!(descriptor.sampleRate > 0.0f)) {
        return kInvalidArgument;
    }
    const PCMFormat target = AnalysisFormat(descriptor);
    const auto resampled = counted_ptr<CResampledPCMStream>::Adopt(new CResampledPCMStream);
    error_code code = resampled->Instantiate(reader, &target, kChannel, kStopBandCutoff);
    if (code != kNoError) {
        return code;
    }
    const auto emphasized = counted_ptr<CPCMPreEmphStream>::Adopt(new CPCMPreEmphStream);
    code = emphasized->Instantiate(resampled.get(), kChannel, descriptor.preEmphasis);
    if (code != kNoError) {
        return code;
    }
    auto observations = std::make_unique<CSpectralStream>();
    // Kept: an analysis that cannot be set up does not fail here but in each read, with code 2.
    // Hosts open streams first and look at codes when they recognize.
    static_cast<void>(observations->Init2(emphasized.get(), kChannel, &descriptor));
    code = emphasized->Start();
    if (code == kNoError) {
        out = std::move(observations);
    }
    return code;
}

error_code OpenObservationChain(const char* path, const CSpectralFeatureDescriptor& descriptor,
                                std::unique_ptr<CSpectralStream>& out) {
    CPCMRdrStream* opened = nullptr;
    const error_code code = OpenAudioFileStream(path, &opened);
    if (code != kNoError) {
        return code;
    }
    const auto reader = counted_ptr<CPCMRdrStream>::Adopt(opened);
    return OpenObservationChain(reader.get(), descriptor, out);
}

error_code OpenObservationChain(IQuibPCMStream* stream,
                                const CSpectralFeatureDescriptor& descriptor,
                                std::unique_ptr<CSpectralStream>& out) {
    const auto reader = counted_ptr<CQuibStream>::Adopt(new CQuibStream);
    const error_code code = reader->Open(stream);
    if (code != kNoError) {
        return code;
    }
    return OpenObservationChain(reader.get(), descriptor, out);
}

} // namespace tessarin
