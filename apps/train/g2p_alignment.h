#pragma once

#include <span>
#include <string>
#include <vector>

#include "apps/train/g2p_words.h"
#include "apps/train/phone_chunk.h"

namespace tessarin::training {

/// A word with the phonemes of each letter.
struct aligned_word {
    std::string letters;
    std::vector<phone_chunk> chunks; ///< as many as letters
};

/// Shares the first pronunciation of each word out among its letters, in the likeliest way. How
/// probable a chunk is for a letter is learnt from the words themselves by expectation maximization
/// (as in Black, Lenzo and Pagel: Issues in building general letter to sound rules, 1998, yet with
/// every chunk allowed), then refined by the letter that follows. Words that have too few letters,
/// or a letter that hardly ever sounds so, are left out: abbreviations mostly.
std::vector<aligned_word> AlignLetters(std::span<const spelled_word> words);

} // namespace tessarin::training
