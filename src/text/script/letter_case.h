#pragma once

#include <string>
#include <string_view>

namespace tessarin {

inline bool IsUpper(char letter) {
    return letter >= 'A' && letter <= 'Z';
}

inline bool IsLower(char letter) {
    return letter >= 'a' && letter <= 'z';
}

/// Text in UTF-8 with the letters of the Latin, Greek and Cyrillic alphabets in upper case. Bytes
/// that are not UTF-8 stay.
std::string InUpperCase(std::string_view text);

/// ASCII letters in lower case; the others stay.
std::string InLowerCase(std::string_view text);

} // namespace tessarin
