#include "text/cm_dict.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <span>

namespace tessarin {
namespace {

/// The longest word that LookupFirst takes.
constexpr int32_t kMaxLookupLength = 511;

bool IsLineEnd(char character) {
    return character == '\r' || character == '\n';
}

bool StandsBetweenEntries(char character) {
    return character == ' ' || character == '\t' || IsLineEnd(character);
}

int FoldLetter(char character) {
    const auto code = static_cast<uint8_t>(character);
    return code >= 'A' && code <= 'Z' ? code - 'A' + 'a' : code;
}

/// Compares as much of a query as an entry's word is long. A zero byte ends both.
int CompareWithEntry(std::string_view entryWord, const char* query) {
    for (size_t place = 0; place < entryWord.size(); ++place) {
        const int difference = FoldLetter(entryWord[place]) - FoldLetter(query[place]);
        if (difference != 0 || query[place] == '\0') {
            return difference;
        }
    }
    return 0;
}

} // namespace

void CCmDict::Release() {
    delete this;
}

bool CCmDict::LookupFirst(const char* word, int32_t length, char* out) {
    if (entries.IsEmpty() || length < 0 || length > kMaxLookupLength) {
        return false;
    }
    std::array<char, kMaxLookupLength + 1> query = {};
    std::copy_n(word, length, query.data());
    int32_t low = 0;
    int32_t high = entries.GetSize() - 1;
    while (low <= high) {
        const int32_t middle = low + (high - low) / 2;
        const CPronunciationRec& entry = entries[middle];
        const int difference = CompareWithEntry(WordOf(entry), query.data());
        if (difference > 0) {
            high = middle - 1;
        } else if (difference < 0 || length > entry.word_length) {
            low = middle + 1;
        } else {
            std::copy_n(entry.pronunciation, entry.pronunciation_length, out);
            out[entry.pronunciation_length] = '\0';
            return true;
        }
    }
    return false;
}

// Kept: only the neighbours of a word's first entry are its variants, so that the order of the text
// is the one thing that says which pronunciations belong together.
bool CCmDict::GetPronunciation(const char* word, uint16_t length, int32_t variant,
                               CPronunciationRec* record) {
    const std::string_view query(word, length);
    const uint32_t first = index.Find(query);
    if (first == word_index::kNone || variant < 0) {
        return false;
    }
    const int64_t number = int64_t{first} + variant;
    if (number >= entries.GetSize()) {
        return false;
    }
    const CPronunciationRec& entry = entries[static_cast<int32_t>(number)];
    if (!IsSameWord(query, WordOf(entry))) {
        return false;
    }
    *record = entry;
    return true;
}

bool CCmDict::LoadText(const char* text, int32_t length) {
    constexpr int32_t kGrowthStep = 4096;
    const size_t size = text == nullptr || length < 0 ? 0 : static_cast<size_t>(length);
    entries.SetSize(0, kGrowthStep);
    index.Build({});
    block.reset(new (std::nothrow) char[size]);
    if (block == nullptr) {
        blockSize = 0;
        return false;
    }
    blockSize = static_cast<int32_t>(size);
    std::copy_n(text, size, block.get());
    ParseEntries();
    index.Build({entries.begin(), static_cast<size_t>(entries.GetSize())});
    return true;
}

void CCmDict::ParseEntries() {
    const char* place = block.get();
    const char* end = place + blockSize;
    // An entry has a `=` of its own, and at least a letter and a phoneme and a line end. The array
    // grows by itself where there is not enough memory to make room at once.
    const auto numEquals = static_cast<int32_t>(std::count(place, end, '='));
    static_cast<void>(entries.Reserve(std::min(numEquals, blockSize / 4 + 1)));
    while (true) {
        const char* word = std::find_if_not(place, end, StandsBetweenEntries);
        const char* equals = std::find(word, end, '=');
        if (equals == end) {
            return;
        }
        const char* pronunciation =
            std::find_if(equals + 1, end, [](char character) { return character != ' '; });
        place = std::find_if(pronunciation, end, IsLineEnd);
        if (word != equals && pronunciation != place) {
            AddEntry({word, equals}, {pronunciation, place});
        }
    }
}

// Kept: lengths wrap at 16 bits, as the records that hosts read and the entries of lexicon files
// hold them.
void CCmDict::AddEntry(std::string_view word, std::string_view pronunciation) {
    const CPronunciationRec entry = {word.data(), static_cast<uint16_t>(word.size()),
                                     pronunciation.data(),
                                     static_cast<uint16_t>(pronunciation.size())};
    if (entries.Add(entry) == 0) {
        throw std::bad_alloc();
    }
}

speak_dict_ptr MakeSpeakDict(const char* text, int32_t length) {
    auto dict = std::make_unique<CCmDict>();
    return speak_dict_ptr(dict->LoadText(text, length) ? dict.release() : nullptr);
}

} // namespace tessarin
