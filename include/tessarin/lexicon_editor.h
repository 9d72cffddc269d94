#pragma once

#include <cstdint>

#include "tessarin/export.h"

namespace tessarin {

class IVisemixTranscriber;
class ProgressSink;

/// One pronunciation of one word, owned by its editor and valid until it is removed.
class IPronunciationRecord {
public:
    /// The word, zero-terminated. The first call for a record takes memory, and is empty without.
    virtual const char* GetWord() = 0;
    /// The phonemes, zero-terminated; valid until they are replaced. Memory as above.
    virtual const char* GetPronunciationText() = 0;
    /// Replaces the phonemes by a copy of `text`. Returns 0, or 1 without memory.
    virtual int32_t SetPronunciationText(const char* text) = 0;

protected:
    ~IPronunciationRecord() = default;
};

/// Changes the lexicon of a lexicon file. Records are sorted by word, without regard to the case
/// of ASCII letters; those of one word stand next to each other, the preferred one first. Every
/// change is in force for the editor's transcriber at once. An editor and its transcriber serve
/// one thread at a time.
class ILexiconEditor {
public:
    virtual ~ILexiconEditor() = default;

    /// Writes all as a lexicon file to `path`, in place of an old file only when it is whole. A
    /// record without a pronunciation is left out, and a word ends at a `=` in it. `progress` may
    /// be null. Returns 0; 5 when `progress` cancels; 9 when there is no way to write at `path`;
    /// 17 when the bytes do not all arrive.
    virtual int32_t Save(const char* path, ProgressSink* progress) = 0;
    /// The record `index` of the word of `length` characters, counted from 0 among the records of
    /// that word, or null.
    virtual IPronunciationRecord* FindRecord(const char* word, int32_t length, int32_t index) = 0;
    /// Removes the first record of the word with this pronunciation, or with any when it is null
    /// or empty. A record without a pronunciation matches any, too. Returns 0, or 3 when there is
    /// none.
    virtual int32_t RemoveRecord(const char* word, const char* pronunciation) = 0;
    /// Adds a record in front of the others of its word. Returns 0, or 1 without memory.
    virtual int32_t AddRecord(const char* word, const char* pronunciation) = 0;
    /// Copies at most `size` characters of what the transcriber gives as the transcription of the
    /// word, which is the empty text, and returns its length, 0.
    virtual int32_t GetRulePronunciation(const char* word, char* buffer, int32_t size) = 0;
    /// The transcriber, with a reference that the caller gives back by DestroyTranscriber. It has
    /// no lexicon any more when the editor is gone.
    virtual IVisemixTranscriber* GetTranscriber() = 0;
    /// How many records the list has.
    virtual int32_t GetRecordCount() = 0;
    /// The record at a place in the list, or null.
    virtual IPronunciationRecord* GetRecordAt(int32_t index) = 0;
    /// Removes the record of each word that has only one and that the rules alone pronounce just
    /// so. Writes its progress to the standard output. The result has no meaning.
    virtual int32_t RemoveRedundantRecords() = 0;
};

} // namespace tessarin

/// Opens the lexicon file at `path`. Returns 0 with the caller's editor in `*out`, deleted by
/// DestroyLexiconEditor. Otherwise `*out` is null, and the code is 10 when the file does not open,
/// 12 for a malformed file, 21 for a newer version, or 1 without memory.
TESSARIN_API int32_t CreateLexiconEditor(const char* path, tessarin::ILexiconEditor** out);

/// Deletes the editor and its records; null is allowed.
TESSARIN_API void DestroyLexiconEditor(tessarin::ILexiconEditor* editor);
