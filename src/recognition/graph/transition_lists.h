#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tessarin {

/// The possible transitions into each state of a model, in the order of the states that they come
/// from. Most transitions are impossible, so a search that walks these lists has the results, ties
/// included, of one that tries all pairs of states.
class transition_lists {
public:
    struct source {
        uint32_t state;
        float probability;
    };

    transition_lists() = default;

    /// `probability(from, to)` is that of a step between two of `numStates` states, `impossible`
    /// where there is none.
    template <class Probability>
    transition_lists(uint32_t numStates, Probability&& probability, float impossible = 0.0f) {
        begins.reserve(size_t{numStates} + 1);
        for (uint32_t to = 0; to < numStates; ++to) {
            for (uint32_t from = 0; from < numStates; ++from) {
                const float value = probability(from, to);
                if (value != impossible) {
                    Add({from, value});
                }
            }
            FinishState();
        }
    }

    /// For lists in another order: appends a transition into the next state that is to be finished.
    void Add(const source& step) { sources.push_back(step); }
    void FinishState() { begins.push_back(sources.size()); }

    std::span<const source> Into(uint32_t state) const {
        return {sources.data() + begins[state], begins[state + 1] - begins[state]};
    }

private:
    std::vector<size_t> begins = {0};
    std::vector<source> sources;
};

} // namespace tessarin
