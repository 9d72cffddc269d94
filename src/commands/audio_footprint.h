#pragma once

#include "commands/feature_stream.h"
#include "commands/time_warp.h"

namespace tessarin {

class buffer_feature_stream;

/// The sample of an acoustic command, with the match of a live utterance against it, which goes on
/// from call to call.
class audio_footprint : public CFeatureStream {
public:
    /// Takes the observations of `live` that are new since the last call into the match, and gives
    /// the distance so far. A shorter utterance than the last is another one. The distance is
    /// kNoWarpDistance where there is nothing to match. Returns 3 when `live` has fewer features.
    error_code MatchLive(buffer_feature_stream& live, float* distance);
    /// Forgets the utterance.
    void ResetMatch() { match.Reset(); }

private:
    time_warp match;
};

} // namespace tessarin
