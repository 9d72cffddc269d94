#pragma once

#include "base/tarray.h"
#include "tessarin/error_codes.h"
#include "tessarin/speak_dict.h"
#include "text/lexicon/word_index.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace tessarin {

class ByteCursor;
class ByteWriter;

/// A lexicon that lies in one block of text, with a record for each entry in the order of the text.
class CCmDict : public ISpeakDict {
public:
    CCmDict() = default;
    CCmDict(const CCmDict&) = delete;
    CCmDict& operator=(const CCmDict&) = delete;

    void Release() override;
    bool LookupFirst(const char* word, int32_t length, char* out) override;
    bool GetPronunciation(const char* word, uint16_t length, int32_t index,
                          CPronunciationRec* record) override;

    /// Copies and parses a lexicon text: entries of a word, `=` and phonemes up to the end of the
    /// line. A word reaches to the first `=`, even across lines; an entry with an empty part is
    /// dropped. False without memory.
    virtual bool LoadText(const char* text, int32_t length);

    /// Appends the lexicon in the form that ReadBinary takes. True.
    virtual bool WriteBinary(ByteWriter& file) const;

    /// Reads a binary lexicon at `*position`: the text block and the entries, which say where in
    /// the block their texts are. Moves `*position` and `*remaining` along. kInvalidFile for what
    /// does not hold together, kOutOfMemory without memory; the lexicon is empty then.
    [[nodiscard]] virtual error_code ReadBinary(const uint8_t** position, uint32_t* remaining);

    /// The entries, in their order.
    std::span<const CPronunciationRec> GetEntries() const {
        return {entries.begin(), static_cast<size_t>(entries.GetSize())};
    }

    /// Hands over the block in which the texts of all entries lie. The lexicon is empty then.
    std::unique_ptr<char[]> TakeBlock();

private:
    error_code ReadBlockAndEntries(ByteCursor& cursor);
    bool ReadEntry(ByteCursor& cursor, CPronunciationRec& entry) const;
    void Clear();
    void ParseEntries();
    void AddEntry(std::string_view word, std::string_view pronunciation);

    std::unique_ptr<char[]> block;
    int32_t blockSize = 0;
    TArray<CPronunciationRec> entries;
    word_index index;
};

/// Gives a lexicon back through its own operation.
struct release_speak_dict {
    void operator()(ISpeakDict* dict) const { dict->Release(); }
};
using speak_dict_ptr = std::unique_ptr<ISpeakDict, release_speak_dict>;

/// A lexicon of the `length` bytes at `text`; null or a length below 1 makes an empty one. Null
/// without memory.
speak_dict_ptr MakeSpeakDict(const char* text, int32_t length);

} // namespace tessarin
