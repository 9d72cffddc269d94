#include "recognition/graph/state_graph.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "base/quib_allocator.h"
#include "model/accoustic_hmm.h"
#include "tessarin/transcriber.h"

namespace tessarin {
namespace {

constexpr uint16_t kSilence = 0;

/// So many ways into a phone are taken; a record counts its arcs in 16 bits.
constexpr size_t kMaxExits = 60000;

/// Optional silences in a row keep all ways past them, so their arcs grow with the square of their
/// number: a graph of more (256 MB) is refused like one that finds no memory.
constexpr size_t kMaxArcs = size_t{1} << 25;

bool HasPhonemes(const CTxMarker& marker) {
    return marker.group_count > 0 && marker.groups != nullptr;
}

/// Tokens without phonemes stand where the next spoken token begins.
void PlaceSilentMarkers(std::span<CTxMarker> markers) {
    const CTxMarker* next = nullptr;
    for (size_t i = markers.size(); i-- > 0;) {
        CTxMarker& marker = markers[i];
        if (HasPhonemes(marker)) {
            next = &marker;
        } else if (next != nullptr) {
            marker.first_state = next->first_state;
            marker.last_state = next->first_state;
        }
    }
}

} // namespace

void state_graph_builder::AddMarkers(std::span<CTxMarker> markers, bool gapSilence,
                                     std::vector<uint32_t>& startStates,
                                     std::vector<uint32_t>& endStates) {
    const auto spokenFromEnd = std::find_if(markers.rbegin(), markers.rend(), HasPhonemes);
    const CTxMarker* lastSpoken = spokenFromEnd != markers.rend() ? &*spokenFromEnd : nullptr;

    startStates.push_back(0); // the silence before the first token
    bool isFirst = true;
    for (CTxMarker& marker : markers) {
        if (HasPhonemes(marker) && gapSilence) {
            AddPhoneStates(kSilence, false);
        }
        marker.first_state = Position();
        AddMarkerStates(marker, isFirst ? &startStates : nullptr,
                        &marker == lastSpoken ? &endStates : nullptr);
        marker.last_state = Position();
        isFirst = isFirst && !HasPhonemes(marker);
    }
    AddPhoneStates(kSilence, false);
    PlaceSilentMarkers(markers);
}

void state_graph_builder::AddMarkerStates(const CTxMarker& marker, std::vector<uint32_t>* starts,
                                          std::vector<uint32_t>* ends) {
    if (!HasPhonemes(marker)) {
        return;
    }
    const bool mandatory = (marker.flags & kPauseTokenFlag) != 0;
    for (int32_t position = 0; position < marker.group_count; ++position) {
        const PhonemeGroup& group = marker.groups[position];
        std::vector<uint32_t>* groupStarts = position == 0 ? starts : nullptr;
        std::vector<uint32_t>* groupEnds = position + 1 == marker.group_count ? ends : nullptr;
        if (group.alternatives == nullptr || group.alternative_count <= 0) {
            continue;
        }
        if (group.alternative_count == 1) {
            AddSpelling(group.alternatives[0], mandatory, groupStarts, groupEnds);
            continue;
        }
        // The branches leave from the same exits and meet at the next phone; they share nothing.
        const std::vector<phone_exit> entry = exits;
        std::vector<phone_exit> joined;
        for (int32_t i = 0; i < group.alternative_count; ++i) {
            if (group.alternatives[i] == nullptr) {
                continue;
            }
            exits = entry;
            AddSpelling(group.alternatives[i], mandatory, groupStarts, groupEnds);
            const size_t room = kMaxExits - joined.size();
            joined.insert(joined.end(), exits.begin(),
                          exits.begin() + static_cast<ptrdiff_t>(std::min(room, exits.size())));
        }
        exits = std::move(joined);
    }
}

void state_graph_builder::AddSpelling(const char* phonemes, bool mandatory,
                                      std::vector<uint32_t>* starts, std::vector<uint32_t>* ends) {
    if (phonemes == nullptr) {
        return;
    }
    if (starts != nullptr) {
        starts->push_back(StateCount());
    }
    // Kept: a phoneme that the model does not know is spoken as silence, so that one odd
    // transcription does not cost the whole text.
    std::vector<uint16_t> phones;
    (void)model.LabelsToIndices(phonemes, phones);
    for (const uint16_t phone : phones) {
        AddPhoneStates(phone, mandatory);
    }
    if (ends != nullptr && !states.empty()) {
        ends->push_back(StateCount() - 1);
    }
}

void state_graph_builder::AddPhoneStates(uint16_t phoneIndex, bool mandatory) {
    const auto phone = static_cast<uint8_t>(phoneIndex);
    const std::vector<CAccousticHMMState>& rows = model.models[phone].states;
    const size_t last = rows.size() - 1;

    AddEntryState(phone, rows[0].transitions[0]);
    for (int32_t state = 1; state < model.numStates; ++state) {
        AddInnerState(phone, state);
    }
    if (phone != kSilence || mandatory) {
        exits.clear();
    }
    if (exits.size() < kMaxExits) {
        exits.push_back({StateCount() - 1, 1.0f - rows[last].transitions[last]});
    }
}

void state_graph_builder::AddEntryState(uint8_t phone, float selfLoop) {
    const uint32_t base = StateCount();
    const auto taken = static_cast<int32_t>(exits.size());
    state_arc* arcs = NewState(phone, 0, taken + 1).Arcs();
    arcs[0] = {base, selfLoop};
    for (int32_t i = 0; i < taken; ++i) {
        const phone_exit& from = exits[static_cast<size_t>(i)];
        arcs[i + 1] = {from.state, from.probability / static_cast<float>(taken)};
    }
}

void state_graph_builder::AddInnerState(uint8_t phone, int32_t state) {
    const std::vector<CAccousticHMMState>& rows = model.models[phone].states;
    const uint32_t base = StateCount() - static_cast<uint32_t>(state);
    const int32_t reach = model.hasLongTransitions != 0 ? model.numStates : 1;
    const int32_t lowest = std::max(state - reach, 0);

    const auto probability = [&](int32_t from) {
        return rows[static_cast<size_t>(from)].transitions[static_cast<size_t>(state)];
    };
    int32_t count = 0;
    for (int32_t from = lowest; from <= state; ++from) {
        count += probability(from) != 0.0f ? 1 : 0;
    }
    state_arc* arc = NewState(phone, state, count).Arcs();
    for (int32_t from = lowest; from <= state; ++from) {
        if (probability(from) != 0.0f) {
            *arc++ = {base + static_cast<uint32_t>(from), probability(from)};
        }
    }
}

state_rec& state_graph_builder::NewState(uint8_t phone, int32_t state, int32_t arcs) {
    numArcs += static_cast<size_t>(arcs);
    void* memory = numArcs <= kMaxArcs ? pool.Alloc(state_rec::SizeFor(arcs)) : nullptr;
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    auto* record =
        new (memory) state_rec{static_cast<uint16_t>(arcs), phone, static_cast<uint8_t>(state)};
    std::uninitialized_default_construct_n(record->Arcs(), arcs);
    states.push_back(record);
    return *record;
}

uint32_t state_graph_builder::Position() const {
    return StateCount() / static_cast<uint32_t>(model.numStates);
}

state_rec** state_graph_builder::CopyGraph() {
    // The pool packs records to 4 bytes; pointers want more.
    const size_t bytes = states.size() * sizeof(state_rec*);
    size_t room = bytes + alignof(state_rec*);
    void* memory = room <= INT32_MAX ? pool.Alloc(static_cast<int32_t>(room)) : nullptr;
    if (memory == nullptr || std::align(alignof(state_rec*), bytes, memory, room) == nullptr) {
        throw std::bad_alloc();
    }
    std::memcpy(memory, states.data(), bytes);
    return static_cast<state_rec**>(memory);
}

} // namespace tessarin
