#include "apps/train/g2p_words.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "model/phoneme_alphabet.h"
#include "text/character_classes.h"

namespace tessarin::training {
namespace {

constexpr uint64_t kParts = 10;

/// The transcriber says a longer word in pieces.
constexpr size_t kMaxLetters = 254;

std::string UpperCase(std::string_view word) {
    std::string letters(word);
    std::ranges::transform(letters, letters.begin(), [](char c) { return ToUpper(CodeOf(c)); });
    return letters;
}

bool IsSpoken(char character) {
    return (character >= 'A' && character <= 'Z') || character == '\'' || CodeOf(character) >= 0x80;
}

/// Nothing for what is not of the alphabet.
std::optional<phone_string> ParsePhones(std::string_view text) {
    std::vector<const phoneme_symbol*> symbols;
    if (!ParsePhonemeString(text, symbols, nullptr) || symbols.empty()) {
        return std::nullopt;
    }
    phone_string phones;
    for (const phoneme_symbol* symbol : symbols) {
        phones.push_back(static_cast<size_t>(symbol - PhonemeAlphabet().data()));
    }
    return phones;
}

/// FNV-1a, with its bits mixed once more so that all of them are good.
uint64_t Hash(std::string_view text) {
    uint64_t hash = 0xcbf29ce484222325;
    for (const char character : text) {
        hash = (hash ^ CodeOf(character)) * 0x100000001b3;
    }
    hash = (hash ^ (hash >> 32)) * 0xd6e8feb86659fd93;
    return hash ^ (hash >> 32);
}

} // namespace

std::vector<spelled_word> ReadSpelledWords(std::span<const CPronunciationRec> entries) {
    std::vector<spelled_word> words;
    for (const CPronunciationRec& entry : entries) {
        std::string letters = UpperCase({entry.word, entry.word_length});
        auto phones = ParsePhones({entry.pronunciation, entry.pronunciation_length});
        if (!phones || letters.empty() || letters.size() > kMaxLetters ||
            !std::ranges::all_of(letters, IsSpoken)) {
            continue;
        }
        if (words.empty() || words.back().letters != letters) {
            words.push_back({std::move(letters), {}});
        }
        words.back().pronunciations.push_back(std::move(*phones));
    }
    return words;
}

word_use UseOf(std::string_view letters) {
    const uint64_t hash = Hash(letters);
    if (hash % kParts == 0) {
        return word_use::kMeasure;
    }
    return hash / kParts % kParts == 0 ? word_use::kChoose : word_use::kGrow;
}

std::vector<spelled_word> Select(std::span<const spelled_word> words,
                                 std::initializer_list<word_use> uses) {
    std::vector<spelled_word> selected;
    std::ranges::copy_if(words, std::back_inserter(selected), [&](const spelled_word& word) {
        return std::ranges::find(uses, UseOf(word.letters)) != uses.end();
    });
    return selected;
}

} // namespace tessarin::training
