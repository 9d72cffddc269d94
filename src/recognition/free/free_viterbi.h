#pragma once

#include <cstdint>

#include "base/tarray.h"
#include "tessarin/error_codes.h"

namespace tessarin {

class CAccousticHMM;
class IObservationStream;
class ProgressSink;

/// Finds the most probable path through the loop of all phonemes: the Viterbi algorithm over all
/// states of the model, in linear probabilities rescaled at every observation. `path` receives the
/// model state of each observation; `energies` has room for them. Returns 0; 1 without memory; 3
/// for a model of more than 65535 states; 5 when `progress` (may be null) cancels; or the code of a
/// failed read.
[[nodiscard]] error_code FreeViterbi(const CAccousticHMM& model, IObservationStream& stream,
                                     ProgressSink* progress, TArray<uint32_t>& path,
                                     TArray<float>& energies);

/// As FreeViterbi, but phonemes follow each other by the model's statistics of the language: each
/// state keeps one hypothesis, which knows its phonemes. Returns 8 when no hypothesis is left.
[[nodiscard]] error_code FreeViterbiLM(const CAccousticHMM& model, IObservationStream& stream,
                                       ProgressSink* progress, TArray<uint32_t>& path,
                                       TArray<float>& energies);
/// The same with hypotheses kept in steps of `growthStep`, which has no part in the result.
[[nodiscard]] error_code FreeViterbiLM(const CAccousticHMM& model, IObservationStream& stream,
                                       ProgressSink* progress, TArray<uint32_t>& path,
                                       TArray<float>& energies, int32_t growthStep);

} // namespace tessarin
