#pragma once

#include <cstdint>
#include <string_view>

#include "articulation/markers/marker_lists.h"
#include "articulation/markers/phn_marker_list.h"
#include "tessarin/sync_results.h"

namespace tessarin {

/// A result sorted by kind: the articulator's working copy. Only the phonemes drive the mouth.
template <class Char> class app_sync_resultsT {
public:
    virtual ~app_sync_resultsT() = default;

    phn_marker_list phonemes; ///< phonemes, or their state segments where there are any
    phn_marker_list second_phonemes;
    og_marker_listT<Char> words;
    event_marker_list first_events;  ///< punctuation
    event_marker_list second_events; ///< brackets and tags
    gesture_marker_list gestures;
    articulation_list articulations;
    envelope_list envelopes;
    int32_t reserved = 0;
};

using app_sync_results = app_sync_resultsT<char>;

/// Appends the markers of `results` to `sorted`. State segments replace the phoneme that they
/// belong to and bear its label. With `allKinds` the spans are read too and labelled with their
/// part of the transcription `text`.
void ReadSyncResults(ISyncResultsCollection& results, std::string_view text, bool allKinds,
                     app_sync_results& sorted);

} // namespace tessarin
