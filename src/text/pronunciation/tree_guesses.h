#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin {

template <class Char> class CGraphemeToPhoneRules;

/// The pronunciations, at most `most`, that the decision tree of a language gives a word in upper
/// case which no lexicon has. The first is the one that ApplyRules appends. In each of the others
/// one vowel is said as by the other answer to the last question about its letter, which is where
/// the tree had the fewest words to learn from. Empty without a tree, or for a long word.
std::vector<std::string> GuessPronunciations(const CGraphemeToPhoneRules<char>& module,
                                             std::string_view word, size_t most);

} // namespace tessarin
