#include "commands/audio_footprint.h"

#include <vector>

#include "features/buffer_feature_stream.h"

namespace tessarin {

error_code audio_footprint::MatchLive(buffer_feature_stream& live, float* distance) {
    *distance = kNoWarpDistance;
    if (live.FeatureCount() < FeatureCount()) {
        return kOutOfRange;
    }
    const auto liveFrames = static_cast<uint32_t>(live.GetNumFeatures());
    if (liveFrames < match.Rows()) {
        ResetMatch();
    }
    if (GetNumObservations() == 0) {
        return kNoError;
    }
    std::vector<float> row(GetNumObservations());
    while (match.Rows() < liveFrames) {
        const float* frame = live.GetFeature(static_cast<int32_t>(match.Rows()));
        for (size_t j = 0; j < row.size(); ++j) {
            row[j] = FrameDistance(frame, ActiveFrame(j), FeatureCount());
        }
        match.AddRow(row);
    }
    if (match.Rows() > 0) {
        // Kept: the cost is that of the whole sample, the steps are those of the path to wherever
        // the utterance has come in it; so the distance of a command that is only half said is
        // large, and falls while the rest is said.
        *distance = match.Distance(match.CheapestColumn());
    }
    return kNoError;
}

} // namespace tessarin
