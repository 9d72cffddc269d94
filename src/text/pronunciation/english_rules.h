#pragma once

#include "text/pronunciation/grapheme_rule.h"

#include <array>

namespace tessarin {

/// The rules for one first letter, in order of priority.
struct english_rule_table {
    char key;
    const GraphemeRule* rows;
};

/// Letter-to-sound rules of American English, a context-rule table of the kind of Elovitz, Johnson,
/// McHugh and Shore, "Letter-to-Sound Rules for Automatic Translation of English Text to Phonetics"
/// (1976), in the phoneme alphabet of this library.
// Kept: the rules under `@` match other characters and so never fit; an address with such a sign
// inside a word is reported and the sign passed over.
extern const std::array<english_rule_table, 27> kEnglishRuleTables;

} // namespace tessarin
