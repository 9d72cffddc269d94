#include "recognition/graph/forward_graph.h"

#include <algorithm>
#include <memory>
#include <new>

#include "base/quib_allocator.h"
#include "recognition/graph/log_state_graph.h"

namespace tessarin {
namespace {

std::vector<uint32_t> CountEdges(const log_state_graph& graph) {
    std::vector<uint32_t> counts(graph.GetNumStates());
    for (uint32_t n = 0; n < graph.GetNumStates(); ++n) {
        for (uint16_t i = 0; i < graph[n].predecessors; ++i) {
            ++counts[graph[n].Arcs()[i].state];
        }
    }
    return counts;
}

uint8_t AcousticState(const state_rec& record) {
    return static_cast<uint8_t>(record.phone * kForwardPhoneStates + record.state);
}

forward_rec* NewRecord(quib_allocator& pool, uint8_t acousticState, uint32_t edges) {
    const uint64_t bytes =
        sizeof(forward_rec) + uint64_t{std::max(edges, 1u)} * sizeof(forward_edge);
    void* memory = bytes <= INT32_MAX ? pool.Alloc(static_cast<int32_t>(bytes)) : nullptr;
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    auto* record = new (memory) forward_rec{acousticState, 0};
    std::uninitialized_value_construct_n(record->Edges(), std::max(edges, 1u));
    return record;
}

} // namespace

forward_graph forward_graph::FromLogGraph(const log_state_graph& graph, quib_allocator& pool) {
    const std::vector<uint32_t> counts = CountEdges(graph);
    std::vector<forward_rec*> records;
    for (uint32_t n = 0; n < graph.GetNumStates(); ++n) {
        records.push_back(NewRecord(pool, AcousticState(graph[n]), counts[n]));
    }
    for (uint32_t n = 0; n < graph.GetNumStates(); ++n) {
        for (uint16_t i = 0; i < graph[n].predecessors; ++i) {
            const state_arc& arc = graph[n].Arcs()[i];
            forward_rec& from = *records[arc.state];
            from.Edges()[from.edges++] = {AcousticState(graph[n]), n, arc.probability};
        }
    }
    forward_graph made;
    made.states.assign(records.begin(), records.end());
    return made;
}

} // namespace tessarin
