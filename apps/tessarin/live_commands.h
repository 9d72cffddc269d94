#pragma once

#include <cstdint>
#include <functional>
#include <string>

class SampledCommands;

/// A stretch of live audio that ended with the end of speech, or with the audio.
struct live_utterance {
    std::string samples; ///< 16-bit mono at kLiveRateHz
    int64_t endMs = 0;   ///< from the start of the audio
};

/// Follows 16-bit mono audio of `rateHz` on standard input until it ends. `listener` hears it and
/// finds the ends of utterances; `heard` is called at each, and may ask the listener which command
/// it was. An utterance that goes on for 20 seconds is ended. Throws Failure.
void FollowUtterances(SampledCommands& listener, uint32_t rateHz,
                      const std::function<void(const live_utterance&)>& heard);
