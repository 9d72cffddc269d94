#pragma once

#include <cstdint>

namespace tessarin {

class IObservationStream;

/// Milliseconds from one observation of `stream` to the next; 0 when its sample rate is not a rate.
double FramePeriodMs(IObservationStream& stream);

/// When observation `index` is, in milliseconds: the middle of its period.
int32_t FrameTimeMs(int64_t index, double periodMs);

} // namespace tessarin
