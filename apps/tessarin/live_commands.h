#pragma once

#include <cstdint>
#include <functional>

class CommandMatcher;

/// Follows 16-bit mono audio of `rateHz` on standard input until it ends. `listener` hears it and
/// finds the ends of utterances; `heard` is called at each with its time from the start of the
/// audio, and asks the listener which command it was. Throws Failure.
void FollowUtterances(CommandMatcher& listener, uint32_t rateHz,
                      const std::function<void(int64_t endMs)>& heard);
