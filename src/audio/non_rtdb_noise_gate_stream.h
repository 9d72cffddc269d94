#pragma once

#include <cstdint>
#include <memory>

#include "audio/files/pcm_rdr_stream.h"
#include "audio/noise_gate.h"
#include "base/counted_ptr.h"

namespace tessarin {

/// Stage that silences what is between the words. It reads its whole source before it decides what
/// is quiet, so it is of no use for audio that is still arriving. Comes after the resampler.
class NonRTDBNoiseGateStream : public CPCMRdrStream {
public:
    const char* GetStreamName() override { return "NoiseGateNonRT"; }
    CPCMRdrStream* GetSourceStream() override { return source.get(); }
    error_code SetSourceStream(CPCMRdrStream* stream) override;
    /// Reads and gates the whole source; so does the first read without a Start.
    error_code Start() override;
    /// Delivers one channel of 16-bit samples whatever the format says.
    error_code ReadBlock(void* buffer, uint32_t* frames) override;
    error_code ReadChannel(void* buffer, uint32_t* frames, uint32_t sourceChannel) override;
    error_code ReadChannelFloat(float* buffer, uint32_t* frames, uint32_t sourceChannel) override;
    /// Frees the signal.
    error_code Stop() override;

    /// Connects the stage to `stream`, of which it reads channel `sourceChannel`, and takes over
    /// its format and present length. A threshold below 0 is one in decibels; otherwise the share
    /// `percentile` of the signal is quiet. A percentile of 0 means 0.28, a `minQuietMs` of 0 means
    /// 220, a `maxBlipMs` of 0 means 150. Returns 0, or 2 without a source or for channel 0 of a
    /// multi-channel one.
    virtual error_code Instantiate(CPCMRdrStream* stream, uint32_t sourceChannel, float threshold,
                                   float percentile, int32_t minQuietMs, int32_t maxBlipMs,
                                   int32_t rampMs);

private:
    error_code Analyse();
    error_code ReadSource();
    void Gate();
    uint32_t TakeSamples(uint32_t wanted, const float** first);

    counted_ptr<CPCMRdrStream> source;
    std::unique_ptr<float[]> samples; ///< the whole gated signal, null until it is analysed
    /// Kept: a threshold that was found stays for later runs, as if it had been given.
    float thresholdDb = 0.0f;
    float thresholdPercentile = 0.0f;
    noise_gate_settings settings;
    uint32_t channel = 0;
    uint32_t readPosition = 0;
    float dcOffset = 0.0f; ///< Kept: the mean, for whoever looks at a gate in a debugger
};

} // namespace tessarin
