#pragma once

#include <string>
#include <string_view>
#include <vector>

/// One pronunciation of one word, in the labels of the engine.
struct word_entry {
    std::string word;
    std::string phonemes;
};

/// The entries of a text, in its order: lines `WORD=phonemes`, or lines of the CMU pronouncing
/// dictionary, such as `WORD(2)  W ER1 D`. Of the latter, comments are passed over and words are
/// taken in upper case. Throws Failure for a line that is neither; `path` is named in it.
std::vector<word_entry> ReadWordList(const std::string& path, std::string_view text);

/// The text of entries, in one of the two forms. Throws Failure for phonemes that have no name in
/// the dictionary's form.
std::string WriteWordList(const std::vector<word_entry>& entries, bool asDictionary);
