#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <type_traits>

namespace tessarin {

// All files of the library are little-endian. On a little-endian machine each of these is a plain
// copy of bytes, and none needs an aligned address.

/// The value of type `T` that stands at `bytes`.
template <class T> T LoadLittleEndian(const void* bytes) {
    static_assert(std::is_arithmetic_v<T>);
    std::array<uint8_t, sizeof(T)> raw;
    std::memcpy(raw.data(), bytes, sizeof(T));
    if constexpr (std::endian::native == std::endian::big) {
        std::reverse(raw.begin(), raw.end());
    }
    return std::bit_cast<T>(raw);
}

template <class T> void StoreLittleEndian(void* bytes, T value) {
    static_assert(std::is_arithmetic_v<T>);
    auto raw = std::bit_cast<std::array<uint8_t, sizeof(T)>>(value);
    if constexpr (std::endian::native == std::endian::big) {
        std::reverse(raw.begin(), raw.end());
    }
    std::memcpy(bytes, raw.data(), sizeof(T));
}

/// `value` with its bytes in file order, or back.
template <class T> T ToLittleEndian(T value) {
    return LoadLittleEndian<T>(&value);
}

/// Puts a zero-terminated text of 16-bit characters into file order, in place.
void ToLittleEndian(char16_t* text);

/// Appends a number to a file in file order. False when the file does not take it.
[[nodiscard]] bool WriteU16(FILE* file, uint16_t value);
[[nodiscard]] bool WriteU32(FILE* file, uint32_t value);

} // namespace tessarin
