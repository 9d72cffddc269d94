#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "session/live_feed.h"
#include "session/live_mouth.h"
#include "session/live_weights.h"

namespace tessarin {

/// Follows audio that is still coming in: the realtime recognizer, whose flushes count from
/// themselves, and the mouth that puts them on one line of time. One thread may push while another
/// takes.
class LiveListener {
public:
    /// Begins, once. Returns 0, or why it cannot.
    error_code Open(std::shared_ptr<CAccousticHMM> acousticModel,
                    const tessarin_live_options* given);

    error_code Push(const void* samples, uint32_t size);
    /// The same for an audio callback, with `count` samples of each channel: never waits, locks or
    /// allocates. Returns 3 when the last of them were lost, as there was no room.
    error_code PushFromCallback(const void* samples, uint32_t count);
    /// Replaces `out` by what became final since the last call.
    error_code Take(live_stretch& out);
    /// Waits until all was heard, and replaces `out` by all that was not taken.
    error_code Finish(live_stretch& out);
    /// The visemes at a time; before 0, counted from the end of what was pushed. Takes what became
    /// final, unless the host takes stretches itself.
    error_code Weigh(int64_t timeMs, std::span<float, LiveWeights::kVisemes> out, int64_t& atMs);

    /// How much more was pushed than was heard.
    int64_t GetWaitingMs() const;
    /// How much of what the callback pushed was lost.
    int64_t GetLostMs() const;

private:
    error_code Start(int32_t bits);
    error_code Hear(live_stretch& out);
    bool Carry(std::span<const int16_t> samples);
    error_code PushBytes(const void* bytes, size_t size);
    void MeasureBytes(const uint8_t* bytes, size_t size);
    error_code PushFloats(const char* bytes, size_t size);
    error_code PushSilence(int64_t ms);
    bool Flush();
    int64_t ToMs(uint64_t frames) const;
    int64_t GetPushedMs() const;
    int64_t GetComeMs() const;

    tessarin_live_options options{};
    std::shared_ptr<CAccousticHMM> model; ///< outlives its recognizer
    realtime_recognizer_owner recognizer;
    results_owner results;
    LiveLoudness loudness; ///< outlives the mouth
    LiveMouth mouth;
    LiveWeights weights;
    double periodMs = 0;           ///< from one observation to the next
    size_t frameBytes = 0;         ///< of a sample of each channel, as the recognizer takes them
    std::string cutFloat;          ///< the beginning of a sample whose end has not come
    std::vector<int16_t> scaled;   ///< room for a block of samples that came as floats
    std::vector<uint8_t> cutFrame; ///< the beginning of samples whose end has not come
    std::vector<int16_t> heard;    ///< room for a block of the first channel
    std::vector<uint8_t>
        carried;         ///< room for a block of the callback's, as the recognizer takes it
    std::mutex pushLock; ///< over what pushing changes
    std::atomic<uint64_t> pushedBytes = 0;
    std::atomic<bool> isFinished = false;
    std::atomic<int64_t> heardMs = 0; ///< the mouth's, for other threads
    bool givesStretches = false;      ///< the host takes them itself
    int64_t lastFlushMs = 0;          ///< length of the flush before, its tail included
    LiveFeed feed;                    ///< ends before what it feeds
};

} // namespace tessarin

/// A listener and the stretch that it last lent.
struct tessarin_live {
    tessarin::LiveListener listener;
    tessarin::live_stretch stretch;
};
