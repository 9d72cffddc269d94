#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

#include "support/byte_builder.h"

namespace tessarin::test {

/// A chunk with its pad byte; `statedSize` is written where it differs from that of the body.
inline bytes RiffChunk(std::string_view name, std::span<const uint8_t> body, uint32_t statedSize) {
    ByteBuilder chunk;
    chunk.Text(name).U32(statedSize).Bytes(body);
    if (body.size() % 2 != 0) {
        chunk.U8(0);
    }
    return chunk.Take();
}

inline bytes RiffChunk(std::string_view name, std::span<const uint8_t> body) {
    return RiffChunk(name, body, static_cast<uint32_t>(body.size()));
}

/// A RIFF file of `form` with the given chunks.
inline bytes RiffFile(std::string_view form, std::initializer_list<bytes> chunks) {
    ByteBuilder body;
    body.Text(form);
    for (const bytes& chunk : chunks) {
        body.Bytes(chunk);
    }
    return RiffChunk("RIFF", body.Take());
}

/// The "fmt " body of plain PCM.
inline bytes PcmFormat(uint32_t sampleRate, uint16_t bits, uint16_t channels, uint16_t tag = 1) {
    const auto frameBytes = static_cast<uint16_t>(bits / 8 * channels);
    return ByteBuilder()
        .U16(tag)
        .U16(channels)
        .U32(sampleRate)
        .U32(sampleRate * frameBytes)
        .U16(frameBytes)
        .U16(bits)
        .Take();
}

/// A WAV file of 16-bit samples, interleaved.
inline bytes WavFile(uint32_t sampleRate, uint16_t channels, std::span<const int16_t> samples) {
    ByteBuilder data;
    for (const int16_t sample : samples) {
        data.U16(static_cast<uint16_t>(sample));
    }
    return RiffFile("WAVE", {RiffChunk("fmt ", PcmFormat(sampleRate, 16, channels)),
                             RiffChunk("data", data.Take())});
}

} // namespace tessarin::test
