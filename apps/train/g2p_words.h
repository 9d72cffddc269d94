#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "apps/train/sequence_counts.h"
#include "tessarin/speak_dict.h"

namespace tessarin::training {

/// A word of a lexicon, as letter-to-sound learns it or is asked for it.
struct spelled_word {
    std::string letters;                      ///< in upper case
    std::vector<phone_string> pronunciations; ///< in order of preference; one at least
};

/// The words that a reader says by their letters. Left out are those with digits or with signs
/// other than the apostrophe, which a text never asks letter-to-sound for, those that are said in
/// pieces because they are so long, and pronunciations that are not of the alphabet.
std::vector<spelled_word> ReadSpelledWords(std::span<const CPronunciationRec> entries);

/// What a word serves for. It hangs on the letters alone, so a lexicon that grows keeps its parts.
enum class word_use : uint8_t { kGrow, kChoose, kMeasure };

/// A tenth of all words is for measuring, a tenth of the others for choosing the tree's size.
word_use UseOf(std::string_view letters);

/// The words of these uses, in their order.
std::vector<spelled_word> Select(std::span<const spelled_word> words,
                                 std::initializer_list<word_use> uses);

} // namespace tessarin::training
