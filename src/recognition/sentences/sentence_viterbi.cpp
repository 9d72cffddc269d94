#include "recognition/sentences/sentence_viterbi.h"

#include <algorithm>

#include "base/timed_progress.h"
#include "base/trunc_sat.h"
#include "model/accoustic_hmm.h"
#include "recognition/graph/forward_graph.h"
#include "recognition/markers/time_base.h"
#include "recognition/observation_source.h"
#include "recognition/sentences/background_loop.h"
#include "recognition/sentences/top_hypo_list.h"
#include "recognition/sentences/word_hyp_collector.h"
#include "recognition/sentences/word_spans.h"
#include "tessarin/observation_stream.h"
#include "tessarin/progress_sink.h"
#include "tessarin/sync_results.h"

namespace tessarin {
namespace {

constexpr uint32_t kProgressFrames = 100;
constexpr uint32_t kNoSpan = word_path::kNone;

/// One run.
struct sentence_search {
    sentence_search(uint16_t beamWidth, const CAccousticHMM& acousticModel,
                    const forward_graph& searchGraph, const std::vector<word_span>& sentences,
                    observation_source& observations);

    error_code Run(ProgressSink* progress);
    void Seed();
    void Advance(uint32_t t);
    void Expand(uint32_t t);
    void Pass(const pw_hype& from, const forward_edge& edge, uint32_t t);
    word_path PathInto(uint32_t state, const pw_hype& from, uint32_t t) const;
    bool IsEntry(uint32_t state) const;
    bool IsExit(uint32_t state) const;
    void RecordEnd(const pw_hype& hype, uint32_t t);

