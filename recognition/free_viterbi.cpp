#include "recognition/free_viterbi.h"

#include "frame/guarded.h"
#include "model/accoustic_hmm.h"
#include "recognition/transition_lists.h"
#include "tessarin/observation_stream.h"
#include "tessarin/progress_sink.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tessarin {
namespace {

constexpr uint32_t kProgressInterval = 100;
constexpr int32_t kMaxStates = 65535;

/// One run, with back-pointers of the smallest type that holds a state.
template <class Cell> struct free_search {
    free_search(const CAccousticHMM& acousticModel, uint32_t observations)
        : model(acousticModel), numStates(static_cast<uint32_t>(acousticModel.GetTotalStates())),
          transitions(numStates,
                      [&](uint32_t from, uint32_t to) { return model.transitions[from][to]; }),
          features(static_cast<size_t>(acousticModel.descriptor.numFeatures) + 3),
          previous(numStates), current(numStates), cells(size_t{observations} * numStates) {}

    Cell* Row(uint32_t t) { return cells.data() + size_t{t} * numStates; }

    void Seed() {
        for (uint32_t s = 0; s < numStates; s += static_cast<uint32_t>(model.numStates)) {
            previous[s] = model.GetStateProbability(features.data(), static_cast<int32_t>(s)) *
                          (1.0 / model.numModels);
        }
    }

    void Advance(uint32_t t) {
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

    void TraceBack(TArray<uint32_t>& path) {
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
        path[last] = bestScore > 0.0 ? Row(static_cast<uint32_t>(last))[best] : 0;
        for (int32_t t = last - 1; t >= 0; --t) {
            path[t] = Row(static_cast<uint32_t>(t) + 1)[path[t + 1]];
        }
    }

    const CAccousticHMM& model;
    const uint32_t numStates;
    const transition_lists transitions;
    std::vector<float> features;
    std::vector<double> previous;
    std::vector<double> current;
    std::vector<Cell> cells;
};

template <class Cell>
error_code Search(const CAccousticHMM& model, IObservationStream& stream, ProgressSink* progress,
                  TArray<uint32_t>& path, TArray<float>& energies) {
    const auto frames = static_cast<uint32_t>(path.GetSize());
    free_search<Cell> search(model, frames);
    for (uint32_t t = 0; t < frames; ++t) {
        const error_code code =
            stream.GetObservation(search.features.data(), &energies[static_cast<int32_t>(t)]);
        if (code != kNoError) {
            return code;
        }
        if (t == 0) {
            search.Seed();
            continue;
        }
        search.Advance(t);
        if ((t + 1) % kProgressInterval == 0 && progress != nullptr &&
            progress->OnProgress(t + 1, frames - 1)) {
            return kUserCancelled;
        }
    }
    search.TraceBack(path);
    return kNoError;
}

} // namespace

error_code FreeViterbi(const CAccousticHMM& model, IObservationStream& stream,
                       ProgressSink* progress, TArray<uint32_t>& path, TArray<float>& energies) {
    return Guarded([&]() -> error_code {
        const int32_t states = model.GetTotalStates();
        if (states > kMaxStates) {
            return kOutOfRange;
        }
        const uint32_t frames = stream.GetNumObservations();
        if (frames > INT32_MAX || path.SetSize(static_cast<int32_t>(frames), 0) == 0) {
            return kOutOfMemory;
        }
        if (energies.GetSize() < path.GetSize() && energies.SetSize(path.GetSize(), 0) == 0) {
            return kOutOfMemory;
        }
        if (frames == 0) {
            return kNoError;
        }
        return states <= 256 ? Search<uint8_t>(model, stream, progress, path, energies)
                             : Search<uint16_t>(model, stream, progress, path, energies);
    });
}

} // namespace tessarin
