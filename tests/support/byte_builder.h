#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "base/little_endian.h"

namespace tessarin::test {

using bytes = std::vector<uint8_t>;

/// Puts a little-endian file together in memory: `ByteBuilder().U32(1).Text("abc").Take()`.
class ByteBuilder {
public:
    ByteBuilder& U8(uint8_t value) { return Number(value); }
    ByteBuilder& U16(uint16_t value) { return Number(value); }
    ByteBuilder& U32(uint32_t value) { return Number(value); }
    ByteBuilder& I32(int32_t value) { return Number(value); }
    ByteBuilder& F32(float value) { return Number(value); }
    ByteBuilder& F64(double value) { return Number(value); }

    /// The letters alone.
    ByteBuilder& Text(std::string_view text) {
        content.insert(content.end(), text.begin(), text.end());
        return *this;
    }
    /// The letters and a zero byte.
    ByteBuilder& String(std::string_view text) { return Text(text).U8(0); }
    ByteBuilder& Bytes(std::span<const uint8_t> more) {
        content.insert(content.end(), more.begin(), more.end());
        return *this;
    }

    bytes Take() { return std::move(content); }

private:
    template <class T> ByteBuilder& Number(T value) {
        uint8_t raw[sizeof(T)];
        StoreLittleEndian(raw, value);
        return Bytes(raw);
    }

    bytes content;
};

} // namespace tessarin::test
