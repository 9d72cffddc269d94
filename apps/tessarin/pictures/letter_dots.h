#pragma once

#include <array>
#include <cstdint>

inline constexpr int kLetterWidth = 5;
inline constexpr int kLetterHeight = 8; ///< with what hangs below the line
inline constexpr char kBoxLetter = '\x7F';

/// The columns of a letter from the left; the lowest bit is at the top.
using letter_dots = std::array<uint8_t, kLetterWidth>;

/// The dots of an ASCII letter; the box for any other.
const letter_dots& DotsOf(char letter);
