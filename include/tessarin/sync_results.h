#pragma once

#include <cstddef>
#include <cstdint>

#include "tessarin/export.h"

namespace tessarin {

/// One timed item of a result. Times are milliseconds from the beginning of the audio; those of a
/// recognised marker are the middles of analysis windows. Published layout.
struct CSyncMarker {
    uint32_t type; ///< a sync_marker_type
    float score;   ///< strength of the sound, 0 to 100; not a confidence
    int32_t start; ///< milliseconds
    int32_t end;   ///< milliseconds, exclusive
    char label[8]; ///< phoneme label of a phoneme, zero-terminated
    char* text;    ///< the span's own text, zero-terminated, or null; never owned by a phoneme
    int32_t text_offset;  ///< spans: place in the transcription text; phonemes: of the last span
    int32_t text_length;  ///< spans: length in the transcription text
    uint32_t reserved[2]; ///< not used
};
static_assert(sizeof(void*) != 8 ||
              (sizeof(CSyncMarker) == 48 && offsetof(CSyncMarker, label) == 16 &&
               offsetof(CSyncMarker, text) == 24 && offsetof(CSyncMarker, text_offset) == 32));

/// What CSyncMarker::type says.
enum sync_marker_type : uint32_t {
    kPhonemeMarker = 1,
    kWordMarker = 2,
    kPunctuationMarker = 3, ///< a text event: punctuation
    kTagMarker = 4,         ///< a text event: a bracket comment or a tag
    kStateMarker = 5,       ///< a state segment of the phoneme before it
    kClearedMarker = 7,
};

/// Flags of a results collection.
enum sync_results_flags : uint32_t {
    kWriteStateMarkers = 1, ///< searches write state segments after their phonemes
    kPostProcessScores = 2, ///< scores are mapped to a logarithmic scale after a run
};

/// The ordered markers of a result. Belongs to one run at a time and is not locked.
class ISyncResultsCollection {
public:
    virtual ~ISyncResultsCollection() = default;

    /// Replaces the sync_results_flags.
    virtual void set_flags(uint32_t flags) = 0;
    /// The sync_results_flags.
    virtual uint32_t get_flags() = 0;
    /// How many markers there are.
    virtual int32_t size() = 0;
    /// The first marker, or null when the collection is empty. Valid until the collection changes.
    virtual CSyncMarker* begin() = 0;
    /// The place after the last marker, or null when the collection is empty.
    virtual CSyncMarker* end() = 0;
    /// Releases all markers. The collection keeps its room, and what it carries from the last run.
    virtual void clear() = 0;
    /// Inserts a copy of `marker` after the markers whose start is not later. The collection
    /// takes over `text`, which must come from malloc, unless the type is kPhonemeMarker.
    virtual void add_marker(const CSyncMarker& marker) = 0;
};

} // namespace tessarin

/// Makes an empty collection with the given sync_results_flags. Returns 0, or 1 with `*out` null
/// without memory. Freed by DestroySyncResultsCollection.
TESSARIN_API int32_t CreateSyncResultsCollection(uint32_t flags,
                                                 tessarin::ISyncResultsCollection** out);

/// Frees a collection and its markers; null is allowed.
TESSARIN_API void DestroySyncResultsCollection(tessarin::ISyncResultsCollection* collection);
