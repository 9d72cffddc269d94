#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// One pronunciation of one word, in the labels of the engine.
struct word_entry {
    std::string word;
    std::string phonemes;
    size_t line = 0; ///< where it stands in its text, from 1
};

/// The entries of a text, in its order: lines `WORD=phonemes`, or lines of the CMU pronouncing
/// dictionary, such as `WORD(2)  W ER1 D`. Of the latter, comments are passed over and words are
/// taken in upper case. Throws Failure for a line that is neither, or whose phonemes are not
/// phonemes; `path` and the line are named in it.
std::vector<word_entry> ReadWordList(const std::string& path, std::string_view text);

/// The word with the letters of ASCII in upper case, as all words of the lexicon that we ship are.
std::string InUpperCase(std::string_view word);

/// Whether a text is made of the labels of the engine, with nothing between them.
bool ArePhonemes(std::string_view text);

/// How a message names the entry of a text.
std::string PlaceOf(const std::string& path, const word_entry& entry);

/// The text of entries, in one of the two forms. Throws Failure for phonemes that have no name in
/// the dictionary's form.
std::string WriteWordList(const std::vector<word_entry>& entries, bool asDictionary);
