#include "recognition/trellis/trellis_viterbi.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "base/guarded.h"
#include "base/timed_progress.h"
#include "model/accoustic_hmm.h"
#include "platform/temp_file.h"
#include "recognition/aligner/path_end.h"
#include "recognition/observation_source.h"
#include "recognition/trellis/frame_hypo_list.h"
#include "recognition/trellis/trellis.h"

namespace tessarin {
namespace {

constexpr double kDefaultLogBeam = -10000.0;
constexpr uint32_t kProgressInterval = 100;

/// Logarithms of the output probabilities of one observation, each computed once, when the first
/// state of the graph asks for it.
class log_output_cache {
public:
    log_output_cache(const CAccousticHMM& acousticModel, const observation_source& observations)
        : model(acousticModel), source(observations),
          values(static_cast<size_t>(acousticModel.GetTotalStates())) {}

    void NextObservation() { std::ranges::fill(values, 0.0); }

    /// kImpossibleLog for a probability of 0.
    double Get(int32_t modelState) {
        return model.GetCachedLogProbability(0.0, values.data(), source.GetFeatures(), modelState);
    }

private:
    const CAccousticHMM& model;
    const observation_source& source;
    std::vector<double> values;
};

/// Scores of all states; those outside [first, end) are kImpossibleLog.
struct log_row {
    std::vector<double> scores;
    uint32_t first = 0;
    uint32_t end = 0;

    void Clear() {
        std::fill(scores.begin() + first, scores.begin() + end, kImpossibleLog);
        first = end = 0;
    }
};

/// One run of the search.
struct trellis_search {
    trellis_search(const trellis_viterbi_options& options, const CAccousticHMM& acousticModel,
                   const log_state_graph& stateGraph, observation_source& observations);

    error_code Run(const std::vector<uint32_t>& startStates, ProgressSink* progress);
    error_code ReadObservation();
    void Seed(const std::vector<uint32_t>& startStates);
    void PlaceWindow(uint32_t t);
    void ScoreWindow();
    bool FindPredecessor(uint32_t n, frame_hypo& hypo) const;
    void PayForDuration(frame_hypo& hypo);
    error_code KeepFrame();

    error_code TraceBack(TArray<uint32_t>* path, double* score);
    bool FindEndState(const uint32_t* map, uint32_t& endState);
    uint32_t Predecessor(const uint32_t* map, uint32_t t, uint32_t state) const;

    const CAccousticHMM& model;
    const log_state_graph& graph;
    observation_source& source;
    const uint32_t numStates;
    const uint32_t beam;
    const double logBeam;
    uint32_t frames; // observations of the path; fewer than the stream's after a loss

    log_output_cache output;
    std::vector<int32_t> selfLoops; // how long each state has been stayed in
    std::vector<uint32_t> windowStarts;
    log_row previous;
    log_row current;
    FrameHypoList list;
    trellis store;

