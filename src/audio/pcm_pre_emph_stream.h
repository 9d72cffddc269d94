#pragma once

#include <cstdint>

#include "audio/files/pcm_rdr_stream.h"
#include "base/counted_ptr.h"

namespace tessarin {

/// Stage that raises the high frequencies of speech before the spectral analysis. Comes last in a
/// chain. May be a member of another object: its count starts at 1.
class CPCMPreEmphStream : public CPCMRdrStream {
public:
    const char* GetStreamName() override { return "PreEmph"; }
    CPCMRdrStream* GetSourceStream() override { return source.get(); }
    error_code SetSourceStream(CPCMRdrStream* stream) override;
    error_code Start() override;
    /// Delivers 16-bit samples whatever the format says, so the buffer has 2 bytes for each of the
    /// `frames`.
    error_code ReadBlock(void* buffer, uint32_t* frames) override;
    error_code ReadChannelFloat(float* buffer, uint32_t* frames, uint32_t sourceChannel) override;
    error_code Stop() override;

    /// Connects the stage to `stream`, whose format and present length it takes over. Returns 0, or
    /// 2 without a source or for channel 0 of a source with more than two channels. May be called
    /// again.
    virtual error_code Instantiate(CPCMRdrStream* stream, uint32_t sourceChannel, float emphasis);

private:
    float coefficient = 0.0f;
    counted_ptr<CPCMRdrStream> source;
    float previous = 0.0f; ///< the last input sample
    uint32_t channel = 0;
};

} // namespace tessarin
