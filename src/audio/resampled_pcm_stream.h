#pragma once

#include <cstdint>
#include <memory>

#include "audio/files/pcm_rdr_stream.h"
#include "audio/resampler.h"
#include "base/counted_ptr.h"

namespace tessarin {

/// Stage that turns one channel of any stream into 16-bit mono at another rate. Comes after the
/// reader. May be a member of another object: its count starts at 1.
class CResampledPCMStream : public CPCMRdrStream {
public:
    const char* GetStreamName() override { return "Resample"; }
    /// Follow the length of the source, which may still grow.
    uint32_t GetNumSamples() override;
    uint32_t GetByteLength() override;
    CPCMRdrStream* GetSourceStream() override { return source.get(); }
    error_code SetSourceStream(CPCMRdrStream* stream) override;
    error_code Start() override;
    error_code ReadBlock(void* buffer, uint32_t* frames) override;
    error_code ReadChannel(void* buffer, uint32_t* frames, uint32_t sourceChannel) override;
    error_code ReadChannelInt16(int16_t* buffer, uint32_t* frames, uint32_t sourceChannel) override;
    /// Kept: the channel argument is ignored in favour of that of `Instantiate`, since later
    /// stages address a mono stream.
    error_code ReadChannelFloat(float* buffer, uint32_t* frames, uint32_t sourceChannel) override;
    error_code Stop() override;

    /// Connects the stage to `stream`, of which it reads channel `sourceChannel`. Only the rate of
    /// `target` counts. Returns 0; 2 without a source or target, for channel 0 of a multi-channel
    /// source, or for rates that cannot be converted; 1 without memory. May be called again.
    virtual error_code Instantiate(CPCMRdrStream* stream, const PCMFormat* target,
                                   uint32_t sourceChannel, float cutoff);

private:
    void UpdateLength();
    uint32_t DeliverSurplus(float* out, uint32_t wanted);
    error_code ReadConverted(float* out, uint32_t* frames);
    error_code TopUp(float* out, uint32_t wanted, uint32_t* produced);

    counted_ptr<CPCMRdrStream> source;
    CResampler resampler;
    uint32_t channel = 0;
    std::unique_ptr<float[]> surplus; ///< room for what one input sample makes
    uint32_t surplusBegin = 0;        ///< what the last read left of it
    uint32_t surplusEnd = 0;
};

} // namespace tessarin
