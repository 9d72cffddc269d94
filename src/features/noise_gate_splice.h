#pragma once

#include <cstdint>

#include "tessarin/error_codes.h"

namespace tessarin {

class CSpectralStream;

/// Puts a noise gate into the chain of `stream`: before its pre-emphasis, else after its
/// resampler, else after all of it, so that the gate hears audio as it is, at the rate of the
/// analysis. The settings are those of NonRTDBNoiseGateStream::Instantiate. Returns 0, 6 for a
/// chain without a place, or the code of the stage that could not be connected.
[[nodiscard]] error_code InsertNoiseGate(CSpectralStream& stream, float thresholdDb,
                                         float percentile, int32_t rampMs, int32_t minQuietMs,
                                         int32_t maxBlipMs);

} // namespace tessarin
