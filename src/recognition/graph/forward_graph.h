#pragma once

#include <cstdint>
#include <vector>

namespace tessarin {

class log_state_graph;
class quib_allocator;

/// A way out of a state: where it leads, and the logarithm of its probability.
struct forward_edge {
    uint32_t acousticState; ///< of the target
    uint32_t state;         ///< the target
    float logProbability;
};

/// A state, followed in memory by its ways out, in the order of the states they lead to.
struct alignas(4) forward_rec {
    uint8_t acousticState; ///< the model's global state: phone * 3 + state
    uint32_t edges;        ///< number of ways out

    forward_edge* Edges() { return reinterpret_cast<forward_edge*>(this + 1); }
    const forward_edge* Edges() const { return reinterpret_cast<const forward_edge*>(this + 1); }
};
static_assert(sizeof(forward_rec) == 8 && sizeof(forward_edge) == 12);

/// What fits in the 8 bits of `acousticState`.
inline constexpr int32_t kMaxForwardPhones = 85;
inline constexpr int32_t kForwardPhoneStates = 3;

/// A search graph in logarithms the other way round: each state knows where it leads.
class forward_graph {
public:
    /// Turns `graph` round, of a model with at most kMaxForwardPhones phonemes of
    /// kForwardPhoneStates states. The records come from `pool` and live as long as it. Throws
    /// std::bad_alloc.
    static forward_graph FromLogGraph(const log_state_graph& graph, quib_allocator& pool);

    const forward_rec& operator[](uint32_t state) const { return *states[state]; }
    uint32_t GetNumStates() const { return static_cast<uint32_t>(states.size()); }

private:
    std::vector<const forward_rec*> states;
};

} // namespace tessarin
