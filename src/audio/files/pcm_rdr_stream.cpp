#include "audio/files/pcm_rdr_stream.h"

#include <algorithm>
#include <limits>
#include <new>

#include "audio/sample_conversion.h"

namespace tessarin {

error_code CPCMRdrStream::GetFormat(PCMFormat* out) {
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = format;
    return kNoError;
}

uint32_t CPCMRdrStream::GetSampleRate() {
    return format.sampleRate;
}

uint16_t CPCMRdrStream::GetBitsPerSample() {
    return format.bitsPerSample;
}

uint32_t CPCMRdrStream::GetNumSamples() {
    return numSamples;
}

uint32_t CPCMRdrStream::GetByteLength() {
    return byteLength;
}

error_code CPCMRdrStream::Start() {
    return kNoError;
}

error_code CPCMRdrStream::Stop() {
    return kNoError;
}

// Kept: a scratch buffer that is large enough ends the read with nothing read and the count as it
// was; what reads a multi-channel file by this operation gets one block and then silence.
error_code CPCMRdrStream::ReadChannel(void* buffer, uint32_t* frames, uint32_t channel) {
    if (format.channels == 1 || channel == 0) {
        return ReadBlock(buffer, frames);
    }
    const uint64_t need = uint64_t{*frames} * bytesPerFrame;
    if (bytesPerFrame == 0 || channel > format.channels) {
        *frames = 0;
        return bytesPerFrame == 0 ? kNoError : kInvalidArgument;
    }
    if (scratch != nullptr && static_cast<uint64_t>(scratchSize) >= need) {
        return kNoError;
    }
    error_code code = GrowScratch(*frames);
    if (code == kNoError) {
        code = ReadBlock(scratch.get(), frames);
    }
    if (code != kNoError) {
        *frames = 0;
        return code;
    }
    if (format.bitsPerSample == 8 || format.bitsPerSample == 16) {
        const size_t sampleBytes = format.bitsPerSample / 8u;
        CopyChannel(buffer, scratch.get() + (channel - 1) * sampleBytes, *frames, sampleBytes,
                    bytesPerFrame);
    }
    return kNoError;
}

// Kept: the widening covers `frames` values, of every stream, so that of all channels together only
// the first part is widened; callers that want all channels as 16 bits read 16-bit streams.
error_code CPCMRdrStream::ReadChannelInt16(int16_t* buffer, uint32_t* frames, uint32_t channel) {
    const error_code code = ReadChannel(buffer, frames, channel);
    if (code == kNoError && format.bitsPerSample != 16) {
        WidenToInt16({buffer, *frames});
    }
    return code;
}

error_code CPCMRdrStream::ReadChannelFloat(float* buffer, uint32_t* frames, uint32_t channel) {
    if (bytesPerFrame == 0) {
        *frames = 0;
        return kNoError;
    }
    error_code code = channel > format.channels ? kInvalidArgument : GrowScratch(*frames);
    if (code == kNoError) {
        code = ReadBlock(scratch.get(), frames);
    }
    if (code != kNoError) {
        *frames = 0;
        return code;
    }
    const size_t sampleBytes = format.bitsPerSample / 8u;
    if (channel == 0) {
        const std::span<float> samples{buffer, size_t{*frames} * format.channels};
        if (format.bitsPerSample == 16) {
            FloatsFromInt16(samples, scratch.get(), sampleBytes);
        } else {
            FloatsFromUint8(samples, scratch.get(), 1);
        }
        return kNoError;
    }
    const uint8_t* first = scratch.get() + (channel - 1) * sampleBytes;
    if (format.bitsPerSample == 16) {
        FloatsFromInt16({buffer, *frames}, first, bytesPerFrame);
    } else if (format.bitsPerSample == 8) {
        FloatsFromUint8({buffer, *frames}, first, bytesPerFrame);
    }
    return kNoError;
}

uint32_t CPCMRdrStream::GetHeldSamples() {
    constexpr int kMostStages = 64; // a chain might lead back to itself
    CPCMRdrStream* reader = this;
    for (int i = 0; i < kMostStages; ++i) {
        CPCMRdrStream* const before = reader->GetSourceStream();
        if (before == nullptr) {
            break;
        }
        reader = before;
    }
    const uint32_t claimed = GetNumSamples();
    const uint32_t readerRate = reader->GetSampleRate();
    if (reader->heldSamples >= reader->GetNumSamples() || readerRate == 0) {
        return claimed;
    }
    const uint64_t held = uint64_t{reader->heldSamples} * GetSampleRate() / readerRate;
    return static_cast<uint32_t>(std::min<uint64_t>(claimed, held));
}

bool CPCMRdrStream::FitsInto(uint32_t most, CPCMRdrStream& stream, uint32_t channel) {
    PCMFormat streamFormat{};
    stream.GetFormat(&streamFormat);
    return channel != 0 || streamFormat.channels <= most;
}

error_code CPCMRdrStream::GrowScratch(uint32_t frames) {
    const uint64_t need = uint64_t{frames} * bytesPerFrame;
    if (scratch != nullptr && static_cast<uint64_t>(scratchSize) >= need) {
        return kNoError;
    }
    scratch.reset();
    scratchSize = 0;
    if (need > static_cast<uint64_t>(std::numeric_limits<int32_t>::max())) {
        return kOutOfMemory;
    }
    scratch.reset(new (std::nothrow) uint8_t[static_cast<size_t>(need)]());
    if (scratch == nullptr) {
        return kOutOfMemory;
    }
    scratchSize = static_cast<int32_t>(need);
    return kNoError;
}

} // namespace tessarin
