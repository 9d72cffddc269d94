#pragma once

#include "text/pronunciation/grapheme_to_phone_rules.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin {

/// What matching may still cost. Once it is used up, no pattern fits any more.
class step_budget {
public:
    explicit step_budget(size_t numSteps) : left(numSteps) {}

    /// Pays for `count` steps. False when that leaves nothing.
    bool Take(size_t count = 1) {
        left = left < count ? 0 : left - count;
        return left != 0;
    }
    size_t Left() const { return left; }

private:
    size_t left;
};

/// For each character of a word. The rules of real languages take a few thousand.
inline constexpr size_t kStepsPerCharacter = size_t{1} << 16;

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
                      const std::string& word, ptrdiff_t place, step_budget& budget);

/// Whether the pattern `right` fits the word from the character at `place` on.
bool MatchRightContext(const CGraphemeToPhoneRules<char>& module, std::string_view right,
                       const std::string& word, ptrdiff_t place, step_budget& budget);

/// The longest pattern that is tried; a longer one fits nothing. It bounds the recursion.
inline constexpr size_t kMaxContextLength = 1024;

} // namespace tessarin
