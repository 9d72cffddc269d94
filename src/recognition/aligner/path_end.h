#pragma once

#include <cstdint>
#include <vector>

namespace tessarin {

/// The state that a path should end in instead of `endState`, which lies in a silence if
/// `isSilence`: an optional silence at the end never costs the end of the last word.
inline uint32_t PreferLastWord(uint32_t endState, int32_t statesPerPhone, bool isSilence,
                               const std::vector<double>& scores) {
    const uint32_t phoneStart = endState - endState % static_cast<uint32_t>(statesPerPhone);
    if (!isSilence || phoneStart == 0) {
        return endState;
    }
    const uint32_t wordEnd = phoneStart - 1;
    return scores[wordEnd] > scores[endState] ? wordEnd : endState;
}

} // namespace tessarin
