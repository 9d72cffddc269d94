#pragma once

#include <cstdint>

#include "base/tarray.h"
#include "recognition/graph/state_rec.h"
#include "tessarin/error_codes.h"
#include "tessarin/sync_results.h"

namespace tessarin {

class CAccousticHMM;
class IObservationStream;

/// Handles a region with nothing to align: reads it, so that the next region begins after it, and
/// makes it one long phone, the one of the graph's first state, in `phones`. `energies` has room
/// for the stream's observations. Returns 0, or the code of a failed read.
[[nodiscard]] error_code ReadDormantMarkerRegion(const CAccousticHMM& model,
                                                 IObservationStream& stream,
                                                 const state_rec* const* graph, uint32_t positions,
                                                 double periodMs, TArray<CSyncMarker>& phones,
                                                 TArray<float>& energies);

} // namespace tessarin
