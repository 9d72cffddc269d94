#pragma once

#include "text/pronunciation/grapheme_to_phone_rules.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin {

/// Whether the pattern `left` fits the word from the character at `place` towards its start. `word`
/// begins and ends with a blank. The symbols of a pattern:
///
///     letter ' blank  itself               %      a suffix of the module, the longest that fits
///     #  one or more vowels                &xy&   one letter of the class
///     :  zero or more consonants           !xy!   one or more letters of the class
///     ^  one consonant                     *xy*   zero or more letters of the class
///     .  one voiced consonant
///     +  one of E, I, Y                    any other symbol fits nothing
///
/// A class that the module does not have is one without letters.
bool MatchLeftContext(const CGraphemeToPhoneRules<char>& module, std::string_view left,
                      const std::string& word, ptrdiff_t place);

/// Whether the pattern `right` fits the word from the character at `place` on.
bool MatchRightContext(const CGraphemeToPhoneRules<char>& module, std::string_view right,
                       const std::string& word, ptrdiff_t place);

/// The longest pattern that is tried; a longer one fits nothing. It bounds the recursion.
inline constexpr size_t kMaxContextLength = 1024;

} // namespace tessarin
