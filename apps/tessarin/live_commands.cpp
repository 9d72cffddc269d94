#include "apps/tessarin/live_commands.h"

#include "apps/tessarin/command_matcher.h"
#include "apps/tessarin/console/progress_bar.h"
#include "apps/tessarin/readers/live_audio.h"

namespace {

constexpr int64_t kLongestMs = 20000;

int64_t MsOf(size_t bytes) {
    return static_cast<int64_t>(bytes / sizeof(int16_t)) * 1000 / kLiveRateHz;
}

} // namespace

void FollowUtterances(SampledCommands& listener, uint32_t rateHz,
                      const std::function<void(const live_utterance&)>& heard) {
    LiveAudio audio(rateHz);
    std::string block;
    size_t position = 0;
    bool hasEnded = false;
    while (!hasEnded) {
        // What comes in is always of one rate: with a new one the engine does not convert anew.
        listener.BeginUtterance(kLiveRateHz);
        live_utterance utterance;
        bool isSpeaking = true;
        while (isSpeaking) {
            hasEnded = !audio.ReadBlock(&block) || WasInterrupted();
            utterance.samples += block;
            isSpeaking = !hasEnded &&
                         listener.Hear(block.data(), static_cast<uint32_t>(block.size())) &&
                         MsOf(utterance.samples.size()) < kLongestMs;
        }
        position += utterance.samples.size();
        utterance.endMs = MsOf(position);
        heard(utterance);
    }
}
