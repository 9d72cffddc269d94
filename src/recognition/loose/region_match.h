#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "base/tarray.h"
#include "recognition/graph/state_rec.h"
#include "recognition/loose/state_scores.h"
#include "tessarin/sync_results.h"

namespace tessarin {

class amplitude_scale;
class CAccousticHMM;
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
    std::vector<CSyncMarker> phones;
    match_evidence evidence; ///< of the plain path
    double spread = 1.0;
    bool isFound = false; ///< a path; there is none for pauses longer than the audio
    bool departs = false; ///< the path from the text
};

/// The states and observations that a region is searched in.
struct region_input {
    const CAccousticHMM& model;
    const state_rec* const* graph;
    uint32_t positions;
    std::span<const CTxMarker> tokens;
    const state_scores& scores;
    const amplitude_scale& amplitudes;
    double periodMs;
    std::span<const uint32_t> plainPath; ///< of the exact search; may be shorter or empty
};

/// Whether the region is small enough for a search that keeps all states.
bool FitsLooseSearch(const region_input& input);

/// Searches the region. False when `isCancelled` says so, which is asked with the share of the work
/// that is done.
[[nodiscard]] bool MatchRegion(const region_input& input,
                               const std::function<bool(double)>& isCancelled, region_match& out);

} // namespace tessarin
