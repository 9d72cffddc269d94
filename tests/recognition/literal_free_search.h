#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/accoustic_hmm.h"

namespace tessarin::test {

/// The plain search without shortcuts: every pair of states at every observation.
inline std::vector<uint32_t> LiteralFreePath(const CAccousticHMM& model,
                                             const std::vector<std::vector<float>>& observations) {
    const auto states = static_cast<size_t>(model.GetTotalStates());
    const size_t frames = observations.size();
    std::vector<double> previous(states);
    std::vector<std::vector<uint32_t>> table(frames, std::vector<uint32_t>(states));
    for (size_t s = 0; s < states; s += 3) {
        previous[s] =
            model.GetStateProbability(observations[0].data(), int(s)) * (1.0 / model.numModels);
    }
    for (size_t t = 1; t < frames; ++t) {
        std::vector<double> current(states);
        double largest = 0.0;
        for (size_t s = 0; s < states; ++s) {
            double best = 0.0;
            for (size_t r = 0; r < states; ++r) {
                const double value = previous[r] * double{model.transitions[r][s]};
                if (value > best) {
                    best = value;
                    table[t][s] = static_cast<uint32_t>(r);
                }
            }
            if (best != 0.0) {
                current[s] = best * model.GetStateProbability(observations[t].data(), int(s));
                largest = std::max(largest, current[s]);
            }
        }
        for (double& score : current) {
            score = largest != 0.0 ? score / largest : score;
        }
        previous = current;
    }
    std::vector<uint32_t> path(frames);
    const auto best = std::max_element(previous.begin(), previous.end());
    path[frames - 1] = *best > 0.0 ? table[frames - 1][size_t(best - previous.begin())] : 0;
    for (size_t t = frames - 1; t-- > 0;) {
        path[t] = table[t + 1][path[t + 1]];
    }
    return path;
}

struct literal_hypothesis {
    uint32_t phone;
    uint32_t state;
    double score;
    int parent;
    int ended;
    int frames;
};

/// The language search without shortcuts: every hypothesis against every state. Empty when the
/// search ends without a hypothesis.
inline std::vector<uint32_t>
LiteralLanguagePath(const CAccousticHMM& model,
                    const std::vector<std::vector<float>>& observations) {
    const auto states = static_cast<uint32_t>(model.GetTotalStates());
    const size_t frames = observations.size();
    std::vector<literal_hypothesis> all;
    for (uint32_t p = 0; p < static_cast<uint32_t>(model.numModels); ++p) {
        all.push_back(
            {p, 0,
             model.GetStateProbability(observations[0].data(), int(p)) * (1.0 / model.numModels),
             -1, -1, 1});
    }
    size_t begin = 0;
    size_t end = all.size();
    for (size_t t = 1; t < frames; ++t) {
        double largest = 0.0;
        for (uint32_t s = 0; s < states; ++s) {
            const uint32_t f = s / 3;
            const uint32_t q = s % 3;
            double best = 0.0;
            int bestIndex = -1;
            for (size_t h = begin; h < end; ++h) {
                const uint32_t i = all[h].phone * 3 + all[h].state;
                const float value = q == 0 && f != all[h].phone && all[h].state == 2
                                        ? 1.0f - model.transitions[i][i]
                                        : model.transitions[i][s];
                if (value != 0.0f && all[h].score * double{value} > best) {
                    best = all[h].score * double{value};
                    bestIndex = int(h);
                }
            }
            if (bestIndex < 0) {
                continue;
            }
            const literal_hypothesis from = all[size_t(bestIndex)];
            const uint32_t g = from.phone;
            best *= model.GetStateProbability(observations[t].data(), int(s));
            if (q == 0 && from.state != 0 && g != f) {
                const bool hasEnded = from.ended >= 0 && size_t(from.ended) < all.size();
                const uint32_t before = hasEnded ? all[size_t(from.ended)].phone : 0;
                double factor = 0.0;
                if (model.trigramVersion) {
                    factor = double{model.bigrams[g][f]} * 1e-6;
                    if (hasEnded) {
                        factor = std::max(0.0, double{model.trigrams[before][g][f]});
                    }
                } else {
                    factor = model.unigrams[f] * 1e-7 + model.bigrams[g][f] * 0.99;
                    if (hasEnded && model.trigrams[before][g][f] < 0.0f) {
                        factor = 0.0;
                    }
                }
                best *= factor;
            }
            best *= model.GetPhoneDurationFactor(int(g), int(f), from.frames);
            if (best > 0.0) {
                largest = std::max(largest, best);
                all.push_back({f, q, best, bestIndex, g == f ? from.ended : bestIndex,
                               g == f ? from.frames + 1 : 1});
            }
        }
        begin = end;
        end = all.size();
        for (size_t h = begin; h < end; ++h) {
            all[h].score /= largest;
        }
    }
    std::vector<uint32_t> path(frames);
    double bestScore = 0.0;
    int at = -1;
    for (size_t h = begin; h < end; ++h) {
        if (all[h].score > bestScore) {
            bestScore = all[h].score;
            at = int(h);
        }
    }
    if (at < 0) {
        return {};
    }
    const auto stateOf = [&](int h) { return all[size_t(h)].phone * 3 + all[size_t(h)].state; };
    path[frames - 1] = stateOf(at);
    for (size_t t = frames - 1; t-- > 0;) {
        path[t] = stateOf(at);
        at = all[size_t(at)].parent;
    }
    return path;
}

} // namespace tessarin::test
