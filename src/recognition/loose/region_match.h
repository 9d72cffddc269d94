#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "base/tarray.h"
#include "recognition/graph/state_rec.h"
#include "tessarin/sync_results.h"

namespace tessarin {

class amplitude_scale;
class CAccousticHMM;
class text_follower;
class word_chain;
struct CTxMarker;

/// Part of the evidence for a text: sums, so that the regions of a text add up.
struct match_evidence {
    double fit = 0.0;            ///< of the text's path above the heard one
    size_t spoken = 0;           ///< observations that are not silence
    std::vector<double> phoneMs; ///< lengths of the text's phonemes
    std::vector<uint8_t> phones; ///< that they are of
};

/// What a search that may leave words out found between two cuts.
struct region_match {
    struct word {
        size_t token; ///< in the region
        bool isSaid;
        double margin; ///< in units that the model's voices have
    };
    struct stretch {
        size_t first; ///< observation
        size_t end;
        size_t token; ///< in the region, before which it was said; their number at the end
    };

    std::vector<word> words;
    std::vector<stretch> unscripted;
    /// The phonemes of the path: those of the text, and those heard in other speech. Their
    /// `text_offset` is the position in the search graph, in which they never go back.
    std::vector<CSyncMarker> phones; ///< each followed by its segments, if they are asked for
    /// Lengths are those of the exact search's path. So is the fit of a region that was searched as
    /// a whole; that of a longer one is the loose path's, where it is in the text.
    match_evidence evidence;
    double spread = 1.0;
    bool isFound = false; ///< a path; there is none for pauses longer than the audio
    bool departs = false; ///< the path from the text
};

/// What was found out about a region.
struct region_input {
    const CAccousticHMM& model;
    const state_rec* const* graph;
    uint32_t positions;
    std::span<const CTxMarker> tokens;
    const word_chain& chain;
    const text_follower& follower; ///< finished
    const amplitude_scale& amplitudes;
    double periodMs;
    std::span<const uint32_t> plainPath; ///< of the exact search; may be shorter or empty
    bool stateMarkers;                   ///< write the segments of phonemes, too
};

/// Makes words, stretches and phonemes of the path that was followed.
region_match MatchRegion(const region_input& input);

} // namespace tessarin
