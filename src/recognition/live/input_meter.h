#pragma once

#include <cstdint>
#include <optional>

#include "recognition/live/realtime_audio_chain.h"

namespace tessarin {

/// Finds how much audio each observation of a chain reads, for whoever cannot wait in a read: a
/// second chain reads silence, one observation ahead, and counts it.
class input_meter {
public:
    /// `format` is that of the pushed audio. Returns 0 or the code of realtime_audio_chain.
    [[nodiscard]] error_code Open(const PCMFormat& format,
                                  const CSpectralFeatureDescriptor& descriptor);

    /// The sample frames that the next observation reads; the same until it is taken. None when the
    /// chain fails.
    std::optional<uint64_t> GetNextFrames();
    void TakeNext() { next.reset(); }

private:
    class silence final : public CPCMRdrStream {
    public:
        void Open(uint32_t sampleRate);

        const char* GetStreamName() override { return "AudioReader"; }
        CPCMRdrStream* GetSourceStream() override { return nullptr; }
        error_code SetSourceStream(CPCMRdrStream*) override { return kNotAvailable; }
        error_code ReadBlock(void* buffer, uint32_t* frames) override;
        error_code ReadChannelFloat(float* buffer, uint32_t* frames, uint32_t channel) override;

        uint64_t numRead = 0;
    };

    silence source; ///< outlives the chain
    realtime_audio_chain chain;
    std::optional<uint64_t> next;
};

} // namespace tessarin
