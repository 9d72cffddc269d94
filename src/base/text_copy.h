#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace tessarin {

/// Puts `text` into a fixed field, cut to fit, always terminated and with the rest cleared.
/// Returns whether all of it fitted.
template <size_t Size> bool CopyText(char (&field)[Size], std::string_view text) {
    const size_t length = std::min(text.size(), Size - 1);
    std::copy_n(text.data(), length, field);
    std::fill(field + length, field + Size, '\0');
    return length == text.size();
}

/// A zero-terminated text, or its first `maxLength` bytes. What follows those is not looked at.
inline std::string_view BoundedText(const char* text, size_t maxLength) {
    const void* end = std::memchr(text, '\0', maxLength);
    return {text,
            end != nullptr ? static_cast<size_t>(static_cast<const char*>(end) - text) : maxLength};
}

/// The text in a fixed field, whether or not it is terminated.
template <size_t Size> std::string_view FieldText(const char (&field)[Size]) {
    return {field, static_cast<size_t>(std::find(field, field + Size, '\0') - field)};
}

} // namespace tessarin
