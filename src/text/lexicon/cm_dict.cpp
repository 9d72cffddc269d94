#include "text/lexicon/cm_dict.h"

#include "base/byte_cursor.h"
#include "base/byte_writer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <span>
#include <utility>

namespace tessarin {
namespace {

/// The longest word that LookupFirst takes.
constexpr int32_t kMaxLookupLength = 511;

constexpr int32_t kGrowthStep = 4096;

/// Bytes of an entry of the binary form: offset and length of the word, then of the pronunciation.
constexpr uint64_t kBinaryEntrySize = 12;

/// All words and pronunciations together are no longer than a lexicon text can be. Entries may
/// share their texts, so that otherwise a small file would take up all time and memory.
constexpr uint64_t kMaxTotalLength = INT32_MAX;

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
    const size_t size = text == nullptr || length < 0 ? 0 : static_cast<size_t>(length);
    Clear();
    block.reset(new (std::nothrow) char[size]);
    if (block == nullptr) {
        return false;
    }
    blockSize = static_cast<int32_t>(size);
    std::copy_n(text, size, block.get());
    ParseEntries();
    index.Build(GetEntries());
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
            AddEntry({word, static_cast<size_t>(equals - word)},
                     {pronunciation, static_cast<size_t>(place - pronunciation)});
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

bool CCmDict::WriteBinary(ByteWriter& file) const {
    const auto writePlace = [&](const char* text, uint16_t length) {
        file.WriteU32(static_cast<uint32_t>(text - block.get()));
        file.WriteU16(length);
    };
    file.WriteU32(static_cast<uint32_t>(blockSize));
    file.WriteBytes(
        {reinterpret_cast<const uint8_t*>(block.get()), static_cast<size_t>(blockSize)});
    file.WriteU32(static_cast<uint32_t>(entries.GetSize()));
    for (const CPronunciationRec& entry : entries) {
        writePlace(entry.word, entry.word_length);
        writePlace(entry.pronunciation, entry.pronunciation_length);
    }
    return true;
}

error_code CCmDict::ReadBinary(const uint8_t** position, uint32_t* remaining) {
    BorrowedByteCursor cursor(position, remaining);
    Clear();
    const error_code code = ReadBlockAndEntries(cursor);
    if (code != kNoError) {
        Clear();
        return code;
    }
    index.Build(GetEntries());
    return kNoError;
}

error_code CCmDict::ReadBlockAndEntries(ByteCursor& cursor) {
    const int32_t size = cursor.ReadI32();
    if (size < 0 || !cursor.Holds(static_cast<uint64_t>(size))) {
        return kInvalidFile;
    }
    block = std::make_unique_for_overwrite<char[]>(static_cast<size_t>(size));
    blockSize = size;
    std::ranges::copy(cursor.ReadBytes(static_cast<size_t>(size)), block.get());
    const int32_t count = std::max(cursor.ReadI32(), 0);
    if (cursor.Failed() || !cursor.Holds(static_cast<uint64_t>(count), kBinaryEntrySize)) {
        return kInvalidFile;
    }
    if (entries.SetSize(count, kGrowthStep) == 0) {
        return kOutOfMemory;
    }
    uint64_t total = 0;
    for (CPronunciationRec& entry : entries) {
        if (!ReadEntry(cursor, entry)) {
            return kInvalidFile;
        }
        total += uint64_t{entry.word_length} + entry.pronunciation_length;
        if (total > kMaxTotalLength) {
            return kInvalidFile;
        }
    }
    return kNoError;
}

/// False when a text reaches beyond the block.
bool CCmDict::ReadEntry(ByteCursor& cursor, CPronunciationRec& entry) const {
    const auto readText = [&](const char*& text, uint16_t& length) {
        const uint32_t offset = cursor.ReadU32();
        length = cursor.ReadU16();
        if (uint64_t{offset} + length > static_cast<uint64_t>(blockSize)) {
            return false;
        }
        text = block.get() + offset;
        return true;
    };
    return readText(entry.word, entry.word_length) &&
           readText(entry.pronunciation, entry.pronunciation_length);
}

std::unique_ptr<char[]> CCmDict::TakeBlock() {
    std::unique_ptr<char[]> taken = std::move(block);
    Clear();
    return taken;
}

void CCmDict::Clear() {
    entries.SetSize(0, kGrowthStep);
    index.Build({});
    block.reset();
    blockSize = 0;
}

speak_dict_ptr MakeSpeakDict(const char* text, int32_t length) {
    auto dict = std::make_unique<CCmDict>();
    return speak_dict_ptr(dict->LoadText(text, length) ? dict.release() : nullptr);
}

} // namespace tessarin
