#pragma once

#include <cstddef>
#include <cstdint>

namespace tessarin {

/// A way into a search state: the state it comes from, and its probability.
struct state_arc {
    uint32_t state;
    float probability;
};
static_assert(sizeof(state_arc) == 8 && alignof(state_arc) == 4);

/// One state of a search graph, followed in memory by the arcs that lead into it. A graph is an
/// array of pointers to such records, indexed by state number; every phone instance owns
/// `numStates` consecutive states, so that state n belongs to position n / numStates. Arcs come
/// from earlier states or from the state itself.
struct alignas(4) state_rec {
    uint16_t predecessors; ///< number of arcs
    uint8_t phone;         ///< index in the model; 0 is silence
    uint8_t state;         ///< inside the phone

    state_arc* Arcs() { return reinterpret_cast<state_arc*>(this + 1); }
    const state_arc* Arcs() const { return reinterpret_cast<const state_arc*>(this + 1); }

    static constexpr int32_t SizeFor(int32_t arcs) {
        return static_cast<int32_t>(sizeof(state_rec)) +
               arcs * static_cast<int32_t>(sizeof(state_arc));
    }
};
static_assert(sizeof(state_rec) == 4 && offsetof(state_rec, phone) == 2);

/// What the 8 bits of `phone` and `state` hold.
inline constexpr int32_t kMaxGraphPhones = 256;
inline constexpr int32_t kMaxGraphPhoneStates = 256;

} // namespace tessarin
