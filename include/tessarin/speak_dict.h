#pragma once

#include <cstddef>
#include <cstdint>

#include "tessarin/export.h"

namespace tessarin {

/// One pronunciation of one word. Neither text is zero-terminated; both belong to the lexicon.
/// Published layout.
struct CPronunciationRec {
    const char* word;              ///< as it stands in the lexicon
    uint16_t word_length;          ///< bytes
    const char* pronunciation;     ///< phoneme string
    uint16_t pronunciation_length; ///< bytes
};
static_assert(sizeof(void*) != 8 || (sizeof(CPronunciationRec) == 32 &&
                                     offsetof(CPronunciationRec, pronunciation) == 16));

/// A pronunciation lexicon. Words compare without regard to the case of ASCII letters. Read-only
/// once built: several threads may look words up.
class ISpeakDict {
public:
    virtual ~ISpeakDict() = default;

    /// Deletes the lexicon.
    virtual void Release() = 0;
    /// Keeps its slot; always false.
    virtual bool Reserved2() { return false; }
    /// Binary search of a lexicon that is sorted. True when `word` is found: the pronunciation
    /// goes to `out`, zero-terminated, which needs room for the longest pronunciation of the
    /// lexicon plus 1. False for a `length` above 511.
    virtual bool LookupFirst(const char* word, int32_t length, char* out) = 0;
    /// Keeps its slot; always false.
    virtual bool Reserved4() { return false; }
    /// True and the record of the word's variant `index`, counted from 0 in order of preference.
    /// Variants are neighbours: an entry of the same word further on is not seen.
    virtual bool GetPronunciation(const char* word, uint16_t length, int32_t index,
                                  CPronunciationRec* record) = 0;
    /// Keeps its slot; always false.
    virtual bool Reserved6() { return false; }
};

} // namespace tessarin

/// Makes a lexicon from the `size` bytes of text at `source`: entries of a word, `=` and a phoneme
/// string up to the end of the line. The text is copied. Returns the lexicon, deleted by its own
/// Release, or null without memory.
TESSARIN_API tessarin::ISpeakDict* CreateSpeakDict(const char* source, int32_t size);
