#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "recognition/graph/state_rec.h"

namespace tessarin {

class CAccousticHMM;
class quib_allocator;
struct CTxMarker;

/// Builds the search graph of a text: the phones of all tokens in a chain, pronunciation variants
/// as parallel branches, and silences that may be skipped. Records come from the pool and live as
/// long as it. Throws std::bad_alloc.
class state_graph_builder {
public:
    state_graph_builder(const CAccousticHMM& acousticModel, quib_allocator& records)
        : model(acousticModel), pool(records) {}

    /// Appends a whole text and writes the positions of its tokens into them. `startStates` and
    /// `endStates` receive the states at which the text can begin and end.
    void AddMarkers(std::span<CTxMarker> markers, bool gapSilence,
                    std::vector<uint32_t>& startStates, std::vector<uint32_t>& endStates);
    /// Appends the phones of one token. `starts` and `ends`, where given, receive the first states
    /// of its first group and the last states of its last one.
    void AddMarkerStates(const CTxMarker& marker, std::vector<uint32_t>* starts,
                         std::vector<uint32_t>* ends);
    /// Appends one phone. A silence that is not mandatory may be passed by.
    void AddPhoneStates(uint16_t phone, bool mandatory);
    /// The finished graph, an array from the pool.
    state_rec** CopyGraph();

    uint32_t StateCount() const { return static_cast<uint32_t>(states.size()); }

private:
    /// A state from which the next phone can be entered, and the probability of leaving it.
    struct phone_exit {
        uint32_t state;
        float probability;
    };

    uint32_t Position() const;
    void AddSpelling(const char* phonemes, bool mandatory, std::vector<uint32_t>* starts,
                     std::vector<uint32_t>* ends);
    void AddEntryState(uint8_t phone, float selfLoop);
    void AddInnerState(uint8_t phone, int32_t state);
    state_rec& NewState(uint8_t phone, int32_t state, int32_t arcs);

    const CAccousticHMM& model;
    quib_allocator& pool;
    std::vector<state_rec*> states;
    size_t numArcs = 0;
    std::vector<phone_exit> exits; // at most kMaxExits, as more are never looked at
};

} // namespace tessarin
