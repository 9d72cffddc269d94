#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tessarin {

// Conversions between stored samples and those of the engine. Floats keep the 16-bit range.

/// Samples of one channel as floats: 16-bit little-endian, the first at `bytes`, each `stride`
/// bytes after the one before.
void FloatsFromInt16(std::span<float> out, const uint8_t* bytes, size_t stride);

/// The same for unsigned 8-bit samples: (byte - 128) * 256.
void FloatsFromUint8(std::span<float> out, const uint8_t* bytes, size_t stride);

/// Floats as 16-bit samples: truncated toward zero and held to the range.
void Int16FromFloats(std::span<int16_t> out, std::span<const float> samples);

/// Widens in place: `samples` begins with as many unsigned 8-bit samples as it has elements.
void WidenToInt16(std::span<int16_t> samples);

/// Widens in place: `samples` begins with as many 16-bit samples as it has elements.
void WidenToFloats(std::span<float> samples);

/// Packed 24-bit little-endian samples as 16-bit ones: times 0.0039062 in single precision,
/// truncated toward zero. Kept: the factor is a little below 1/256, so full scale maps to
/// plus and minus 32767, which stored results are compared with.
void Int16From24Bits(std::span<int16_t> out, const uint8_t* bytes);

/// Copies one sample of `sampleBytes` bytes out of each of `count` records of `stride` bytes.
void CopyChannel(void* out, const uint8_t* samples, size_t count, size_t sampleBytes,
                 size_t stride);

} // namespace tessarin
