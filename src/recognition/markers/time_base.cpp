#include "recognition/markers/time_base.h"

#include "base/trunc_sat.h"
#include "tessarin/observation_stream.h"

namespace tessarin {

double FramePeriodMs(IObservationStream& stream) {
    uint32_t windowSize = 0;
    uint32_t overlap = 0;
    stream.GetFrameGeometry(&windowSize, &overlap);
    const double sampleRate = stream.GetSampleRate();
    if (!(sampleRate > 0.0)) {
        return 0.0;
    }
    return (static_cast<double>(windowSize) - static_cast<double>(overlap)) / sampleRate * 1000.0;
}

int32_t FrameTimeMs(int64_t index, double periodMs) {
    return TruncSat<int32_t>(static_cast<double>(index) * periodMs + periodMs * 0.5);
}

} // namespace tessarin
