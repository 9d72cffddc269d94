#pragma once

#include <cstddef>
#include <span>

#include "apps/train/g2p_words.h"
#include "text/pronunciation/grapheme_to_phone_rules.h"

namespace tessarin::training {

/// How far a language module is from what a lexicon says. Each word counts by the pronunciation
/// that is nearest to the module's.
struct pronunciation_errors {
    size_t numWords = 0;
    size_t numWrongWords = 0;
    size_t numPhones = 0;
    size_t numWrongPhones = 0; ///< wrong, missing or superfluous

    double PhoneErrorPercent() const;
    double RightWordPercent() const;
};

/// What the module says of a word that no lexicon knows.
phone_string Pronounce(CGraphemeToPhoneRules<char>& module, const std::string& letters);

pronunciation_errors MeasureErrors(CGraphemeToPhoneRules<char>& module,
                                   std::span<const spelled_word> words);

} // namespace tessarin::training
