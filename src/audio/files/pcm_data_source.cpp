#include "audio/files/pcm_data_source.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <span>

#include "audio/sample_conversion.h"
#include "base/allocation.h"
#include "base/little_endian.h"
#include "base/trunc_sat.h"

namespace tessarin {

namespace {

constexpr uint64_t kMostBytes = std::numeric_limits<int32_t>::max();

constexpr float kHighestWritten = 32767.0f;

int32_t Saturated(int64_t value) {
    using limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<int64_t>(value, limits::min(), limits::max()));
}

} // namespace

CPCMDataSource::~CPCMDataSource() {
    tessarin::free(data);
}

error_code CPCMDataSource::GetFormat(PCMFormat* out) const {
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = format;
    return kNoError;
}

double CPCMDataSource::SamplesToMs(int32_t samples) const {
    const float rate = static_cast<float>(format.sampleRate) / 65536.0f;
    return rate > 0.0f ? samples * 1000.0 / rate : 0.0;
}

int32_t CPCMDataSource::BytesToSamples(int32_t bytes) const {
    return bytesPerFrame == 0 ? 0 : bytes / bytesPerFrame;
}

int32_t CPCMDataSource::SamplesToBytes(int32_t samples) const {
    return Saturated(int64_t{bytesPerFrame} * samples);
}

int32_t CPCMDataSource::MsToSamples(int32_t ms) const {
    return TruncSat<int32_t>(format.sampleRate / 65536.0 * ms / 1000.0);
}

error_code CPCMDataSource::ReadSamples(void* buffer, int32_t start, uint32_t* count,
                                       int32_t channel) {
    if (buffer == nullptr || count == nullptr) {
        return kInvalidArgument;
    }
    const uint32_t wanted = *count;
    *count = 0;
    if (start < 0 || start >= numSamples) {
        return kOutOfRange;
    }
    const uint32_t delivered = std::min(wanted, static_cast<uint32_t>(numSamples - start));
    const auto frameBytes = static_cast<size_t>(bytesPerFrame);
    uint8_t* const first = data + static_cast<size_t>(start) * frameBytes;
    if (channel == 0 || format.channels == 1) {
        std::memcpy(buffer, first, delivered * frameBytes);
    } else if (channel < 0 || channel > format.channels) {
        return kOutOfRange;
    } else { // Kept: one channel of several goes from the buffer into the source
        const size_t sampleBytes = format.bitsPerSample / 8u;
        CopyChannel(first + static_cast<size_t>(channel - 1) * sampleBytes,
                    static_cast<const uint8_t*>(buffer), delivered, sampleBytes, frameBytes);
    }
    *count = delivered;
    return kNoError;
}

/// How many values a read of `count` frames left in the buffer.
size_t CPCMDataSource::ValuesRead(uint32_t count, int32_t channel) const {
    return size_t{count} * (channel == 0 ? format.channels : 1u);
}

error_code CPCMDataSource::ReadSamplesInt16(int16_t* buffer, int32_t start, uint32_t* count,
                                            int32_t channel) {
    const error_code code = ReadSamples(buffer, start, count, channel);
    if (code == kNoError && format.bitsPerSample != 16) {
        WidenToInt16({buffer, ValuesRead(*count, channel)});
    }
    return code;
}

error_code CPCMDataSource::ReadSamplesFloat(float* buffer, int32_t start, uint32_t* count,
                                            int32_t channel) {
    auto* const narrow = reinterpret_cast<int16_t*>(buffer);
    const error_code code = ReadSamplesInt16(narrow, start, count, channel);
    if (code == kNoError) {
        WidenToFloats({buffer, ValuesRead(*count, channel)});
    }
    return code;
}

