#include "recognition/sentences/word_spans.h"

#include <algorithm>
#include <utility>

#include "model/accoustic_hmm.h"
#include "recognition/graph/forward_graph.h"
#include "recognition/graph/log_state_graph.h"
#include "recognition/graph/phone_durations.h"

namespace tessarin {
namespace {

/// The self-loop, the next phone, and one way more.
constexpr uint32_t kSeveralWays = 3;

bool EndsSentence(const CTxMarker& marker, IVisemixTranscriber& transcriber) {
    if ((marker.kind & kPunctuationToken) == 0) {
        return false;
    }
    const uint32_t character = transcriber.GetInputChar(static_cast<int32_t>(marker.text_start));
    return character == 0 || character == '?' || character == '.' || character == '!';
}

/// Kept: cuts count as words; the one that begins a region then begins its first sentence.
bool BelongsToSentence(const CTxMarker& marker) {
    return (marker.kind & kWordToken) != 0;
}

/// The ways that lead from the silence before a sentence into several pronunciations.
std::vector<uint32_t> EntryStates(const forward_graph& forward, uint32_t firstState) {
    std::vector<uint32_t> entries;
    if (firstState <= 1) {
        return entries;
    }
    const uint32_t before = firstState - 1;
    const forward_rec& record = forward[before];
    for (uint32_t i = 0; record.edges >= kSeveralWays && i < record.edges; ++i) {
        if (record.Edges()[i].state > before) {
            entries.push_back(record.Edges()[i].state);
        }
    }
    return entries;
}

/// The ways that lead from a sentence and the silence after it into the next phone.
std::vector<uint32_t> ExitStates(const log_state_graph& graph, uint32_t lastState) {
    std::vector<uint32_t> exits;
    if (int64_t{lastState} >= int64_t{graph.GetNumStates()} - kForwardPhoneStates) {
        return exits;
    }
    const uint32_t after = lastState + kForwardPhoneStates;
    const state_rec& record = graph[after];
    for (uint16_t i = 0; record.predecessors >= kSeveralWays && i < record.predecessors; ++i) {
        if (record.Arcs()[i].state != after) {
            exits.push_back(record.Arcs()[i].state);
        }
    }
    return exits;
}

} // namespace

bool word_span::IsOneOf(const std::vector<uint32_t>& states, uint32_t otherwise, uint32_t state) {
    if (states.size() < 2) {
        return state == otherwise;
    }
    return std::find(states.begin(), states.end(), state) != states.end();
}

std::vector<word_span> BuildWordSpans(std::span<const CTxMarker> markers,
                                      IVisemixTranscriber& transcriber,
                                      const forward_graph& forward, const log_state_graph& graph,
                                      CAccousticHMM& model, phone_durations& durations) {
    durations.SetUp(model);
    const auto numStates = static_cast<uint32_t>(model.numStates);
    std::vector<word_span> spans;
    std::vector<const CTxMarker*> words;
    const auto close = [&] {
        if (words.empty()) {
            return;
        }
        word_span span{words.front(),
                       words.back(),
                       words.front()->first_state * numStates,
                       {},
                       {},
                       words.back()->last_state * numStates,
                       0};
        span.entryStates = EntryStates(forward, span.firstState);
        span.exitStates = ExitStates(graph, span.lastState);
        uint64_t frames = 0;
        for (const CTxMarker* word : words) {
            frames += durations.MarkerFrames(*word);
        }
        span.expectedFrames = static_cast<uint16_t>(frames);
        spans.push_back(std::move(span));
        words.clear();
    };
    for (const CTxMarker& marker : markers) {
        if (EndsSentence(marker, transcriber)) {
            close();
        } else if (BelongsToSentence(marker)) {
            words.push_back(&marker);
        }
    }
    close();
    return spans;
}

} // namespace tessarin
