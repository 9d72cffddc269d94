#pragma once

#include <cstdint>
#include <vector>

#include "fixtures.h"
#include "recognition/aligner/sliding_viterbi.h"

namespace tessarin::test {

/// What one search gave.
struct search_run {
    error_code code = kNoError;
    std::vector<uint32_t> path;
    double score = -1.0;
    TArray<float> energies;
};

inline void Search(search_run& run, const sliding_viterbi_options& options,
                   const CAccousticHMM& model, const hand_graph& graph, IObservationStream& stream,
                   const std::vector<uint32_t>& startStates = {0},
                   ProgressSink* progress = nullptr) {
    TArray<uint32_t> path;
    run.code = SlidingViterbi(options, model, graph.Get(), graph.Positions(), startStates, stream,
                              progress, &path, run.energies, &run.score);
    run.path.assign(path.begin(), path.end());
}

} // namespace tessarin::test
