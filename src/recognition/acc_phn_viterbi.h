#pragma once

#include <cstdint>
#include <vector>

#include "base/tarray.h"
#include "recognition/graph/state_rec.h"
#include "tessarin/error_codes.h"
#include "tessarin/sync_results.h"

namespace tessarin {

class CAccousticHMM;
class IObservationStream;
class ProgressSink;

/// Base of the recognizers: the searches that one may offer, and the frame around a search that
/// turns audio into markers. It has no state of its own.
class CAccPhnViterbi {
public:
    virtual ~CAccPhnViterbi() = default;

    /// Searches the graph for the audio's path. Not offered here: kNotAvailable.
    virtual error_code ViterbiOnGraph(const CAccousticHMM& model, const state_rec* const* graph,
                                      uint32_t positions, const std::vector<uint32_t>& startStates,
                                      const std::vector<uint32_t>& endStates,
                                      IObservationStream& stream, ProgressSink* progress,
                                      TArray<uint32_t>& path, TArray<float>& energies,
                                      double* score);
    /// Searches all phonemes of the model for the audio's path. Not offered here: kNotAvailable.
    virtual error_code Viterbi(const CAccousticHMM& model, IObservationStream& stream,
                               ProgressSink* progress, TArray<uint32_t>& path,
                               TArray<float>& energies);
    /// Runs the search on the graph, or the free one without `graph` or `positions`, and replaces
    /// `results` by the markers of its path. A stream without observations leaves everything as it
    /// is. `progress` also follows the stream's own work; unless the result is 0 or 8 it stays
    /// installed there, so it must outlive the stream.
    virtual error_code GenerateAlignment(const CAccousticHMM& model, IObservationStream& stream,
                                         const state_rec* const* graph, uint32_t positions,
                                         const std::vector<uint32_t>& startStates,
                                         const std::vector<uint32_t>& endStates,
                                         ProgressSink* progress, bool stateMarkers,
                                         TArray<CSyncMarker>& results, TArray<float>& energies);
};

} // namespace tessarin