    const CAccousticHMM& model;
    const forward_graph& graph;
    const std::vector<word_span>& spans;
    observation_source& source;
    const float_matrix logTransitions;
    BackgroundLoop freeLoop;
    BackgroundLoop noiseLoop;
    std::vector<WordHypCollector> collectors;
    std::vector<uint32_t> spanAtEntry; // of each state
    std::vector<uint32_t> spanAtExit;
    std::vector<double> cache;     // logarithmic likelihoods of the model's states, 0: not known
    std::vector<pw_hype> hypes;    // of each state
    std::vector<uint8_t> visited;  // of each state
    std::vector<uint32_t> touched; // states, in the order of their first visit
    TopHypoList list;
};

/// The noise search asks the cache at its own places, which may be more than the model has states.
size_t CacheSize(const CAccousticHMM& model) {
    return std::max(static_cast<size_t>(model.GetTotalStates()),
                    BackgroundLoop::NoiseStates(model).size());
}

sentence_search::sentence_search(uint16_t beamWidth, const CAccousticHMM& acousticModel,
                                 const forward_graph& searchGraph,
                                 const std::vector<word_span>& sentences,
                                 observation_source& observations)
    : model(acousticModel), graph(searchGraph), spans(sentences), source(observations),
      logTransitions(model.CalcLogTransitions()),
      freeLoop(model, logTransitions, BackgroundLoop::FreeStates(model), source.GetCount()),
      noiseLoop(model, logTransitions, BackgroundLoop::NoiseStates(model), source.GetCount()),
      spanAtEntry(size_t{graph.GetNumStates()} + 1, kNoSpan),
      spanAtExit(size_t{graph.GetNumStates()} + 1, kNoSpan), cache(CacheSize(model)),
      hypes(graph.GetNumStates()), visited(graph.GetNumStates()), list(beamWidth) {
    collectors.reserve(spans.size()); // they point to each other
    for (uint32_t i = 0; i < spans.size(); ++i) {
        collectors.emplace_back(i, i > 0 ? &collectors[i - 1] : nullptr);
        spanAtEntry[spans[i].firstState] = i;
        for (const uint32_t state : spans[i].entryStates) {
            spanAtEntry[state] = i;
        }
        for (const uint32_t state : spans[i].exitStates) {
            spanAtExit[state] = i;
        }
        spanAtExit[spans[i].lastState] = i;
    }
}

error_code sentence_search::Run(ProgressSink* progress) {
    const uint32_t frames = source.GetCount();
    timed_progress timed(progress);
    for (uint32_t t = 0; t < frames; ++t) {
        const error_code code = source.Next();
        if (code != kNoError) {
            return code;
        }
        std::fill(cache.begin(), cache.end(), 0.0);
        if (t == 0) {
            Seed();
            continue;
        }
        Advance(t);
        if (timed.Report(t, frames, t % kProgressFrames == 0)) {
            return kUserCancelled;
        }
    }
    return kNoError;
}

void sentence_search::Seed() {
    freeLoop.Seed(source.GetFeatures(), cache.data());
    noiseLoop.Seed(source.GetFeatures(), cache.data());
    const uint8_t acousticState = graph[0].acousticState;
    word_path path;
    if (IsEntry(0)) {
        path = {spanAtEntry[0], 0, 0.0};
    }
    list.Insert({0, acousticState, cache[acousticState], path});
}

void sentence_search::Advance(uint32_t t) {
    std::fill(visited.begin(), visited.end(), uint8_t{0});
    touched.clear();
    freeLoop.Advance(t, source.GetFeatures(), cache.data());
    noiseLoop.Advance(t, source.GetFeatures(), cache.data());
    Expand(t);
    list.Clear();
    for (const uint32_t state : touched) {
        pw_hype& hype = hypes[state];
        if (hype.path.IsInside() && IsExit(state)) {
            RecordEnd(hype, t);
        }
        if (!hype.path.IsInside() && IsEntry(state)) {
            hype.path = {spanAtEntry[state], t, hype.score};
        }
        if (hype.score != kImpossibleLog) {
            // Kept: the background searches alone fill the cache; a state that they do not come to
            // costs nothing here.
            hype.score += cache[hype.acousticState];
            list.Insert(hype);
        }
    }
}

void sentence_search::Expand(uint32_t t) {
    for (const TopHypoList::node* node = list.Highest(); node != nullptr; node = node->down) {
        const forward_rec& record = graph[node->hype.state];
        for (uint32_t i = 0; i < record.edges; ++i) {
            Pass(node->hype, record.Edges()[i], t);
        }
    }
}

/// Kept: no limit of how long a state lasts is looked at here.
void sentence_search::Pass(const pw_hype& from, const forward_edge& edge, uint32_t t) {
    const double score = from.score + double{edge.logProbability};
    pw_hype& hype = hypes[edge.state];
    if (visited[edge.state] == 0) {
        visited[edge.state] = 1;
        touched.push_back(edge.state);
    } else if (!(score > hype.score)) {
        return;
    }
    hype = {edge.state, static_cast<uint8_t>(edge.acousticState), score,
            PathInto(edge.state, from, t)};
}

/// The entry that a path has when it comes from `from` to `state`: the same inside a sentence, a
/// new one where a sentence begins.
word_path sentence_search::PathInto(uint32_t state, const pw_hype& from, uint32_t t) const {
    if (from.path.IsInside()) {
        const word_span& span = spans[from.path.span];
        if (state >= span.firstState && state <= span.lastState) {
            return from.path;
        }
    }
    return IsEntry(state) ? word_path{spanAtEntry[state], t, from.score} : word_path{};
}

bool sentence_search::IsEntry(uint32_t state) const {
    const uint32_t span = spanAtEntry[state];
    return span != kNoSpan && spans[span].IsEntry(state);
}

bool sentence_search::IsExit(uint32_t state) const {
    const uint32_t span = spanAtExit[state];
    return span != kNoSpan && spans[span].IsExit(state);
}

void sentence_search::RecordEnd(const pw_hype& hype, uint32_t t) {
    const word_path& path = hype.path;
    collectors[path.span].Add({.start = path.frame,
                               .end = t,
                               .pathGain = hype.score - path.score,
                               .freeGain = freeLoop.GainBetween(path.frame, t),
                               .noiseGain = noiseLoop.GainBetween(path.frame, t)});
}

/// Kept: the products are in single precision, each truncated by itself.
int32_t TimeMs(uint32_t frame, float periodMs, int32_t startFrame) {
    const int64_t ms = int64_t{TruncSat<int32_t>(static_cast<float>(frame) * periodMs)} +
                       TruncSat<int32_t>(static_cast<float>(startFrame) * periodMs);
    return static_cast<int32_t>(std::min<int64_t>(ms, INT32_MAX));
}

CSyncMarker MakeMarker(const full_word_hypothesis& found, const word_span& span, float periodMs,
                       int32_t startFrame) {
    CSyncMarker marker{};
    marker.type = kWordMarker;
    marker.score = static_cast<float>(found.score);
    marker.start = TimeMs(found.start, periodMs, startFrame);
    marker.end = TimeMs(found.end, periodMs, startFrame);
    marker.text_offset = static_cast<int32_t>(span.first->text_start);
    marker.text_length = static_cast<int32_t>(span.last->text_end - span.first->text_start);
    return marker;
}

} // namespace

bool FitsSentenceSearch(const CAccousticHMM& model) {
    return model.numStates == kForwardPhoneStates && model.numModels <= kMaxForwardPhones;
}

error_code SentenceViterbi(uint16_t beamWidth, const CAccousticHMM& model,
                           const forward_graph& graph, const std::vector<word_span>& spans,
                           IObservationStream& stream, ProgressSink* progress, int32_t startFrame,
                           ISyncResultsCollection& results) {
    if (!FitsSentenceSearch(model)) {
        return kOutOfRange;
    }
    observation_source source(stream, model.descriptor.numFeatures);
    if (const error_code opened = source.Open(nullptr); opened != kNoError) {
        return opened;
    }
    if (source.GetCount() == 0 || graph.GetNumStates() == 0) {
        return kNoError;
    }
    sentence_search search(beamWidth, model, graph, spans, source);
    const error_code searched = search.Run(progress);
    if (searched != kNoError) {
        return searched;
    }
    if (progress != nullptr) {
        progress->SetStatus("Backtracking...");
    }
    std::vector<full_word_hypothesis> chosen;
    const error_code code = ChooseHypotheses(search.collectors, progress, chosen);
    if (code != kNoError) {
        return code;
    }
    const auto periodMs = static_cast<float>(FramePeriodMs(stream));
    for (const full_word_hypothesis& found : chosen) {
        results.add_marker(MakeMarker(found, spans[found.span], periodMs, startFrame));
    }
    return kNoError;
}

} // namespace tessarin
