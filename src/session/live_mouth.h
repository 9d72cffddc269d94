#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "mouth/frame_shaping.h"
#include "session/live_loudness.h"
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

/// How a live mouth moves.
struct live_mouth_settings {
    float frameRate = 30.0f;
    int32_t lookAheadMs = 20; ///< how far ahead of a sound the mouth prepares for it
    mouth_strength strength;
};

/// How loud the vowels of a voice are that is still being heard, in dB: a usual voice at first, and
/// within some seconds this one.
class RunningLevel {
public:
    void Hear(float db, int64_t ms);
    float GetUsualDb() const { return usualDb; }

private:
    float usualDb = -26.0f;
    int64_t heardMs = 250; ///< of vowels; the first guess counts as a long one
};

/// The mouth of live audio: joins what consecutive flushes give, and makes frames of it as soon as
/// they are final. However long the audio goes on, it keeps the last seconds only.
class LiveMouth {
public:
    /// Begins, once. `audioLoudness` is that of the same audio, and outlives the mouth.
    error_code Open(const live_mouth_settings& wanted, LiveLoudness& audioLoudness);

    /// Takes the markers of a flush, whose times count from its beginning, `ms` long; the first
    /// `tailMs` of them were in the flush before.
    void Add(ISyncResultsCollection& flush, int64_t ms, int64_t tailMs);
    /// The audio ends there; what is heard beyond is ignored.
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
        float db; ///< against the voice as it was known when the sound ended
    };

    void Forget();
    double FrameMs() const { return 1000.0 / static_cast<double>(settings.frameRate); }
    /// The loudness of what is in the window, by the times in it.
    LoudnessCurve WindowLoudness() const { return LoudnessCurve(levels, levelsFromMs - baseMs); }
    void HearVoice();
    void FillWindow();
    std::vector<articulation> Shaped();
    error_code MakeFrames(int64_t untilMs, std::vector<tessarin_live_frame>& out);

    articulator_owner articulator;
    results_owner window;
    live_mouth_settings settings;
    frame_shaping shaping;
    LiveLoudness* loudness = nullptr;
    RunningLevel level;
    std::vector<spoken> recent;
    std::vector<float> levels; ///< of each 10 ms from levelsFromMs, in dB
    int64_t levelsFromMs = 0;
    std::vector<tessarin_phoneme> windowPhonemes; ///< those of the window
    int64_t audioEndMs = std::numeric_limits<int64_t>::max();
    int64_t heardMs = 0;
    int64_t baseFrame = 0; ///< the number of the frame that begins at baseMs
    int64_t baseMs = 0;    ///< what the times in the window count from
    int64_t framesUntilMs = 0;
    int64_t takenMs = 0;
};

} // namespace tessarin
