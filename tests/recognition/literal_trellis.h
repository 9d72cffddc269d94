#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "literal_viterbi.h"
#include "recognition/graph/log_state_graph.h"

namespace tessarin::test {

/// The search in logarithms with a list of the best hypotheses, written down without any shortcut:
/// every array in full, every map kept. `kept` is at least 1.
inline literal_result LiteralTrellis(uint32_t beamWidth, uint32_t kept, double logBeam,
                                     const CAccousticHMM& model, const log_state_graph& graph,
                                     const std::vector<uint32_t>& startStates,
                                     IObservationStream& stream) {
    constexpr double kNone = -1e10;
    struct entry {
        int64_t n;
        int64_t from;
        double score;
    };
    literal_result result;
    const auto state = [&](int64_t n) -> const state_rec& {
        return graph[static_cast<uint32_t>(n)];
    };
    const int64_t states = graph.GetNumStates();
    const int64_t width = std::min<int64_t>(beamWidth, states);
    const int64_t half = width / 2;
    int64_t frames = stream.GetNumObservations();
    std::vector<float> features(static_cast<size_t>(model.descriptor.numFeatures) + 3);
    float energy = 0.0f;
    std::vector<double> previous(static_cast<size_t>(states), kNone);
    std::vector<int32_t> selfLoops(static_cast<size_t>(states));
    std::vector<int64_t> windowStart(static_cast<size_t>(frames));
    std::vector<std::vector<entry>> pushed;
    (void)stream.GetObservation(features.data(), &energy);
    for (const uint32_t n : startStates) {
        previous[n] =
            std::log(model.GetStateProbability(features.data(), graph[n].phone * model.numStates));
    }
    int64_t best = 0;
    int64_t bound = states;
    for (int64_t t = 1; t < frames; ++t) {
        (void)stream.GetObservation(features.data(), &energy);
        int64_t start = std::max<int64_t>(best - half, 0);
        int64_t end = start + width;
        if (end > states) {
            end = states;
            start = states - width;
        }
        std::vector<entry> list;
        entry top{0, 0, kNone}; // the first of equals to come in
        for (int64_t n = start; n < end; ++n) {
            double score = kNone;
            int64_t from = -1;
            for (int i = 0; i < state(n).predecessors; ++i) {
                const state_arc arc = state(n).Arcs()[i];
                if (arc.state >= start && previous[arc.state] > kNone) {
                    const double candidate = previous[arc.state] + double{arc.probability};
                    if (from < 0 || candidate > score) {
                        score = candidate;
                        from = arc.state;
                    }
                }
            }
            if (from < 0) {
                continue;
            }
            const int32_t phone = state(n).phone;
            const double output = model.GetStateProbability(
                features.data(), static_cast<int32_t>(phone * model.numStates + state(n).state));
            score = output == 0.0 ? kNone : score + std::log(output);
            if (from == n) {
                ++selfLoops[n];
                const double factor = model.GetPhoneDurationFactor(phone, phone, selfLoops[n]);
                score = factor == 0.0 ? kNone : factor != 1.0 ? score + std::log(factor) : score;
            } else {
                selfLoops[n] = 1;
            }
            if (!(score > kNone)) {
                continue;
            }
            const entry arrived{n, from, score};
            if (list.size() < kept) {
                list.push_back(arrived);
            } else if (const auto worst = std::ranges::min_element(list, {}, &entry::score);
                       score > worst->score) {
                *worst = arrived;
            } else {
                continue;
            }
            top = score > top.score ? arrived : top;
        }
        if (list.empty()) {
            frames = t - 1;
            bound = best;
            result.code = kRecognitionFailed;
            break;
        }
        std::erase_if(list, [&](const entry& each) { return each.score < top.score + logBeam; });
        std::ranges::fill(previous, kNone);
        for (const entry& each : list) {
            previous[each.n] = each.score;
        }
        pushed.push_back(list);
        windowStart[t] = start;
        best = top.n;
    }
    if (pushed.empty()) {
        result.code = kBrokenPath;
        return result;
    }
    if (bound == 0 || frames == 0) {
        result.code = kRecognitionFailed;
        return result;
    }
    std::vector<int64_t> map(static_cast<size_t>(states));
    const auto read = [&](int64_t frame) {
        for (const entry& each : pushed[frame]) {
            map[each.n - windowStart[frame + 1]] = each.from;
        }
    };
    const auto lookUp = [&](int64_t t, int64_t n) {
        return map[std::clamp<int64_t>(n - windowStart[t], 0, width - 1)];
    };
    auto row = static_cast<int64_t>(pushed.size()) - 1;
    read(row);
    const int64_t last = frames - 1;
    int64_t e = bound - 1;
    if (previous[e] == kNone) {
        double bestScore = kNone;
        for (int64_t n = 0; n < bound; ++n) {
            if (previous[n] > bestScore) {
                bestScore = previous[n];
                e = lookUp(last, n);
            }
        }
        result.code = kRecognitionFailed;
    }
    if (state(e).phone == 0) {
        const int64_t q = e / model.numStates * model.numStates - 1;
        if (q >= 0 && previous[q] > previous[e]) {
            e = q;
        }
    }
    result.score = std::log(static_cast<double>(frames)) + previous[e];
    if (e < windowStart[last] || e - windowStart[last] >= width) {
        e = best;
    }
    result.path.resize(static_cast<size_t>(frames));
    result.path[last] = static_cast<uint32_t>(e);
    for (int64_t t = last - 1; t >= 0; --t) {
        result.path[t] = static_cast<uint32_t>(lookUp(t + 1, result.path[t + 1]));
        if (row > 0) {
            read(--row);
        }
    }
    return result;
}

} // namespace tessarin::test
