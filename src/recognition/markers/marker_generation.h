#pragma once

#include <cstdint>

#include "base/tarray.h"
#include "recognition/graph/state_rec.h"
#include "tessarin/error_codes.h"
#include "tessarin/sync_results.h"

namespace tessarin {

class CAccousticHMM;
class IObservationStream;

/// Replaces `results` by the phonemes of `path`, which has the search state of each observation:
/// with a graph numbered as in it, without one as in the model. A phoneme's `text_offset` is its
/// position in the search. Scores are amplitudes, in percent of the stream's energy range, and 0
/// for phonemes without `amplitudes`. With `stateMarkers` each phoneme is followed by its segments.
/// Times count from the path's first observation. Returns 1 without memory.
[[nodiscard]] error_code GenerateMarkers(const TArray<uint32_t>& path, const CAccousticHMM& model,
                                         IObservationStream& stream, const state_rec* const* graph,
                                         const TArray<float>& energies, bool stateMarkers,
                                         bool amplitudes, TArray<CSyncMarker>& results);

} // namespace tessarin
