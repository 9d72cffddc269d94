#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/tarray.h"
#include "recognition/graph/log_state_graph.h"
#include "tessarin/error_codes.h"

namespace tessarin {

class CAccousticHMM;
class IObservationStream;
class ProgressSink;

/// How TrellisViterbi searches.
struct trellis_viterbi_options {
    uint16_t beamWidth;      ///< states in the window
    uint16_t keptPerFrame;   ///< hypotheses of an observation; 0: a quarter of the window
    uint32_t memory;         ///< bytes of back-pointers before the file is used
    double logBeam;          ///< below the best score; 0: -10000
    const std::string& file; ///< empty: a new one in the system's folder for temporary files
};

/// Finds the most probable path through a chain of states for all observations of `stream`, as
/// SlidingViterbi does, but adds logarithms, and keeps of each observation only the best
/// hypotheses: first in memory, then in a file, so that audio of any length fits.
///
/// `graph` consists of phones of states. The search begins in `startStates`, each scored with the
/// first state of its phone. `path` (may be null) receives the state of each observation,
/// `energies` the observations' energies, and `*score` (may be null) the score of the last state
/// plus the logarithm of the number of observations: a sum over all of them, so that the paths of
/// one recording through different graphs compare.
///
/// Returns 0; 1 without memory; 5 when `progress` (may be null) cancels; 7 when the way back cannot
/// be read; 8 when nothing survived an observation or the end of the chain was not reached, with
/// the path up to there; 11 or 17 when the file cannot be made or written; or the code of a failed
/// read of `stream`.
[[nodiscard]] error_code TrellisViterbi(const trellis_viterbi_options& options,
                                        const CAccousticHMM& model, const log_state_graph& graph,
                                        const std::vector<uint32_t>& startStates,
                                        IObservationStream& stream, ProgressSink* progress,
                                        TArray<uint32_t>* path, TArray<float>& energies,
                                        double* score);

} // namespace tessarin
