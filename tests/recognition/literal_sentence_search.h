#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "model/accoustic_hmm.h"
#include "recognition/graph/log_state_graph.h"
#include "recognition/sentences/word_spans.h"
#include "tessarin/observation_stream.h"

namespace tessarin::test {

/// A place at which a sentence may have been said.
struct literal_place {
    size_t span;
    uint32_t start;
    uint32_t end;
    double score;
};

/// The best chain of places, a sentence after the other, with every place tried after every one of
/// the sentence before.
inline std::vector<literal_place>
LiteralChain(const std::vector<std::vector<literal_place>>& places) {
    struct entry {
        const literal_place* place;
        int earlier;
        double total;
    };
    std::vector<entry> entries;
    std::vector<int> before;
    for (size_t i = 0; i < places.size(); ++i) {
        std::vector<int> column;
        for (const literal_place& each : places[i]) {
            entry added{&each, -1, i == 0 ? each.score : -1e300};
            for (const int e : before) {
                const entry& earlier = entries[static_cast<size_t>(e)];
                if (each.start > earlier.place->end + 1 &&
                    earlier.total + each.score > added.total) {
                    added.total = earlier.total + each.score;
                    added.earlier = e;
                }
            }
            if (i == 0 || added.earlier >= 0) {
                column.push_back(static_cast<int>(entries.size()));
                entries.push_back(added);
            }
        }
        before = i > 0 && column.empty() ? before : column;
    }
    double best = -1e300;
    int at = -1;
    for (const int e : before) {
        if (entries[static_cast<size_t>(e)].total > best) {
            best = entries[static_cast<size_t>(e)].total;
            at = e;
        }
    }
    std::vector<literal_place> chain;
    for (; at >= 0; at = entries[static_cast<size_t>(at)].earlier) {
        chain.insert(chain.begin(), *entries[static_cast<size_t>(at)].place);
    }
    return chain;
}

/// The search for sentences, written down without lists, shortcuts or classes: at each observation
/// every state of the graph is tried with every state before it. What it finds is what a search
/// finds whose beam has room for all states, as long as no two scores are equal.
class literal_sentence_search {
public:
    literal_sentence_search(const CAccousticHMM& acousticModel, const log_state_graph& searchGraph,
                            const std::vector<word_span>& sentences, IObservationStream& stream)
        : model(acousticModel), graph(searchGraph), spans(sentences), places(spans.size()) {
        for (uint32_t t = 0; t < stream.GetNumObservations(); ++t) {
            std::vector<float> x(static_cast<size_t>(model.descriptor.numFeatures) + 3);
            float energy = 0.0f;
            static_cast<void>(stream.GetObservation(x.data(), &energy));
            std::vector<double> out;
            for (int32_t s = 0; s < model.GetTotalStates(); ++s) {
                out.push_back(std::log(model.GetStateProbability(x.data(), s)));
            }
            std::vector<double> cache(out.size()); // 0: not asked for yet
            AdvanceLoops(t, out, cache);
            t == 0 ? Seed(cache) : Advance(t, cache);
        }
    }

    const std::vector<std::vector<literal_place>>& Places() const { return places; }

private:
    static constexpr double kNone = -1e10;
    struct token {
        double score = kNone;
        int64_t span = -1;
        uint32_t entered = 0;
        double entryScore = 0.0;
    };

    void AdvanceLoops(uint32_t t, const std::vector<double>& out, std::vector<double>& cache) {
        std::vector<size_t> all;
        for (size_t s = 0; s < out.size(); ++s) {
            all.push_back(s);
        }
        std::vector<uint16_t> phonemes;
        static_cast<void>(model.LabelsToIndices("THtfht", phonemes));
        std::vector<size_t> noise;
        for (const uint16_t phoneme : phonemes) {
            noise.insert(noise.end(), {phoneme, phoneme + 1u, phoneme + 2u});
        }
        AdvanceLoop(t, all, out, cache, freeScores, freeBest);
        AdvanceLoop(t, noise, out, cache, noiseScores, noiseBest);
    }

