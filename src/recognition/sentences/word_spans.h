#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "tessarin/transcriber.h"

namespace tessarin {

class CAccousticHMM;
class forward_graph;
class log_state_graph;
class phone_durations;

/// A sentence: what is looked for as a whole, and where in the search graph it begins and ends.
struct word_span {
    const CTxMarker* first; ///< its first token
    const CTxMarker* last;  ///< its last token
    uint32_t firstState;
    std::vector<uint32_t> entryStates; ///< where there are several ways in
    std::vector<uint32_t> exitStates;  ///< where there are several ways out
    uint32_t lastState;                ///< of the phone after the sentence
    uint16_t expectedFrames;           ///< how long the sentence can be said to last

    /// Whether a path that comes to `state` enters the sentence there.
    bool IsEntry(uint32_t state) const { return IsOneOf(entryStates, firstState, state); }
    /// Whether a path that is in `state` has said the sentence.
    bool IsExit(uint32_t state) const { return IsOneOf(exitStates, lastState, state); }

private:
    static bool IsOneOf(const std::vector<uint32_t>& states, uint32_t otherwise, uint32_t state);
};

/// The sentences of `markers`, whose positions are those of the graphs: they end at a full stop, a
/// question or exclamation mark, and at the end. Makes `durations` the limits of `model`.
std::vector<word_span> BuildWordSpans(std::span<const CTxMarker> markers,
                                      IVisemixTranscriber& transcriber,
                                      const forward_graph& forward, const log_state_graph& graph,
                                      CAccousticHMM& model, phone_durations& durations);

} // namespace tessarin
