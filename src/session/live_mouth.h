#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "tessarin/owned.h"
#include "tessarin/tessarin_c.h"

namespace tessarin {

/// What became final of live audio, in milliseconds since it began.
struct live_stretch {
    int64_t startMs = 0;
    int64_t endMs = 0;
    std::vector<tessarin_live_phoneme> phonemes; ///< those that have ended
    std::vector<tessarin_live_frame> frames;     ///< those that nothing to come can change
};

/// The mouth of live audio: joins what consecutive flushes give, and makes frames of it as soon as
/// they are final. However long the audio goes on, it keeps the last seconds only.
class LiveMouth {
public:
    /// Begins, once; a `frameRate` of 0 is that of the rules.
    error_code Open(float frameRate);

    /// Takes the markers of a flush, whose times count from its beginning, `ms` long; the first
    /// `tailMs` of them were in the flush before.
    void Add(ISyncResultsCollection& flush, int64_t ms, int64_t tailMs);
    /// The audio ends there; what is heard beyond is none of it.
    void SetEnd(int64_t ms) { audioEndMs = ms; }
    /// Replaces `out` by what has become final since the last call; by all, when no more comes.
    error_code TakeFinal(bool atEnd, live_stretch& out);

    int64_t GetHeardMs() const { return heardMs; }

private:
    struct spoken {
        CSyncMarker marker;
        int64_t startMs;
        int64_t endMs;
        bool isTaken;
    };

    void Forget();
    error_code MakeFrames(int64_t untilMs, std::vector<tessarin_live_frame>& out);

    articulator_owner articulator;
    results_owner window;
    std::vector<spoken> recent;
    int64_t audioEndMs = std::numeric_limits<int64_t>::max();
    int64_t heardMs = 0;
    int64_t baseMs = 0; ///< what the times in the window count from
    int64_t framesUntilMs = 0;
    int64_t takenMs = 0;
};

} // namespace tessarin
