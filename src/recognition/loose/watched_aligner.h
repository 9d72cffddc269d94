#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "recognition/loose/region_match.h"
#include "recognition/textbased_phn_recognizer.h"

namespace tessarin {

class CConcreteSyncMarkerCollection;

/// What became of a region.
struct watched_region {
    std::span<const CTxMarker> tokens;
    int32_t firstMarker;        ///< of the region in the exact search's results
    error_code code = kNoError; ///< of the region in the exact aligner
    bool isMatched = false;     ///< `match` is filled in
    region_match match;
};

/// The exact aligner, each of whose regions is searched again. It reads the same observations,
/// once; and what a search that lost its text leaves unread is read here, so that the next region
/// begins after it.
class CWatchedAligner : public CTextbasedPhnRecognizer {
public:
    /// `markers` are those that the run appends to.
    explicit CWatchedAligner(CConcreteSyncMarkerCollection& markers) : results(markers) {}

    using CTextbasedPhnRecognizer::Viterbi;
    error_code Viterbi(const CAccousticHMM& model, const state_rec* const* graph,
                       uint32_t positions, const std::vector<uint32_t>& startStates,
                       const std::vector<uint32_t>& endStates, IObservationStream& stream,
                       ProgressSink* progress, TArray<uint32_t>* path, TArray<float>& energies,
                       double* score) override;
    state_rec** BuildStateGraph(const CAccousticHMM& model, quib_allocator& pool, CTxMarker* first,
                                CTxMarker* end, std::vector<uint32_t>& startStates,
                                std::vector<uint32_t>& endStates, uint32_t* stateCount) override;

    const std::vector<watched_region>& GetRegions() const { return regions; }

protected:
    void EndRegion(error_code code) override;

private:
    CConcreteSyncMarkerCollection& results;
    std::vector<watched_region> regions;
    size_t ended = 0; // regions
};

} // namespace tessarin
