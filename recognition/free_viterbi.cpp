#include "recognition/free_viterbi.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "frame/guarded.h"
#include "model/accoustic_hmm.h"
#include "recognition/free_search.h"
#include "recognition/transition_lists.h"

namespace tessarin {
namespace {

/// One run, with back-pointers of the smallest type that holds a state.
template <class Cell> struct free_search {
    free_search(const CAccousticHMM& acousticModel, int32_t observations)
        : model(acousticModel), numStates(static_cast<uint32_t>(acousticModel.GetTotalStates())),
          transitions(numStates,
                      [&](uint32_t from, uint32_t to) { return model.transitions[from][to]; }),
          features(static_cast<size_t>(acousticModel.descriptor.numFeatures) + 3),
          previous(numStates), current(numStates),
          cells(static_cast<size_t>(observations) * numStates) {}

    Cell* Row(int32_t t) { return cells.data() + static_cast<size_t>(t) * numStates; }

    void Seed() {
        for (uint32_t s = 0; s < numStates; s += static_cast<uint32_t>(model.numStates)) {
            previous[s] = model.GetStateProbability(features.data(), static_cast<int32_t>(s)) *
                          (1.0 / model.numModels);
        }
    }

    void Advance(int32_t t) {
        Cell* row = Row(t);
        double largest = 0.0;
        for (uint32_t s = 0; s < numStates; ++s) {
            double best = 0.0;
            uint32_t bestSource = 0;
            for (const auto& [from, probability] : transitions.Into(s)) {
                const double value = double{probability} * previous[from];
                if (value > best) { // the lowest state wins a tie
                    best = value;
                    bestSource = from;
                }
            }
            if (best != 0.0) {
                row[s] = static_cast<Cell>(bestSource);
                best *= model.GetStateProbability(features.data(), static_cast<int32_t>(s));
                largest = std::max(largest, best);
            }
            current[s] = best;
        }
        if (largest != 0.0) {
            for (double& score : current) {
                score /= largest;
            }
        }
        std::swap(previous, current);
    }

    error_code TraceBack(TArray<uint32_t>& path) {
        double bestScore = 0.0;
        uint32_t best = 0;
        for (uint32_t s = 0; s < numStates; ++s) {
            if (previous[s] > bestScore) {
                bestScore = previous[s];
                best = s;
            }
        }
        const int32_t last = path.GetSize() - 1;
        // Kept: the path ends in the predecessor of the best state, not in the best state; the
        // markers that hosts compare with come from it.
        path[last] = bestScore > 0.0 ? Row(last)[best] : 0;
        for (int32_t t = last - 1; t >= 0; --t) {
            path[t] = Row(t + 1)[path[t + 1]];
        }
        return kNoError;
    }

    const CAccousticHMM& model;
    const uint32_t numStates;
    const transition_lists transitions;
    std::vector<float> features;
    std::vector<double> previous;
    std::vector<double> current;
    std::vector<Cell> cells;
};

} // namespace

error_code FreeViterbi(const CAccousticHMM& model, IObservationStream& stream,
                       ProgressSink* progress, TArray<uint32_t>& path, TArray<float>& energies) {
    return Guarded([&]() -> error_code {
        const error_code code = PrepareFreeSearch(model, stream, path, energies);
        if (code != kNoError) {
            return code;
        }
        const auto run = [&](auto search) {
            return RunFreeSearch(search, stream, progress, path, energies);
        };
        return model.GetTotalStates() <= 256 ? run(free_search<uint8_t>(model, path.GetSize()))
                                             : run(free_search<uint16_t>(model, path.GetSize()));
    });
}

} // namespace tessarin
