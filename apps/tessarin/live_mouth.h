#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "apps/tessarin/timed_result.h"
#include "tessarin/owned.h"

/// Phonemes and frames of a stretch of live audio, in milliseconds since it began.
struct live_stretch {
    int64_t startMs = 0;
    int64_t endMs = 0;
    int64_t baseMs = 0;                  ///< what the times of phonemes and frames count from
    std::vector<timed_phoneme> phonemes; ///< those that have ended
    std::vector<mouth_frame> frames;     ///< those that nothing to come can change
};

/// The mouth of live audio: joins what consecutive flushes give, and makes frames of it as soon as
/// they are final. However long the audio goes on, it keeps the last seconds only.
class LiveMouth {
public:
    explicit LiveMouth(double fps);

    /// Takes the markers of a flush, whose times count from its beginning, `ms` long; the first
    /// `tailMs` of them were in the flush before.
    void Add(tessarin::ISyncResultsCollection& flush, int64_t ms, int64_t tailMs);
    /// The audio ends there; what is heard beyond is none of it.
    void SetEnd(int64_t ms) { audioEndMs = ms; }
    /// What has become final since the last call; all, when no more comes.
    live_stretch TakeFinal(bool atEnd);

    int64_t GetHeardMs() const { return heardMs; }

private:
    struct spoken {
        tessarin::CSyncMarker marker;
        int64_t startMs;
        int64_t endMs;
        bool isTold;
    };

    int32_t Relative(int64_t ms) const;
    void Forget();
    std::vector<mouth_frame> MakeFrames(int64_t untilMs);

    tessarin::articulator_owner articulator;
    tessarin::results_owner window;
    std::vector<spoken> recent;
    int64_t audioEndMs = std::numeric_limits<int64_t>::max();
    int64_t heardMs = 0;
    int64_t baseMs = 0;
    int64_t framesUntilMs = 0;
    int64_t toldMs = 0;
};
