#include "audio/resampled_pcm_stream.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "audio/float_buffer.h"
#include "audio/sample_conversion.h"
#include "base/flog.h"

namespace tessarin {

namespace {

constexpr uint32_t kMostChannels = 1; ///< that the buffers have room for
constexpr uint32_t kStackSamples = 4096;

} // namespace

error_code CResampledPCMStream::Instantiate(CPCMRdrStream* stream, const PCMFormat* target,
                                            uint32_t sourceChannel, float cutoff) {
    flog scope("CResampledPCMStream::Instantiate");
    if (stream == nullptr || target == nullptr ||
        !FitsInto(kMostChannels, *stream, sourceChannel)) {
        return kInvalidArgument;
    }
    source = counted_ptr<CPCMRdrStream>::Share(stream);
    channel = sourceChannel;
    format = {target->sampleRate, 16, 1};
    bytesPerFrame = 2;
    surplusBegin = surplusEnd = 0;
    const error_code code =
        resampler.Instantiate(static_cast<int32_t>(stream->GetSampleRate() >> 16),
                              static_cast<int32_t>(format.sampleRate >> 16), cutoff);
    if (code != kNoError) {
        return code;
    }
    surplus = NewFloats(static_cast<uint64_t>(resampler.GetInterpolation()));
    if (surplus == nullptr) {
        source.reset(); // nothing may be read without the room for it
        return kOutOfMemory;
    }
    UpdateLength();
    return kNoError;
}

void CResampledPCMStream::UpdateLength() {
    if (source) {
        numSamples = resampler.GetOutputCount(source->GetNumSamples());
        byteLength = numSamples * 2;
    }
}

uint32_t CResampledPCMStream::GetNumSamples() {
    UpdateLength();
    return numSamples;
}

uint32_t CResampledPCMStream::GetByteLength() {
    UpdateLength();
    return byteLength;
}

error_code CResampledPCMStream::SetSourceStream(CPCMRdrStream* stream) {
    if (stream != nullptr && !FitsInto(kMostChannels, *stream, channel)) {
        return kInvalidArgument;
    }
    source = counted_ptr<CPCMRdrStream>::Share(stream);
    return kNoError;
}

error_code CResampledPCMStream::Start() {
    resampler.Reset();
    surplusBegin = surplusEnd = 0;
    return source ? source->Start() : kInvalidArgument;
}

error_code CResampledPCMStream::Stop() {
    return source ? source->Stop() : kNoError;
}

error_code CResampledPCMStream::ReadBlock(void* buffer, uint32_t* frames) {
    return ReadChannelInt16(static_cast<int16_t*>(buffer), frames, channel);
}

error_code CResampledPCMStream::ReadChannel(void* buffer, uint32_t* frames, uint32_t) {
    return ReadChannelInt16(static_cast<int16_t*>(buffer), frames, channel);
}

error_code CResampledPCMStream::ReadChannelInt16(int16_t* buffer, uint32_t* frames, uint32_t) {
    const auto values = NewFloats(*frames);
    if (values == nullptr) {
        *frames = 0;
        return kOutOfMemory;
    }
    const error_code code = ReadChannelFloat(values.get(), frames, channel);
    Int16FromFloats({buffer, *frames}, {values.get(), *frames});
    return code;
}

error_code CResampledPCMStream::ReadChannelFloat(float* buffer, uint32_t* frames, uint32_t) {
    const uint32_t wanted = *frames;
    *frames = 0;
    if (!source) {
        return kInvalidArgument;
    }
    uint32_t produced = DeliverSurplus(buffer, wanted);
    if (produced < wanted) {
        uint32_t converted = wanted - produced;
        const error_code code = ReadConverted(buffer + produced, &converted);
        if (code != kNoError) {
            return code;
        }
        produced += converted;
    }
    *frames = produced;
    return kNoError;
}

/// Hands out what the last top-up made beyond the block that it filled.
uint32_t CResampledPCMStream::DeliverSurplus(float* out, uint32_t wanted) {
    const uint32_t taken = std::min(wanted, surplusEnd - surplusBegin);
    std::copy_n(surplus.get() + surplusBegin, taken, out);
    surplusBegin += taken;
    return taken;
}

/// Reads as much of the source as `*frames` frames of output are made of, and converts it.
error_code CResampledPCMStream::ReadConverted(float* out, uint32_t* frames) {
    constexpr uint32_t kMost = std::numeric_limits<int32_t>::max();
    const uint32_t wanted = std::min(*frames, kMost);
    *frames = 0;
    uint32_t needed = static_cast<uint32_t>(resampler.GetInputCount(static_cast<int32_t>(wanted)));
    if (resampler.GetDecimation() == 1) { // long counts are rounded, perhaps up
        needed = std::min(needed, wanted / static_cast<uint32_t>(resampler.GetInterpolation()));
    }
    std::array<float, kStackSamples> onStack;
    std::unique_ptr<float[]> onHeap;
    if (needed > kStackSamples) {
        onHeap = NewFloats(needed);
        if (onHeap == nullptr) {
            return kOutOfMemory;
        }
    }
    float* const input = onHeap ? onHeap.get() : onStack.data();
    const error_code code = source->ReadChannelFloat(input, &needed, channel);
    if (code != kNoError || needed == 0) {
        return code;
    }
    *frames = resampler.Process(out, input, needed, wanted);
    return TopUp(out, wanted, frames);
}

/// Fills the block to its last frame by single samples of the source, since the length of what was
/// read was rounded down.
error_code CResampledPCMStream::TopUp(float* out, uint32_t wanted, uint32_t* produced) {
    while (*produced < wanted) {
        float sample;
        uint32_t delivered = 1;
        const error_code code = source->ReadChannelFloat(&sample, &delivered, channel);
        if (code != kNoError || delivered == 0) {
            return code;
        }
        // One input may make more output than there is room for: it waits for the next read.
        const uint32_t room = static_cast<uint32_t>(resampler.GetInterpolation());
        surplusBegin = 0;
        surplusEnd = resampler.Process(surplus.get(), &sample, 1, room);
        *produced += DeliverSurplus(out + *produced, wanted - *produced);
    }
    return kNoError;
}

} // namespace tessarin
