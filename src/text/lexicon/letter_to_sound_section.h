#pragma once

#include <cstddef>
#include <cstdint>

namespace tessarin {

// The section of a lexicon file that holds a language module.

inline constexpr uint32_t kLetterToSoundMagic = 0x4C545320; // " STL"
inline constexpr int16_t kLetterToSoundVersion = 4;

/// Versions from which on the section has a part.
inline constexpr int16_t kFlagsVersion = 2;
inline constexpr int16_t kKeyedTablesVersion = 3;
inline constexpr int16_t kLetterClassesVersion = 4;

/// Rule tables of the older versions: one for `@` and one for each of A to Z.
inline constexpr int kNumUnkeyedTables = 27;

inline constexpr size_t kNumUnits = 20;       ///< words for 0 to 19
inline constexpr size_t kNumTens = 8;         ///< words for 20 to 90
inline constexpr size_t kNumSymbolWords = 10; ///< as symbol_word numbers them
inline constexpr size_t kNumScaleWords = 10;  ///< as scale_word numbers them
inline constexpr size_t kFoldTableSize = 256;

} // namespace tessarin