    void AdvanceLoop(uint32_t t, const std::vector<size_t>& states, const std::vector<double>& out,
                     std::vector<double>& cache, std::vector<double>& scores,
                     std::vector<double>& best) const {
        std::vector<double> next(states.size(), kNone);
        double highest = kNone;
        for (size_t i = 0; i < states.size(); ++i) {
            if (t == 0 && i % 3 == 0) {
                next[i] = cache[states[i]] = out[states[i]];
            }
            for (size_t j = 0; t > 0 && j < states.size(); ++j) {
                const float step = logTransitions[states[j]][states[i]];
                if (step != -1e10f && scores[j] != kNone) {
                    next[i] = std::max(next[i], scores[j] + double{step});
                }
            }
            if (t > 0 && next[i] != kNone) {
                if (cache[i] != 0.0) { // the place in the list, not the state
                    next[i] += cache[i];
                } else {
                    next[i] += cache[states[i]] = out[states[i]];
                }
            }
            highest = std::max(highest, next[i]);
        }
        scores = next;
        best.push_back(highest);
    }

    void Seed(const std::vector<double>& cache) {
        tokens.resize(graph.GetNumStates());
        tokens[0].score = cache[graph[0].phone * 3u];
        tokens[0].span = SpanEnteredAt(0);
    }

    void Advance(uint32_t t, const std::vector<double>& cache) {
        std::vector<token> next(tokens.size());
        for (uint32_t n = 0; n < next.size(); ++n) {
            const state_rec& record = graph[n];
            for (uint16_t i = 0; i < record.predecessors; ++i) {
                const state_arc& arc = record.Arcs()[i];
                const token& from = tokens[arc.state];
                const double score = from.score + double{arc.probability};
                if (from.score != kNone && score > next[n].score) {
                    next[n] = PathInto(n, from, t);
                    next[n].score = score;
                }
            }
            if (next[n].score == kNone) {
                continue;
            }
            if (next[n].span >= 0 && IsExit(n)) {
                RecordEnd(next[n], t);
            }
            next[n].score += cache[record.phone * 3u + record.state];
        }
        tokens = next;
    }

    token PathInto(uint32_t n, const token& from, uint32_t t) const {
        if (from.span >= 0) {
            const word_span& span = spans[static_cast<size_t>(from.span)];
            if (n >= span.firstState && n <= span.lastState) {
                return from;
            }
        }
        const int64_t entered = SpanEnteredAt(n);
        return entered >= 0 ? token{kNone, entered, t, from.score} : token{};
    }

    int64_t SpanEnteredAt(uint32_t n) const {
        for (size_t s = spans.size(); s-- > 0;) {
            if (spans[s].IsEntry(n)) {
                return static_cast<int64_t>(s);
            }
        }
        return -1;
    }

    bool IsExit(uint32_t n) const {
        for (const word_span& span : spans) {
            if (span.IsExit(n)) {
                return true;
            }
        }
        return false;
    }

    void RecordEnd(const token& path, uint32_t t) {
        const auto s = static_cast<size_t>(path.span);
        const double n = t - path.entered;
        const double free = freeBest[t] - freeBest[path.entered];
        const double noise = noiseBest[t] - noiseBest[path.entered];
        double total = (path.score - path.entryScore - free) / (n * 0.85) - (noise - free) / n;
        if (s > 0) {
            double best = kNone;
            for (const literal_place& before : places[s - 1]) {
                best = before.end <= path.entered ? std::max(best, before.score) : best;
            }
            if (best == kNone) {
                return;
            }
            total += best;
        }
        double highest = kNone;
        for (const literal_place& before : places[s]) {
            highest = std::max(highest, before.score);
        }
        if (n > 0 && (highest == kNone || total > highest - double{1.45f})) {
            places[s].push_back({s, path.entered, t, total});
        }
    }

    const CAccousticHMM& model;
    const float_matrix logTransitions = model.CalcLogTransitions();
    const log_state_graph& graph;
    const std::vector<word_span>& spans;
    std::vector<token> tokens;
    std::vector<double> freeScores;
    std::vector<double> noiseScores;
    std::vector<double> freeBest;
    std::vector<double> noiseBest;
    std::vector<std::vector<literal_place>> places;
};

} // namespace tessarin::test
