#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "recognition/graph/state_rec.h"

namespace tessarin {

class CAccousticHMM;
struct CTxMarker;

/// A text's search graph taken apart at its words: a chain of junctions with a word between each
/// two. At a junction stand the optional silences; there other speech can be passed over, and a
/// word can be skipped from one junction to the next.
///
///     junction 0 - word 0 - junction 1 - word 1 - ... - junction N
///
/// Inside the words everything is as in the graph, variants included; its states keep their
/// numbers.
class word_chain {
public:
    static constexpr uint32_t kNoJunction = UINT32_MAX;
    /// How many ways into a state are looked at.
    static constexpr size_t kMostArcs = 254;

    struct arc {
        uint32_t from;
        float log; ///< of its probability
    };
    /// A state that leads to a junction.
    struct exit {
        uint32_t state;
        float log;
    };
    struct word {
        uint32_t first; ///< state
        uint32_t end;
        uint32_t token;   ///< index in the tokens
        bool isSkippable; ///< pauses that were asked for are not
        bool isOptional;  ///< the graph itself has ways past it
    };

    /// `graph` has `positions` phones and was built from `tokens`, which have their positions in
    /// it.
    word_chain(const CAccousticHMM& model, const state_rec* const* graph, uint32_t positions,
               std::span<const CTxMarker> tokens);

    size_t GetNumStates() const { return modelStates.size(); }
    const std::vector<word>& GetWords() const { return words; }
    size_t GetNumJunctions() const { return words.size() + 1; }

    /// The model's state that a state is scored by.
    uint16_t GetModelState(size_t state) const { return modelStates[state]; }
    /// The junction from which a state can be entered, or kNoJunction.
    uint32_t GetEntry(size_t state) const { return entries[state]; }
    /// The ways into a state from its own word or silence.
    std::span<const arc> Into(size_t state) const {
        return {arcs.data() + arcBegins[state], arcBegins[state + 1] - arcBegins[state]};
    }
    /// The ways from a word to the junction after it, in order of their states.
    std::span<const exit> WordExits(size_t index) const {
        return {wordExits.data() + wordExitBegins[index],
                wordExitBegins[index + 1] - wordExitBegins[index]};
    }
    /// The ways from the silences of a junction back to it.
    std::span<const exit> SilenceExits(size_t junction) const {
        return {silenceExits.data() + silenceExitBegins[junction],
                silenceExitBegins[junction + 1] - silenceExitBegins[junction]};
    }
    /// The first state of the silences of a junction, or of what comes after when it has none.
    uint32_t JunctionBegin(size_t junction) const {
        return junction == 0 ? 0 : words[junction - 1].end;
    }
    /// The state after them.
    uint32_t JunctionEnd(size_t junction) const {
        return junction < words.size() ? words[junction].first
                                       : static_cast<uint32_t>(modelStates.size());
    }
    /// The word that a state belongs to, or their number for a silence.
    size_t WordOf(uint32_t state) const;
    /// Whether so few observations cannot have all that must not be skipped.
    bool IsTooLongFor(size_t observations) const;

private:
    void FindWords(std::span<const CTxMarker> tokens, uint32_t statesPerPhone);
    /// Twice the number of a junction for each state of its silences, and one more for the word
    /// after it.
    std::vector<uint32_t> FindBlocks(uint32_t numStates) const;
    void AddState(const state_rec& record, uint32_t state, std::span<const uint32_t> blocks,
                  uint32_t statesPerPhone);
    void ListExits(const CAccousticHMM& model, const state_rec* const* graph,
                   std::span<const uint32_t> blocks, const std::vector<bool>& isExit);

    std::vector<word> words;
    std::vector<uint16_t> modelStates;
    std::vector<uint32_t> entries;
    std::vector<uint32_t> arcBegins;
    std::vector<arc> arcs;
    std::vector<uint32_t> wordExitBegins;
    std::vector<exit> wordExits;
    std::vector<uint32_t> silenceExitBegins;
    std::vector<exit> silenceExits;
};

} // namespace tessarin
