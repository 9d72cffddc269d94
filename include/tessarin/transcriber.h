#pragma once

#include <cstddef>
#include <cstdint>

#include "tessarin/export.h"
#include "tessarin/sync_results.h"

namespace tessarin {

class IQuibConvertedText;

/// One stretch of a token's pronunciation: a single phoneme string, or several to choose from.
/// Published layout.
struct PhonemeGroup {
    int32_t alternative_count; ///< 1 or more
    char** alternatives;       ///< zero-terminated phoneme strings
};
static_assert(sizeof(void*) != 8 || sizeof(PhonemeGroup) == 16);

/// What CTxMarker::kind says.
enum tx_marker_kind : uint32_t {
    kBlankToken = 0, ///< working value of the transcriber, never in its output
    kWordToken = 1,
    kTagToken = 2, ///< bracket text, or a tag of no other kind
    kCutToken = 3,
    kPunctuationToken = 4,
};

/// Bit of CTxMarker::flags: the phonemes are a pause that must be passed through.
inline constexpr uint32_t kPauseTokenFlag = 2;

/// One token of a transcribed text. Offsets are bytes of the text. The groups are said one after
/// the other and belong to the transcriber. Published layout.
struct CTxMarker {
    uint32_t text_start;  ///< its first byte
    uint32_t text_end;    ///< after the token
    uint32_t first_state; ///< written by the aligner: the first position in its search graph
    uint32_t last_state;  ///< written by the aligner: the position after the last
    uint32_t kind;        ///< a tx_marker_kind
    int32_t value;        ///< kind 3: the place of the cut in milliseconds; otherwise -1
    uint32_t flags;       ///< kPauseTokenFlag or 0
    int32_t group_count;  ///< stretches
    PhonemeGroup* groups; ///< null when there are none
};
static_assert(sizeof(void*) != 8 || (sizeof(CTxMarker) == 40 && offsetof(CTxMarker, groups) == 32));

/// Flags of TranscriberInfo.
enum transcriber_info_flags : uint32_t {
    kUnsupportedPayload = 1, ///< the lexicon file's payload has a form that is not supported
    kUnitsBeforeTens = 2,    ///< number words put the units before the tens
    kLocaleStored = 4,
    kInfoStringStored = 8,
    kCommentStored = 16,
    kCodePageKnown = 32,
};

/// What a lexicon says of itself. Texts are zero-terminated. Published layout.
struct TranscriberInfo {
    char name[64];      ///< of the language
    uint32_t language;  ///< primary language number: 9 English, 7 German, 12 French ...
    uint32_t flags;     ///< transcriber_info_flags
    char locale[64];    ///< locale to work under; empty leaves the process's own
    uint32_t code_page; ///< of the language's words and rules: 1250, 1251, 1252 ...
    char comment[64];   ///< for people
};
static_assert(sizeof(TranscriberInfo) == 204 && offsetof(TranscriberInfo, locale) == 72 &&
              offsetof(TranscriberInfo, comment) == 140);

/// Turns text into phoneme strings. Serves one thread at a time; where its record names a locale,
/// Transcribe switches the whole process to it for the length of the call.
class IVisemixTranscriber {
public:
    /// Reads `text`, zero-terminated bytes of the local code page; null counts as empty. Always
    /// true: what cannot be said gives a token without phonemes.
    virtual bool Transcribe(const char* text) = 0;
    /// Reads the form in the local code page of `converted`; null counts as empty.
    virtual bool Transcribe(IQuibConvertedText* converted) = 0;
    /// Copies what the lexicon says of itself.
    virtual void getTranscriberInfo(TranscriberInfo* info) = 0;
    /// The tokens of the last text, or null when there are none; valid until the next Transcribe.
    virtual CTxMarker* GetOutputMarkers(uint32_t* count) = 0;
    /// The empty text; the output is what GetOutputMarkers gives.
    virtual const char* GetTranscription() = 0;
    /// Adds a timeline of words and phonemes to `results`, from default durations alone.
    virtual void GenerateTimedMarkers(ISyncResultsCollection* results) = 0;
    /// The information text of the lexicon file, not zero-terminated by `*length`; null when empty.
    virtual const char* GetInfoString(uint32_t* length) = 0;
    /// Takes another reference and returns how many there are.
    virtual int32_t AddRef() = 0;
    /// Gives one reference back; the last one deletes the transcriber and returns 0.
    virtual int32_t Release() = 0;
    /// The byte at `index` of the last text; 0 at its end and beyond.
    virtual uint32_t GetInputChar(int32_t index) = 0;

protected:
    ~IVisemixTranscriber() = default;
};

} // namespace tessarin

/// Makes a transcriber with the built-in English rules and the lexicon text of `length` bytes at
/// `lexiconText`, which may be empty or null and is copied. Returns 0 with a reference in `*out`,
/// given back with DestroyTranscriber, or 1 with `*out` null.
TESSARIN_API int32_t CreateDefaultTranscriber(const char* lexiconText, int32_t length,
                                              tessarin::IVisemixTranscriber** out);

/// Gives one reference back; null is allowed.
TESSARIN_API void DestroyTranscriber(tessarin::IVisemixTranscriber* transcriber);
