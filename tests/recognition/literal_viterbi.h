#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "model/accoustic_hmm.h"
#include "recognition/graph/state_rec.h"
#include "tessarin/observation_stream.h"
#include "tessarin/progress_sink.h"

namespace tessarin::test {

struct literal_result {
    error_code code = kNoError;
    std::vector<uint32_t> path;
    double score = 0.0;
};

/// The sliding-window search written down without any shortcut: every array in full, every state of
/// the window visited, back-pointers as state numbers.
inline literal_result LiteralViterbi(uint32_t beam, bool slideOnLoss, const CAccousticHMM& model,
                                     const state_rec* const* graph, uint32_t positions,
                                     const std::vector<uint32_t>& startStates,
                                     IObservationStream& stream, ProgressSink* progress) {
    literal_result result;
    const int64_t numStates = model.numStates;
    int64_t frames = stream.GetNumObservations();
    const int64_t total = frames;
    const int64_t states = positions * numStates;
    const int64_t width = std::clamp<int64_t>(beam, 1, states);
    const int64_t half = width / 2;
    std::vector<float> features(static_cast<size_t>(model.descriptor.numFeatures) + 3);
    std::vector<float> energies(static_cast<size_t>(frames));
    std::vector<std::vector<int64_t>> table(static_cast<size_t>(frames),
                                            std::vector<int64_t>(static_cast<size_t>(width), -1));
    std::vector<int64_t> windowStart(static_cast<size_t>(frames));
    std::vector<double> previous(static_cast<size_t>(states));
    std::vector<double> current(static_cast<size_t>(states));
    std::vector<int32_t> selfLoops(static_cast<size_t>(states));
    std::vector<double> cache(static_cast<size_t>(model.GetTotalStates()));
    const auto entered = [&](int64_t t, int64_t n) {
        const int64_t start = windowStart[t];
        const int64_t from = table[t][std::clamp(n - start, int64_t{0}, width - 1)];
        return from < 0 ? start : from;
    };

    (void)stream.GetObservation(features.data(), energies.data());
    for (const uint32_t n : startStates) {
        previous[n] = model.GetStateProbability(features.data(), graph[n]->phone * model.numStates);
    }
    int64_t best = 0;
    int64_t lastGood = 0;
    int64_t bound = states;
    int rounds = 0;
    int64_t lostWindow = -1;
    for (int64_t t = 1; t < frames; ++t) {
        if (rounds == 0) {
            (void)stream.GetObservation(features.data(), &energies[t]);
            lostWindow = -1;
        }
        std::fill(cache.begin(), cache.end(), 0.0);
        int64_t start = std::max<int64_t>(best - half, 0);
        int64_t end = start + width;
        if (end > states) {
            end = states;
            start = std::max<int64_t>(end - width, 0);
        }
        std::fill(table[t].begin(), table[t].end(), -1);
        double frameBest = 0.0;
        int64_t frameBestState = 0;
        for (int64_t n = start; n < end; ++n) {
            current[n] = 0.0;
            double score = 0.0;
            int64_t from = -1;
            for (int i = 0; i < graph[n]->predecessors; ++i) {
                const state_arc arc = graph[n]->Arcs()[i];
                if (arc.state < start || previous[arc.state] == 0.0) {
                    continue;
                }
                const double candidate = double{arc.probability} * previous[arc.state];
                if (candidate > score) {
                    score = candidate;
                    from = arc.state;
                }
            }
            if (score == 0.0) {
                continue;
            }
            const int32_t phone = graph[n]->phone;
            const auto index = static_cast<int32_t>(phone * numStates + n % numStates);
            if (cache[index] == 0.0) {
                cache[index] = model.GetStateProbability(features.data(), index);
            }
            score *= cache[index];
            if (from == n) {
                ++selfLoops[n];
                score *= model.GetPhoneDurationFactor(phone, phone, selfLoops[n]);
            } else {
                selfLoops[n] = 1;
            }
            current[n] = score;
            table[t][n - start] = from;
            if (score > frameBest) {
                frameBest = score;
                frameBestState = n;
            }
        }
        windowStart[t] = start;
        int64_t index = t;
        if (frameBest > 0.0) {
            for (int64_t i = 0; i < states; ++i) {
                previous[i] = 0.0;
                current[i] = current[i] / frameBest;
            }
            std::swap(previous, current);
            best = lastGood = frameBestState;
            rounds = 0;
        } else {
            ++rounds;
            const bool repeatsItself = lostWindow == start;
            const bool mayCancel = progress != nullptr && (t - 1) % 100 == 0 && rounds < 1000000;
            if (!slideOnLoss || (repeatsItself && !mayCancel)) {
                frames = t - 1;
                bound = lastGood;
                result.code = kRecognitionFailed;
                break;
            }
            lostWindow = start;
            best = end;
            --t;
            index = t;
        }
        if (progress != nullptr && index % 100 == 0 &&
            progress->OnProgress(static_cast<uint32_t>(index), static_cast<uint32_t>(total))) {
            result.code = kUserCancelled;
            return result;
        }
    }
    const int64_t last = frames - 1;
    int64_t e = bound - 1;
    if (e < 0) {
        result.code = kRecognitionFailed;
        return result;
    }
    if (previous[e] == 0.0) {
        double bestScore = 0.0;
        for (int64_t n = windowStart[last]; n < bound; ++n) {
            if (previous[n] >= bestScore) {
                bestScore = previous[n];
                e = std::max(table[last][std::clamp(n - windowStart[last], int64_t{0}, width - 1)],
                             int64_t{0}); // a cleared cell is state 0
            }
        }
        result.code = kRecognitionFailed;
    }
    if (graph[e]->phone == 0) {
        const int64_t q = e / numStates * numStates - 1;
        if (q >= 0 && previous[q] > previous[e]) {
            e = q;
        }
    }
    result.score = previous[e];
    result.path.resize(static_cast<size_t>(frames));
    if (e - windowStart[last] < 0 || e - windowStart[last] >= width) {
        e = lastGood;
    }
    result.path[last] = static_cast<uint32_t>(e);
    for (int64_t t = last - 1; t >= 0; --t) {
        const uint32_t next = result.path[t + 1];
        result.path[t] = std::min(next, static_cast<uint32_t>(entered(t + 1, next)));
    }
    return result;
}

} // namespace tessarin::test
