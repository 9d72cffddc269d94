#pragma once

#include <cstdint>
#include <vector>

#include "base/tarray.h"
#include "recognition/graph/state_rec.h"
#include "tessarin/error_codes.h"

namespace tessarin {

class CAccousticHMM;
class IObservationStream;
class ProgressSink;

/// How SlidingViterbi searches.
struct sliding_viterbi_options {
    uint16_t beamWidth; ///< states in the window
    bool slideOnLoss;   ///< a window that lost the path slides ahead instead of ending the search
};

/// Finds the most probable path through a chain of states for all observations of `stream`: the
/// Viterbi algorithm in linear probabilities, rescaled at every observation so that the best score
/// is 1, inside a window of states around the best one (Rabiner, "A Tutorial on Hidden Markov
/// Models", 1989, III.B; the rescaling takes the place of its logarithms).
///
/// `graph` has `positions` phones of states. The search begins in `startStates`, each scored with
/// the first state of its phone. `path` (may be null) receives the state of each observation, and
/// `energies` the observations' energies. `*score` (may be null) receives the score of the last
/// state, relative to the best of the last observation.
///
/// Returns 0; 1 without memory; 5 when `progress` (may be null) cancels; the code of a failed read;
/// or 8 when the window lost the path or the end of the chain was not reached, with the path up to
/// there.
[[nodiscard]] error_code SlidingViterbi(const sliding_viterbi_options& options,
                                        const CAccousticHMM& model, const state_rec* const* graph,
                                        uint32_t positions,
                                        const std::vector<uint32_t>& startStates,
                                        IObservationStream& stream, ProgressSink* progress,
                                        TArray<uint32_t>* path, TArray<float>& energies,
                                        double* score);

} // namespace tessarin
