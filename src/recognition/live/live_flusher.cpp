#include "recognition/live/live_flusher.h"

#include <algorithm>

#include "base/trunc_sat.h"
#include "recognition/live/heard_frames.h"
#include "recognition/markers/amplitude_scale.h"
#include "results/concrete_sync_marker_collection.h"

namespace tessarin {

live_flusher::live_flusher(const CAccousticHMM& acousticModel, heard_frames& frames,
                           double framePeriodMs, int64_t firstFrame)
    : model(acousticModel), heard(frames), periodMs(framePeriodMs), baseFrame(firstFrame) {}

std::optional<int64_t> live_flusher::EndBefore(int32_t delayMs) const {
    const double head = static_cast<double>(baseFrame) * periodMs;
    const double until = static_cast<double>(heard.GetNumPending()) * periodMs + head - delayMs;
    if (delayMs + head > until) {
        return std::nullopt;
    }
    return TruncSat<int64_t>(until);
}

size_t live_flusher::TakePath(int64_t endMs, int32_t overlapMs) {
    constexpr int64_t kMaxFrames = INT32_MAX;
    // Kept: -1 is a time as any other, for which only the overlap is left out.
    const double end = static_cast<double>(endMs) + (endMs != -1 ? overlapMs / 2 : 0);
    const double begin = static_cast<double>(baseFrame) * periodMs + periodMs * 0.5;
    const int64_t wanted = TruncSat<int32_t>((end - begin) / periodMs) + int64_t{1};
    const auto count = [&](size_t pending) {
        const int64_t waiting = std::min(static_cast<int64_t>(pending), kMaxFrames);
        return static_cast<size_t>(wanted < 1 ? waiting : std::min(wanted, waiting));
    };
    const size_t taken = heard.TakePath(count, path, pathEnergies);
    baseFrame += static_cast<int64_t>(taken);
    return taken;
}

error_code live_flusher::BuildMarkers(int32_t frames, int32_t overlapMs,
                                      CConcreteSyncMarkerCollection& results) {
    const auto count = std::min(static_cast<size_t>(std::max(frames, 0)), path.size());
    const auto [lowest, highest] = heard.GetEnergyRange();
    const amplitude_scale amplitudes(lowest, highest, pathEnergies);
    const bool stateMarkers = (results.get_flags() & kWriteStateMarkers) != 0;
    const error_code code = GenerateFlushMarkers({path.data(), count}, model, amplitudes, periodMs,
                                                 stateMarkers, results);
    return code == kNoError && overlapMs > 0 ? overlap.Join(overlapMs, results) : code;
}

} // namespace tessarin