error_code CPCMDataSource::WriteSamplesFloat(const float* samples, int32_t start, int32_t count) {
    if (format.bitsPerSample != 16 || format.channels != 1) {
        return kNotAvailable;
    }
    if (samples == nullptr) {
        return kInvalidArgument;
    }
    if (start < 0 || start >= numSamples || count < 0) {
        return kOutOfRange;
    }
    const int32_t written = std::min(count, numSamples - start);
    uint8_t* to = data + size_t{2} * static_cast<size_t>(start);
    for (const float sample : std::span(samples, static_cast<size_t>(written))) {
        // Kept: -32768 is never written; hosts that negate what they wrote rely on it.
        const float held = std::clamp(sample, -kHighestWritten, kHighestWritten);
        StoreLittleEndian(to, TruncSat<int16_t>(held));
        to += 2;
    }
    return kNoError;
}

IPCMDataSource* CPCMDataSource::Clone() const {
    std::unique_ptr<CPCMDataSource> copy(new (std::nothrow) CPCMDataSource);
    const bool copied = copy != nullptr && copy->CopyFrom(this) == kNoError;
    return copied ? copy.release() : nullptr;
}

error_code CPCMDataSource::CopyFrom(const IPCMDataSource* other) {
    if (other == this) {
        return kNoError;
    }
    // Kept: 7 is what hosts know a failed copy by, exhausted memory among the reasons.
    if (other == nullptr || other->GetByteLength() < 0 || other->GetNumSamples() < 0) {
        MakeEmpty();
        return kBrokenPath;
    }
    PCMFormat otherFormat{};
    other->GetFormat(&otherFormat);
    const auto otherBytes = static_cast<uint64_t>(other->GetByteLength());
    const auto otherSamples = static_cast<uint64_t>(other->GetNumSamples());
    const uint64_t frameBytes = otherFormat.bitsPerSample / 8u * uint64_t{otherFormat.channels};
    if (otherSamples * frameBytes > otherBytes || (otherBytes > 0 && !other->GetData()) ||
        Allocate(otherFormat, otherBytes, otherSamples) != kNoError) {
        MakeEmpty();
        return kBrokenPath;
    }
    if (otherBytes > 0) {
        std::memcpy(data, other->GetData(), static_cast<size_t>(otherBytes));
    }
    return kNoError;
}

error_code CPCMDataSource::TakeChannel(const CPCMDataSource& all, uint32_t channel) {
    const auto frames = static_cast<uint32_t>(all.numSamples);
    const size_t sampleBytes = all.format.bitsPerSample / 8u;
    const error_code code = Allocate({all.format.sampleRate, 16, 1}, uint64_t{2} * frames, frames);
    if (code == kNoError && frames > 0) {
        CopyChannel(data, all.data + (channel - 1) * sampleBytes, frames, sampleBytes,
                    static_cast<size_t>(all.bytesPerFrame));
        if (sampleBytes == 1) {
            WidenToInt16({reinterpret_cast<int16_t*>(data), frames});
        }
    }
    return code;
}

/// Becomes a recording of zeros, with `newNumSamples` frames in at least `newByteLength` bytes.
error_code CPCMDataSource::Allocate(const PCMFormat& newFormat, uint64_t newByteLength,
                                    uint64_t newNumSamples) {
    MakeEmpty();
    const uint64_t frameBytes = newFormat.bitsPerSample / 8u * uint64_t{newFormat.channels};
    const uint64_t need = std::max(newByteLength, newNumSamples * frameBytes);
    if (need > kMostBytes) {
        return kOutOfMemory;
    }
    data = static_cast<uint8_t*>(alloc(static_cast<size_t>(need), true));
    if (data == nullptr) {
        return kOutOfMemory;
    }
    format = newFormat;
    bytesPerFrame = static_cast<int32_t>(frameBytes);
    byteLength = static_cast<int32_t>(newByteLength);
    numSamples = static_cast<int32_t>(newNumSamples);
    return kNoError;
}

void CPCMDataSource::MakeEmpty() {
    tessarin::free(data);
    data = nullptr;
    byteLength = 0;
    numSamples = 0;
}

} // namespace tessarin
