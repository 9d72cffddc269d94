#include "audio/sample_conversion.h"

#include <bit>
#include <cstring>

#include "base/little_endian.h"
#include "base/trunc_sat.h"

namespace tessarin {

namespace {

int32_t WidenByte(uint8_t sample) {
    return (static_cast<int32_t>(sample) - 128) * 256;
}

int32_t Load24Bits(const uint8_t* bytes) {
    const uint32_t high =
        uint32_t{bytes[2]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[0]} << 8;
    return static_cast<int32_t>(high) >> 8;
}

} // namespace

void FloatsFromInt16(std::span<float> out, const uint8_t* bytes, size_t stride) {
    for (float& sample : out) {
        sample = static_cast<float>(LoadLittleEndian<int16_t>(bytes));
        bytes += stride;
    }
}

void FloatsFromUint8(std::span<float> out, const uint8_t* bytes, size_t stride) {
    for (float& sample : out) {
        sample = static_cast<float>(WidenByte(*bytes));
        bytes += stride;
    }
}

void Int16FromFloats(std::span<int16_t> out, std::span<const float> samples) {
    for (size_t i = 0; i < out.size(); ++i) {
        out[i] = TruncSat<int16_t>(samples[i]);
    }
}

void WidenToInt16(std::span<int16_t> samples) {
    const uint8_t* const bytes = reinterpret_cast<const uint8_t*>(samples.data());
    for (size_t i = samples.size();
         i-- > 0;) { // from the end, where only read bytes are overwritten
        samples[i] = static_cast<int16_t>(WidenByte(bytes[i]));
    }
}

void WidenToFloats(std::span<float> samples) {
    const uint8_t* const bytes = reinterpret_cast<const uint8_t*>(samples.data());
    for (size_t i = samples.size(); i-- > 0;) {
        samples[i] = static_cast<float>(LoadLittleEndian<int16_t>(bytes + 2 * i));
    }
}

void Int16From24Bits(std::span<int16_t> out, const uint8_t* bytes) {
    const float factor = std::bit_cast<float>(0x3B7FFF29u); // 0.0039062
    for (int16_t& sample : out) {
        sample = TruncSat<int16_t>(static_cast<float>(Load24Bits(bytes)) * factor);
        bytes += 3;
    }
}

void CopyChannel(void* out, const uint8_t* samples, size_t count, size_t sampleBytes,
                 size_t stride) {
    uint8_t* to = static_cast<uint8_t*>(out);
    for (size_t i = 0; i < count; ++i) {
        std::memcpy(to + i * sampleBytes, samples + i * stride, sampleBytes);
    }
}

} // namespace tessarin
