#pragma once

#include <array>
#include <cstdint>

namespace tessarin {

// The words that English text needs spoken without being written, as phoneme strings, each but one
// with a blank after it. The order within each table is that of the language module's fields.

extern const std::array<const char*, 20> kEnglishCardinals;   ///< 0 to 19
extern const std::array<const char*, 8> kEnglishTens;         ///< 20, 30 ... 90
extern const std::array<const char*, 20> kEnglishOrdinals;    ///< 0th to 19th
extern const std::array<const char*, 8> kEnglishOrdinalTens;  ///< 20th, 30th ... 90th
extern const std::array<const char*, 10> kEnglishSymbolWords; ///< by symbol_word
extern const std::array<const char*, 10> kEnglishScaleWords;  ///< by scale_word

/// The names of the ASCII characters, by code.
extern const std::array<const char*, 128> kEnglishCharacterNames;

/// Makes accented Latin letters of code page 1252 plain, and typographic marks ASCII.
extern const std::array<uint8_t, 256> kEnglishFoldTable;

} // namespace tessarin
