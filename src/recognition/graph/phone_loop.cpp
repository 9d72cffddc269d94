#include "recognition/graph/phone_loop.h"

namespace tessarin {

transition_lists AllTransitions(const CAccousticHMM& model) {
    return {static_cast<uint32_t>(model.GetTotalStates()),
            [&](uint32_t from, uint32_t to) { return model.transitions[from][to]; }};
}

transition_lists StepTransitions(const CAccousticHMM& model) {
    transition_lists steps;
    const auto numStates = static_cast<uint32_t>(model.GetTotalStates());
    const auto statesPerPhone = static_cast<uint32_t>(model.numStates);
    const auto add = [&](uint32_t from, uint32_t to) {
        if (model.transitions[from][to] > 0.0f) {
            steps.Add({from, model.transitions[from][to]});
        }
    };
    for (uint32_t to = 0; to < numStates; ++to) {
        add(to, to);
        if (to > 0) {
            add(to - 1, to);
        }
        if (to % statesPerPhone == 0) {
            for (uint32_t from = statesPerPhone - 1; from < numStates; from += statesPerPhone) {
                add(from, to);
            }
        }
        steps.FinishState();
    }
    return steps;
}

} // namespace tessarin
