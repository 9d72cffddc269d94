#include "apps/tessarin/readers/word_list.h"

#include <algorithm>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/readers/arpabet.h"

namespace {

constexpr std::string_view kBlanks = " \t";

/// A word without the number of its variant, such as the `(2)` of `READ(2)`.
std::string_view WithoutNumber(std::string_view word) {
    const size_t open = word.rfind('(');
    const bool isNumbered = open != std::string_view::npos && open > 0 && word.ends_with(')') &&
                            open + 2 < word.size() &&
                            word.find_first_not_of("0123456789", open + 1) == word.size() - 1;
    return isNumbered ? word.substr(0, open) : word;
}

/// Reads a line of the dictionary. Whether it is one.
bool ReadDictionaryLine(std::string_view line, word_entry& entry) {
    const size_t wordEnd = line.find_first_of(kBlanks);
    if (wordEnd == std::string_view::npos || line.find('=') < wordEnd) {
        return false;
    }
    entry.word = InUpperCase(WithoutNumber(line.substr(0, wordEnd)));
    entry.phonemes = LabelsFromArpabet(line.substr(wordEnd, line.find('#') - wordEnd));
    return !entry.phonemes.empty();
}

bool ReadLexiconLine(std::string_view line, word_entry& entry) {
    const size_t equals = line.find('=');
    if (equals == 0 || equals == std::string_view::npos) {
        return false;
    }
    entry.word = line.substr(0, equals);
    line.remove_prefix(std::min(line.find_first_not_of(' ', equals + 1), line.size()));
    entry.phonemes = line.substr(0, line.find_last_not_of(kBlanks) + 1);
    return !entry.phonemes.empty();
}

} // namespace

std::vector<word_entry> ReadWordList(const std::string& path, std::string_view text) {
    std::vector<word_entry> entries;
    for (size_t number = 1; !text.empty(); ++number) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        line = line.substr(0, line.find('\r'));
        line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
        if (line.empty() || line.starts_with(";;;")) {
            continue;
        }
        word_entry entry;
        entry.line = number;
        if (!ReadDictionaryLine(line, entry) && !ReadLexiconLine(line, entry)) {
            throw Failure(
                kExitFailed,
                PlaceOf(path, entry) +
                    " is neither WORD=phonemes, such as HELLO=hEHlOW, nor a line of the CMU "
                    "dictionary, such as HELLO  HH EH L OW");
        }
        if (!ArePhonemes(entry.phonemes)) {
            throw Failure(kExitFailed, PlaceOf(path, entry) + ": " + entry.phonemes +
                                           " are not phonemes, such as hEHlOW");
        }
        entries.push_back(std::move(entry));
    }
    if (entries.empty()) {
        throw Failure(kExitFailed, path + ": has no words; give lines WORD=phonemes, such as "
                                          "HELLO=hEHlOW, or lines of the CMU dictionary");
    }
    return entries;
}

std::string InUpperCase(std::string_view word) {
    std::string upper(word);
    std::ranges::transform(upper, upper.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return upper;
}

bool ArePhonemes(std::string_view text) {
    return !ArpabetFromLabels(text).empty();
}

std::string PlaceOf(const std::string& path, const word_entry& entry) {
    return path + ": line " + std::to_string(entry.line);
}

std::string WriteWordList(const std::vector<word_entry>& entries, bool asDictionary) {
    std::string text;
    int variant = 0;
    const word_entry* previous = nullptr;
    for (const word_entry& entry : entries) {
        if (!asDictionary) {
            text += entry.word + "=" + entry.phonemes + "\n";
            continue;
        }
        const std::string phones = ArpabetFromLabels(entry.phonemes);
        if (phones.empty()) {
            throw Failure(kExitFailed, entry.word + ": the phonemes " + entry.phonemes +
                                           " have no names in ARPAbet");
        }
        const bool isVariant =
            previous != nullptr && InUpperCase(previous->word) == InUpperCase(entry.word);
        variant = isVariant ? variant + 1 : 1;
        text += entry.word + (isVariant ? "(" + std::to_string(variant) + ")" : "") + "  " +
                phones + "\n";
        previous = &entry;
    }
    return text;
}
