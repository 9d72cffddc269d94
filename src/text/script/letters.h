#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tessarin {

bool IsVowel(char letter);

/// The letters of a word with blanks between, without stops and apostrophes.
std::string Spelled(std::string_view word);

/// The value of a Roman numeral below 400 as it is usually written; 0 for any other text.
uint32_t RomanValue(std::string_view text);

} // namespace tessarin