    uint32_t best = 0; // the window's centre
    uint32_t windowStart = 0;
    uint32_t windowEnd = 0;
    uint32_t endBound; // the path ends below this state
    error_code code = kNoError;
};

uint32_t WindowWidth(const trellis_viterbi_options& options, uint32_t numStates) {
    return std::clamp<uint32_t>(options.beamWidth, 1, numStates);
}

int32_t Room(const trellis_viterbi_options& options, uint32_t beam) {
    const uint32_t quarter = beam / 2 / 2;
    return static_cast<int32_t>(
        std::max<uint32_t>(options.keptPerFrame != 0 ? options.keptPerFrame : quarter, 1));
}

trellis_search::trellis_search(const trellis_viterbi_options& options,
                               const CAccousticHMM& acousticModel,
                               const log_state_graph& stateGraph, observation_source& observations)
    : model(acousticModel), graph(stateGraph), source(observations),
      numStates(stateGraph.GetNumStates()), beam(WindowWidth(options, numStates)),
      logBeam(options.logBeam == 0.0 ? kDefaultLogBeam : options.logBeam),
      frames(observations.GetCount()), output(acousticModel, observations), selfLoops(numStates),
      windowStarts(frames), list(Room(options, beam)), endBound(numStates) {
    previous.scores.assign(numStates, kImpossibleLog);
    current.scores.assign(numStates, kImpossibleLog);
}

error_code trellis_search::Run(const std::vector<uint32_t>& startStates, ProgressSink* progress) {
    const uint32_t total = frames;
    timed_progress timed(progress);
    if (const error_code readCode = ReadObservation(); readCode != kNoError) {
        return readCode;
    }
    Seed(startStates);
    for (uint32_t t = 1; t < total; ++t) {
        if (const error_code readCode = ReadObservation(); readCode != kNoError) {
            return readCode;
        }
        PlaceWindow(t);
        ScoreWindow();
        if (list.IsEmpty()) {
            // Kept: the last observation that something survived is given up as well.
            frames = t - 1;
            endBound = best;
            code = kRecognitionFailed;
            return kNoError;
        }
        if (const error_code keepCode = KeepFrame(); keepCode != kNoError) {
            return keepCode;
        }
        if (timed.Report(t, total, t % kProgressInterval == 0)) {
            return kUserCancelled;
        }
    }
    return kNoError;
}

error_code trellis_search::ReadObservation() {
    output.NextObservation();
    return source.Next();
}

void trellis_search::Seed(const std::vector<uint32_t>& startStates) {
    for (const uint32_t n : startStates) {
        if (n >= numStates) {
            continue;
        }
        // Kept: a start state scores with its phone's first state, whatever state it is itself.
        previous.scores[n] = std::log(
            model.GetStateProbability(source.GetFeatures(), graph[n].phone * model.numStates));
        previous.first = previous.end == 0 ? n : std::min(previous.first, n);
        previous.end = std::max(previous.end, n + 1);
    }
}

void trellis_search::PlaceWindow(uint32_t t) {
    const uint32_t half = beam / 2;
    windowStart = best > half ? best - half : 0;
    windowEnd = windowStart + beam;
    if (windowEnd > numStates) {
        windowEnd = numStates;
        windowStart = numStates - beam;
    }
    windowStarts[t] = windowStart;
}

void trellis_search::ScoreWindow() {
    list.Clear();
    for (uint32_t n = windowStart; n < windowEnd; ++n) {
        frame_hypo hypo{n, 0, kImpossibleLog};
        if (!FindPredecessor(n, hypo)) {
            continue;
        }
        const double logProbability = output.Get(graph[n].phone * model.numStates + graph[n].state);
        hypo.score =
            logProbability == kImpossibleLog ? kImpossibleLog : hypo.score + logProbability;
        PayForDuration(hypo);
        if (hypo.score > kImpossibleLog) {
            list.Insert(hypo);
        }
    }
}

/// The best of the living predecessors inside the window, the earliest of equals.
bool trellis_search::FindPredecessor(uint32_t n, frame_hypo& hypo) const {
    const state_rec& state = graph[n];
    const state_arc* const arcs = state.Arcs();
    bool isFound = false;
    for (uint16_t i = 0; i < state.predecessors; ++i) {
        const uint32_t from = arcs[i].state;
        if (from < windowStart || !(previous.scores[from] > kImpossibleLog)) {
            continue;
        }
        const double candidate = previous.scores[from] + static_cast<double>(arcs[i].probability);
        if (!isFound || candidate > hypo.score) {
            isFound = true;
            hypo.score = candidate;
            hypo.predecessor = from;
        }
    }
    return isFound;
}

void trellis_search::PayForDuration(frame_hypo& hypo) {
    int32_t& stayed = selfLoops[hypo.state];
    if (hypo.predecessor != hypo.state) {
        stayed = 1;
        return;
    }
    ++stayed;
    const int32_t phone = graph[hypo.state].phone;
    const double factor = model.GetPhoneDurationFactor(phone, phone, stayed);
    if (factor == 0.0) {
        hypo.score = kImpossibleLog;
    } else if (factor != 1.0) {
        hypo.score += std::log(factor);
    }
}

/// Stores what survives, and makes its scores those that the next observation starts from.
error_code trellis_search::KeepFrame() {
    list.Prune(logBeam);
    current.first = windowStart;
    current.end = windowEnd;
    const error_code pushed = store.Push(windowStart, list, current.scores);
    if (pushed != kNoError) {
        return pushed;
    }
    best = list.BestState();
    previous.Clear();
    std::swap(previous, current);
    return kNoError;
}

/// The path from the end of the chain, and its score.
error_code trellis_search::TraceBack(TArray<uint32_t>* path, double* score) {
    const uint32_t* map = store.BeginRead();
    if (map == nullptr) {
        return kBrokenPath;
    }
    uint32_t state = 0;
    if (frames == 0 || !FindEndState(map, state)) {
        return kRecognitionFailed;
    }
    if (score != nullptr) {
        *score = std::log(static_cast<double>(frames)) + previous.scores[state];
    }
    if (path == nullptr) {
        return code;
    }
    if (frames > INT32_MAX || path->SetSize(static_cast<int32_t>(frames), 0) == 0) {
        return kOutOfMemory;
    }
    const uint32_t last = frames - 1;
    if (state < windowStarts[last] || state - windowStarts[last] >= beam) {
        state = best;
    }
    for (uint32_t t = last; t > 0; --t) {
        (*path)[static_cast<int32_t>(t)] = state;
        if (map == nullptr) {
            return kBrokenPath;
        }
        state = Predecessor(map, t, state);
        map = store.ReadPrevious();
    }
    (*path)[0] = state;
    return code;
}

/// The state that the path ends in; false when there is none.
bool trellis_search::FindEndState(const uint32_t* map, uint32_t& endState) {
    if (endBound == 0) {
        return false;
    }
    endState = endBound - 1;
    if (previous.scores[endState] == kImpossibleLog) {
        // Kept: where the end of the chain was not reached, the path ends in the predecessor of
        // the best state.
        double bestScore = kImpossibleLog;
        for (uint32_t n = previous.first; n < std::min(previous.end, endBound); ++n) {
            if (previous.scores[n] > bestScore) {
                bestScore = previous.scores[n];
                endState = Predecessor(map, frames - 1, n);
            }
        }
        code = kRecognitionFailed;
    }
    endState =
        PreferLastWord(endState, model.numStates, graph[endState].phone == 0, previous.scores);
    return true;
}

/// Where `state` came from at observation `t`. After a loss the map is of the next observation,
/// whose window may stand elsewhere, so the place is kept inside it.
uint32_t trellis_search::Predecessor(const uint32_t* map, uint32_t t, uint32_t state) const {
    const uint32_t start = windowStarts[t];
    const uint32_t place = state > start ? std::min(state - start, beam - 1) : 0;
    return std::min(map[place], numStates - 1);
}

} // namespace

error_code TrellisViterbi(const trellis_viterbi_options& options, const CAccousticHMM& model,
                          const log_state_graph& graph, const std::vector<uint32_t>& startStates,
                          IObservationStream& stream, ProgressSink* progress,
                          TArray<uint32_t>* path, TArray<float>& energies, double* score) {
    return Guarded([&]() -> error_code {
        observation_source source(stream, model.descriptor.numFeatures);
        if (const error_code code = source.Open(&energies); code != kNoError) {
            return code;
        }
        if (source.GetCount() == 0) {
            return kBrokenPath;
        }
        if (graph.GetNumStates() == 0) {
            return kRecognitionFailed;
        }
        trellis_search search(options, model, graph, source);
        const std::string file =
            options.file.empty() ? MakeTempFileName("quibtemp.bin") : options.file;
        const error_code opened =
            search.store.Open(file.c_str(), search.beam, graph.GetNumStates(), options.memory);
        if (opened != kNoError) {
            if (options.file.empty() && !file.empty()) {
                std::remove(file.c_str());
            }
            return opened;
        }
        if (const error_code ran = search.Run(startStates, progress); ran != kNoError) {
            return ran;
        }
        return search.TraceBack(path, score);
    });
}

} // namespace tessarin
