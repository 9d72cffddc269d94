#include "apps/tessarin/live_commands.h"

#include <string>

#include "apps/tessarin/command_matcher.h"
#include "apps/tessarin/console/progress_bar.h"
#include "apps/tessarin/readers/live_audio.h"

void FollowUtterances(CommandMatcher& listener, uint32_t rateHz,
                      const std::function<void(int64_t endMs)>& heard) {
    LiveAudio audio(rateHz);
    std::string block;
    size_t samples = 0;
    bool hasEnded = false;
    while (!hasEnded) {
        bool isSpeaking = true;
        while (isSpeaking) {
            hasEnded = !audio.ReadBlock(&block) || WasInterrupted();
            samples += block.size() / sizeof(int16_t);
            isSpeaking = listener.Hear(block) && !hasEnded;
        }
        heard(static_cast<int64_t>(samples) * 1000 / kLiveRateHz);
    }
}
