#include "audio/non_rtdb_noise_gate_stream.h"

#include <algorithm>
#include <numeric>
#include <span>
#include <vector>

#include "audio/float_buffer.h"
#include "audio/sample_conversion.h"
#include "base/guarded.h"

namespace tessarin {

namespace {

constexpr uint32_t kMostChannels = 1;        ///< that the signal has room for
constexpr float kHzPerFixed = 1.5258789e-5f; // 1 / 65536
constexpr float kUsualPercentile = 0.28f;

int32_t OrUsual(int32_t given, int32_t usual) {
    return given != 0 ? given : usual;
}

} // namespace

error_code NonRTDBNoiseGateStream::Instantiate(CPCMRdrStream* stream, uint32_t sourceChannel,
                                               float threshold, float percentile,
                                               int32_t minQuietMs, int32_t maxBlipMs,
                                               int32_t rampMs) {
    if (stream == nullptr || !FitsInto(kMostChannels, *stream, sourceChannel)) {
        return kInvalidArgument;
    }
    samples.reset();
    source = counted_ptr<CPCMRdrStream>::Share(stream);
    channel = sourceChannel;
    thresholdDb = threshold;
    thresholdPercentile = percentile != 0.0f ? percentile : kUsualPercentile;
    const noise_gate_settings usual;
    settings = {OrUsual(minQuietMs, usual.minQuietMs), OrUsual(maxBlipMs, usual.maxBlipMs), rampMs};
    stream->GetFormat(&format);
    numSamples = stream->GetNumSamples();
    bytesPerFrame = 2;
    byteLength = 2 * numSamples;
    return kNoError;
}

error_code NonRTDBNoiseGateStream::SetSourceStream(CPCMRdrStream* stream) {
    if (stream != nullptr && !FitsInto(kMostChannels, *stream, channel)) {
        return kInvalidArgument;
    }
    source = counted_ptr<CPCMRdrStream>::Share(stream);
    return kNoError;
}

error_code NonRTDBNoiseGateStream::Start() {
    const error_code code = source ? source->Start() : kInvalidArgument;
    return code == kNoError ? Analyse() : code;
}

error_code NonRTDBNoiseGateStream::Stop() {
    samples.reset();
    readPosition = 0;
    return source ? source->Stop() : kNoError;
}

error_code NonRTDBNoiseGateStream::Analyse() {
    error_code code = source ? source->Start() : kInvalidArgument;
    if (code == kNoError) {
        code = ReadSource();
    }
    if (code == kNoError) {
        code = Guarded([&] { Gate(); });
    }
    if (code != kNoError) {
        samples.reset();
    }
    readPosition = 0;
    return code;
}

error_code NonRTDBNoiseGateStream::ReadSource() {
    uint32_t frames = std::min(numSamples, source->GetHeldSamples());
    samples = NewFloats(frames);
    if (samples == nullptr) {
        return kOutOfMemory;
    }
    const error_code code = source->ReadChannelFloat(samples.get(), &frames, channel);
    if (code == kNoError) {
        numSamples = frames;
        source->Stop();
    }
    return code;
}

void NonRTDBNoiseGateStream::Gate() {
    const std::span<float> signal(samples.get(), numSamples);
    const float rateHz = static_cast<float>(GetSampleRate()) * kHzPerFixed;
    const std::vector<float> levels = PeakLevels(signal, rateHz);
    const double sum = std::accumulate(signal.begin(), signal.end(), 0.0);
    dcOffset = signal.empty() ? 0.0f : static_cast<float>(sum / static_cast<double>(signal.size()));
    if (!(thresholdDb < 0.0f)) {
        thresholdDb = LevelAtPercentile(levels, thresholdPercentile);
    }
    SilenceQuietStretches(signal, levels, rateHz, thresholdDb, settings);
}

/// Moves on by at most `wanted` samples, beginning at `*first`, and returns by how many.
uint32_t NonRTDBNoiseGateStream::TakeSamples(uint32_t wanted, const float** first) {
    const uint32_t taken = std::min(wanted, numSamples - readPosition);
    *first = samples.get() + readPosition;
    readPosition += taken;
    return taken;
}

error_code NonRTDBNoiseGateStream::ReadChannelFloat(float* buffer, uint32_t* frames, uint32_t) {
    const uint32_t wanted = *frames;
    *frames = 0;
    const error_code code = samples != nullptr ? kNoError : Analyse();
    if (code == kNoError) {
        const float* first = nullptr;
        *frames = TakeSamples(wanted, &first);
        std::copy_n(first, *frames, buffer);
    }
    return code;
}

error_code NonRTDBNoiseGateStream::ReadBlock(void* buffer, uint32_t* frames) {
    const uint32_t wanted = *frames;
    *frames = 0;
    const error_code code = samples != nullptr ? kNoError : Analyse();
    if (code == kNoError) {
        const float* first = nullptr;
        *frames = TakeSamples(wanted, &first);
        Int16FromFloats({static_cast<int16_t*>(buffer), *frames}, {first, *frames});
    }
    return code;
}

error_code NonRTDBNoiseGateStream::ReadChannel(void* buffer, uint32_t* frames, uint32_t) {
    return ReadBlock(buffer, frames);
}

} // namespace tessarin
