#include "recognition/sentences/background_loop.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "model/accoustic_hmm.h"

namespace tessarin {
namespace {

/// What noise in a recording sounds most like.
constexpr const char* kNoisePhonemes = "THtfht";

constexpr uint32_t kStatesTaken = 3;

} // namespace

BackgroundLoop::BackgroundLoop(const CAccousticHMM& acousticModel,
                               const float_matrix& logTransitions, std::vector<uint32_t> loopStates,
                               uint32_t frames)
    : model(acousticModel), states(std::move(loopStates)), stepsInto(states.size()),
      previous(states.size(), kImpossibleLog), current(states.size(), kImpossibleLog),
      bestByFrame(frames, kImpossibleLog) {
    FindSteps(logTransitions);
}

/// Most steps are impossible, so an observation tries these only.
void BackgroundLoop::FindSteps(const float_matrix& logTransitions) {
    for (size_t to = 0; to < states.size(); ++to) {
        for (uint32_t from = 0; from < states.size(); ++from) {
            const float logProbability = logTransitions[states[from]][states[to]];
            if (logProbability != static_cast<float>(kImpossibleLog)) {
                stepsInto[to].push_back({from, logProbability});
            }
        }
    }
}

std::vector<uint32_t> BackgroundLoop::FreeStates(const CAccousticHMM& model) {
    std::vector<uint32_t> all;
    for (int32_t state = 0; state < model.GetTotalStates(); ++state) {
        all.push_back(static_cast<uint32_t>(state));
    }
    return all;
}

/// Kept: the numbers of the phonemes are taken for numbers of states, as they are. What a sentence
/// must reach to be believed was settled with these states.
std::vector<uint32_t> BackgroundLoop::NoiseStates(const CAccousticHMM& model) {
    std::vector<uint16_t> phonemes;
    static_cast<void>(model.LabelsToIndices(kNoisePhonemes, phonemes));
    std::vector<uint32_t> noise;
    for (const uint32_t phoneme : phonemes) {
        for (uint32_t state = phoneme; state < phoneme + kStatesTaken; ++state) {
            if (state < static_cast<uint32_t>(model.GetTotalStates())) {
                noise.push_back(state);
            }
        }
    }
    return noise;
}

void BackgroundLoop::Seed(const float* x, double* cache) {
    for (size_t i = 0; i < states.size(); i += static_cast<size_t>(model.numStates)) {
        previous[i] = model.GetCachedLogProbability(0.0, cache, x, static_cast<int32_t>(states[i]));
        bestByFrame[0] = std::max(bestByFrame[0], previous[i]);
    }
}

void BackgroundLoop::Advance(uint32_t t, const float* x, double* cache) {
    for (uint32_t i = 0; i < states.size(); ++i) {
        current[i] = kImpossibleLog;
        bool found = false;
        const double score = BestSource(i, found);
        if (!found) {
            continue;
        }
        // Kept: the cache is asked at the place in the list and filled at the state, which differ
        // for noise: some of it is scored as other states. The thresholds are set for that.
        const double output =
            cache[i] != 0.0
                ? cache[i]
                : model.GetCachedLogProbability(0.0, cache, x, static_cast<int32_t>(states[i]));
        current[i] = score + output;
        bestByFrame[t] = std::max(bestByFrame[t], current[i]);
    }
    std::swap(previous, current);
}

double BackgroundLoop::BestSource(uint32_t place, bool& found) const {
    double best = -std::numeric_limits<double>::infinity();
    for (const auto& [from, logProbability] : stepsInto[place]) {
        if (previous[from] == kImpossibleLog) {
            continue;
        }
        best = std::max(best, previous[from] + double{logProbability});
        found = true;
    }
    return best;
}

} // namespace tessarin
