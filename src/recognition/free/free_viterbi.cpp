#include "recognition/free/free_viterbi.h"

#include <vector>

#include "base/guarded.h"
#include "model/accoustic_hmm.h"
#include "recognition/free/free_search.h"
#include "recognition/graph/phone_loop.h"

namespace tessarin {
namespace {

/// One run, with back-pointers of the smallest type that holds a state.
template <class Cell> struct free_search : phone_loop<Cell> {
    free_search(const CAccousticHMM& acousticModel, int32_t observations)
        : phone_loop<Cell>(acousticModel, AllTransitions(acousticModel)),
          rowLength(static_cast<uint32_t>(acousticModel.GetTotalStates())),
          cells(static_cast<size_t>(observations) * rowLength) {}

    Cell* Row(int32_t t) { return cells.data() + static_cast<size_t>(t) * rowLength; }

    void Advance(const float* x, int32_t t) { phone_loop<Cell>::Advance(x, Row(t)); }

    error_code TraceBack(TArray<uint32_t>& path) {
        double bestScore = 0.0;
        uint32_t best = 0;
        const std::vector<double>& scores = this->GetScores();
        for (uint32_t s = 0; s < rowLength; ++s) {
            if (scores[s] > bestScore) {
                bestScore = scores[s];
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

    const uint32_t rowLength;
    std::vector<Cell> cells;
};

} // namespace

error_code FreeViterbi(const CAccousticHMM& model, IObservationStream& stream,
                       ProgressSink* progress, TArray<uint32_t>& path, TArray<float>& energies) {
    return Guarded([&]() -> error_code {
        observation_source source(stream, model.descriptor.numFeatures);
        const error_code code = PrepareFreeSearch(model, source, path, energies);
        if (code != kNoError) {
            return code;
        }
        const auto run = [&](auto search) { return RunFreeSearch(search, source, progress, path); };
        return model.GetTotalStates() <= 256 ? run(free_search<uint8_t>(model, path.GetSize()))
                                             : run(free_search<uint16_t>(model, path.GetSize()));
    });
}

} // namespace tessarin
