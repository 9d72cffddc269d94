#pragma once

#include <cctype>
#include <cstdint>

namespace tessarin {

// Classes of single characters, as the C library has them under the active locale: a lexicon's
// language says what its letters are. Codes are bytes taken as unsigned values.

inline bool IsLetter(uint32_t code) {
    return std::isalpha(static_cast<uint8_t>(code)) != 0;
}
inline bool IsDigit(uint32_t code) {
    return std::isdigit(static_cast<uint8_t>(code)) != 0;
}
inline bool IsLetterOrDigit(uint32_t code) {
    return std::isalnum(static_cast<uint8_t>(code)) != 0;
}
inline bool IsSpace(uint32_t code) {
    return std::isspace(static_cast<uint8_t>(code)) != 0;
}
inline bool IsPunctuation(uint32_t code) {
    return std::ispunct(static_cast<uint8_t>(code)) != 0;
}

inline char ToUpper(uint32_t code) {
    return static_cast<char>(std::toupper(static_cast<uint8_t>(code)));
}

/// The code of a character of a text.
constexpr uint8_t CodeOf(char character) {
    return static_cast<uint8_t>(character);
}

} // namespace tessarin
