#pragma once

#include <cstddef>
#include <cstdint>

namespace tessarin {

inline constexpr uint32_t kLexiconMagic = 0x44494354; // "TCID"
inline constexpr int16_t kLexiconVersion = 2;

/// A file whose packed block is smaller than the first gets filler of the second size.
inline constexpr size_t kSmallBlockSize = 16000;
inline constexpr size_t kFillerSize = 16213;

} // namespace tessarin
