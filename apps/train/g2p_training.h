#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "apps/train/g2p_words.h"
#include "text/pronunciation/grapheme_to_phone_rules.h"

namespace tessarin::training {

struct g2p_settings {
    int16_t reach = 5; ///< letters to both sides that the tree may ask about
    size_t numThreads = 1;
};

/// The price of a leaf, in bits, with which the tree of the words for growing makes the fewest
/// errors in the words for choosing.
double ChooseLeafPrice(const CGraphemeToPhoneRules<char>& language,
                       std::span<const spelled_word> words, const g2p_settings& settings);

/// The language module with a tree that is grown from the words, in place of its rules or its old
/// tree. It comes as a lexicon file gives it back. Null when the module cannot be read back.
std::unique_ptr<CGraphemeToPhoneRules<char>> LearnTree(const CGraphemeToPhoneRules<char>& language,
                                                       std::span<const spelled_word> words,
                                                       double leafPrice,
                                                       const g2p_settings& settings);

} // namespace tessarin::training
