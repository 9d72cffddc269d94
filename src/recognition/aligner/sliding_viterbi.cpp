#include "recognition/aligner/sliding_viterbi.h"

#include <algorithm>
#include <cassert>
#include <limits>

#include "base/guarded.h"
#include "base/timed_progress.h"
#include "model/accoustic_hmm.h"
#include "recognition/aligner/back_pointer_store.h"
#include "recognition/aligner/path_end.h"
#include "recognition/observation_source.h"

namespace tessarin {
namespace {

/// Bound on window states times observations, so that hours of audio narrow the window instead of
/// filling the memory.
constexpr uint64_t kMaxCells = 256000000;

constexpr uint32_t kProgressInterval = 100;

/// Rounds that a window at the end of the chain repeats, for a host that may still cancel.
constexpr int32_t kMaxStuckRounds = 1000000;

/// Output probabilities of one observation: each state of the model is computed once, when the
/// first live predecessor asks for it.
class output_cache {
public:
    output_cache(const CAccousticHMM& acousticModel, const observation_source& observations)
        : model(acousticModel), source(observations),
          entries(static_cast<size_t>(acousticModel.GetTotalStates())) {}

    void NextObservation() { ++generation; }

    double Get(int32_t modelState) {
        entry& cached = entries[static_cast<size_t>(modelState)];
        if (cached.generation != generation) {
            cached = {model.GetStateProbability(source.GetFeatures(), modelState), generation};
        }
        return cached.probability;
    }

private:
    struct entry {
        double probability = 0.0;
        uint32_t generation = 0;
    };

    const CAccousticHMM& model;
    const observation_source& source;
    std::vector<entry> entries;
    uint32_t generation = 1;
};

/// The scores of all states for one observation, 0 outside `[first, end)`.
struct score_row {
    std::vector<double> scores;
    uint32_t first = 0;
    uint32_t end = 0;
    uint32_t reachEnd = 0; // after the furthest state that a live one leads to

    void Clear() {
        std::fill(scores.begin() + first, scores.begin() + end, 0.0);
        first = end = reachEnd = 0;
    }
};

enum class round_result { advanced, lost };

/// One run of the search.
struct sliding_search {
    sliding_search(const sliding_viterbi_options& options, const CAccousticHMM& acousticModel,
                   const state_rec* const* stateGraph, uint32_t positions,
                   observation_source& observations);

    error_code Run(const std::vector<uint32_t>& startStates, ProgressSink* progress);
    error_code ReadObservation();
    void Seed(const std::vector<uint32_t>& startStates);
    round_result AdvanceWindow(uint32_t t);
    void PlaceWindow();
    void ScoreWindow();
    double EnterState(uint32_t n, uint16_t& chosenArc);
    void Rescale();
    void EndAt(uint32_t t);

    bool FindEndState(uint32_t& endState);
    error_code TraceBack(uint32_t endState, TArray<uint32_t>& path) const;

    const CAccousticHMM& model;
    const state_rec* const* graph;
    observation_source& source;
    const uint32_t numStates;
    const bool slideOnLoss;
    uint32_t frames; // observations of the path; fewer than the stream's after a loss
    uint32_t beam;

    output_cache output;
    std::vector<uint32_t> reach;    // the furthest state that each state leads to
    std::vector<int32_t> selfLoops; // how long each state has been stayed in
    score_row previous;
    score_row current;
    std::vector<uint16_t> arcs; // of the window's states at this observation
    back_pointer_store backPointers;

    uint32_t best = 0;     // the window's centre
    uint32_t lastGood = 0; // the best state of the last observation that went through
    uint32_t windowStart = 0;
    uint32_t windowEnd = 0;
    uint32_t frameBestState = 0;
    double frameBest = 0.0;
    uint32_t endBound; // the path ends below this state
    error_code code = kNoError;
};

uint32_t WindowWidth(uint16_t beamWidth, uint32_t frames, uint32_t numStates) {
    uint64_t beam = beamWidth;
    if (beam * frames >= kMaxCells) {
        beam = kMaxCells / frames;
    }
    return static_cast<uint32_t>(std::clamp<uint64_t>(beam, 1, numStates));
}

/// The furthest state that each state leads to: no state after it can come alive from it.
std::vector<uint32_t> FurthestTargets(const state_rec* const* graph, uint32_t numStates) {
    std::vector<uint32_t> reach(numStates);
    for (uint32_t n = 0; n < numStates; ++n) {
        reach[n] = n;
        const state_arc* arcs = graph[n]->Arcs();
        for (uint32_t i = 0; i < graph[n]->predecessors; ++i) {
            assert(arcs[i].state <= n);
            reach[arcs[i].state] = n; // n only grows
        }
    }
    return reach;
}

sliding_search::sliding_search(const sliding_viterbi_options& options,
                               const CAccousticHMM& acousticModel,
                               const state_rec* const* stateGraph, uint32_t positions,
                               observation_source& observations)
    : model(acousticModel), graph(stateGraph), source(observations),
      numStates(positions * static_cast<uint32_t>(acousticModel.numStates)),
      slideOnLoss(options.slideOnLoss), frames(observations.GetCount()),
      beam(WindowWidth(options.beamWidth, frames, numStates)), output(acousticModel, observations),
      reach(FurthestTargets(stateGraph, numStates)), selfLoops(numStates), arcs(beam),
      backPointers(frames), endBound(numStates) {
    previous.scores.resize(numStates);
    current.scores.resize(numStates);
}

error_code sliding_search::Run(const std::vector<uint32_t>& startStates, ProgressSink* progress) {
    if (const error_code readCode = ReadObservation(); readCode != kNoError) {
        return readCode;
    }
    Seed(startStates);

    const uint32_t total = frames;
    timed_progress timed(progress);
    int32_t stuckRounds = 0;
    bool repeat = false;
    for (uint32_t t = 1; t < frames; t += repeat ? 0 : 1) {
        if (!repeat) {
            stuckRounds = 0;
            if (const error_code readCode = ReadObservation(); readCode != kNoError) {
                return readCode;
            }
        }
        const bool atChainEnd = repeat && windowEnd == numStates;
        repeat = AdvanceWindow(t) == round_result::lost;
        const uint32_t progressIndex = repeat ? t - 1 : t;
        const bool reports = progress != nullptr && progressIndex % kProgressInterval == 0;
        if (repeat) {
            // A window that already stood at the chain's end finds nothing in any later round.
            const bool stuck = atChainEnd && (!reports || ++stuckRounds >= kMaxStuckRounds);
            if (!slideOnLoss || stuck) {
                EndAt(t);
                return kNoError;
            }
        }
        if (timed.Report(progressIndex, total, reports)) {
            return kUserCancelled;
        }
    }
    return kNoError;
}

error_code sliding_search::ReadObservation() {
    output.NextObservation();
    return source.Next();
}

void sliding_search::Seed(const std::vector<uint32_t>& startStates) {
    for (const uint32_t n : startStates) {
        if (n >= numStates) {
            continue;
        }
        // Kept: a start state scores with its phone's first state, whatever state it is itself;
        // the entry of a phone is what the audio begins with.
        const double score =
            model.GetStateProbability(source.GetFeatures(), graph[n]->phone * model.numStates);
        previous.scores[n] = score;
        previous.first = previous.end == 0 ? n : std::min(previous.first, n);
        previous.end = std::max(previous.end, n + 1);
        previous.reachEnd = std::max(previous.reachEnd, reach[n] + 1);
    }
}

/// One round for observation `t`. After a loss the old scores stay, and the window's centre moves
/// on to its end.
round_result sliding_search::AdvanceWindow(uint32_t t) {
    PlaceWindow();
    ScoreWindow();
    if (!(frameBest > 0.0)) {
        current.Clear();
        best = windowEnd;
        return round_result::lost;
    }
    backPointers.AddRow(
        t, windowStart, current.first,
        std::span(arcs).subspan(current.first - windowStart, current.end - current.first));
    Rescale();
    best = lastGood = frameBestState;
    return round_result::advanced;
}

void sliding_search::PlaceWindow() {
    const uint32_t half = beam / 2;
    windowStart = best > half ? best - half : 0;
    windowEnd = windowStart + beam;
    if (windowEnd > numStates) {
        windowEnd = numStates;
        windowStart = windowEnd - beam;
    }
}

void sliding_search::ScoreWindow() {
    frameBest = 0.0;
    frameBestState = 0;
    // A state outside these bounds has no live predecessor, and stays at 0.
    const uint32_t from = std::max(windowStart, previous.first);
    const uint32_t to = std::min(windowEnd, previous.reachEnd);
    for (uint32_t n = from; n < to; ++n) {
        uint16_t& arc = arcs[n - windowStart];
        const double score = EnterState(n, arc);
        if (arc == back_pointer_store::kNotComputed) {
            continue;
        }
        if (current.end == 0) {
            current.first = n;
        }
        current.end = n + 1;
        current.scores[n] = score;
        if (score != 0.0) {
            current.reachEnd = std::max(current.reachEnd, reach[n] + 1);
        }
        if (score > frameBest) { // the lowest state wins a tie
            frameBest = score;
            frameBestState = n;
        }
    }
}

/// The score of state `n` through its best arc, the earliest of equals; without a live predecessor
/// inside the window `chosenArc` is kNotComputed.
inline double sliding_search::EnterState(uint32_t n, uint16_t& chosenArc) {
    const state_rec& state = *graph[n];
    const state_arc* entries = state.Arcs();
    const double* scores = previous.scores.data();
    double bestScore = 0.0;
    chosenArc = back_pointer_store::kNotComputed;
    for (uint32_t i = 0; i < state.predecessors; ++i) {
        if (entries[i].state < windowStart) {
            continue;
        }
        const double candidate =
            static_cast<double>(entries[i].probability) * scores[entries[i].state];
        if (candidate > bestScore) {
            bestScore = candidate;
            chosenArc = static_cast<uint16_t>(i);
        }
    }
    if (chosenArc == back_pointer_store::kNotComputed) {
        return 0.0;
    }
    bestScore *= output.Get(state.phone * model.numStates + state.state);
    if (entries[chosenArc].state == n) {
        ++selfLoops[n];
        bestScore *= model.GetPhoneDurationFactor(state.phone, state.phone, selfLoops[n]);
    } else {
        selfLoops[n] = 1;
    }
    return bestScore;
}

void sliding_search::Rescale() {
    previous.Clear();
    for (uint32_t n = current.first; n < current.end; ++n) {
        current.scores[n] /= frameBest;
    }
    std::swap(previous, current);
}

/// The path was lost at observation `t`.
void sliding_search::EndAt(uint32_t t) {
    // Kept: the last observation that went through is given up as well, so the end state is
    // looked for among scores that are one observation younger than the last row.
    frames = t - 1;
    endBound = lastGood;
    code = kRecognitionFailed;
}

/// The state that the path ends in; false when there is none.
bool sliding_search::FindEndState(uint32_t& endState) {
    if (endBound == 0) {
        return false;
    }
    endState = endBound - 1;
    if (previous.scores[endState] == 0.0) {
        // Kept: where the end of the chain was not reached, the path ends in the predecessor of
        // the best state, and the last of equals wins. After a loss that state may not have been
        // computed; then the end is sought at state 0, and TraceBack falls back on the last good.
        const size_t last = frames - 1;
        double bestScore = 0.0;
        for (uint32_t n = backPointers.WindowStart(last); n < endBound; ++n) {
            if (previous.scores[n] >= bestScore) {
                bestScore = previous.scores[n];
                endState = backPointers.Predecessor(graph, last, n, beam, 0);
            }
        }
        code = kRecognitionFailed;
    }
    endState =
        PreferLastWord(endState, model.numStates, graph[endState]->phone == 0, previous.scores);
    return true;
}

error_code sliding_search::TraceBack(uint32_t endState, TArray<uint32_t>& path) const {
    if (frames > INT32_MAX || path.SetSize(static_cast<int32_t>(frames), 0) == 0) {
        return kOutOfMemory;
    }
    uint32_t state = endState;
    const uint32_t lastStart = backPointers.WindowStart(frames - 1);
    if (state < lastStart || state - lastStart >= beam) {
        state = lastGood;
    }
    for (uint32_t t = frames - 1; t > 0; --t) {
        path[static_cast<int32_t>(t)] = state;
        // After a loss the path may end in a state that was not computed. It leads to the window's
        // first, or stays where it is below the window, so that no path returns to earlier phones.
        state = std::min(
            state, backPointers.Predecessor(graph, t, state, beam, backPointers.WindowStart(t)));
    }
    path[0] = state;
    return code;
}

} // namespace

error_code SlidingViterbi(const sliding_viterbi_options& options, const CAccousticHMM& model,
                          const state_rec* const* graph, uint32_t positions,
                          const std::vector<uint32_t>& startStates, IObservationStream& stream,
                          ProgressSink* progress, TArray<uint32_t>* path, TArray<float>& energies,
                          double* score) {
    return Guarded([&]() -> error_code {
        observation_source source(stream, model.descriptor.numFeatures);
        if (const error_code code = source.Open(&energies); code != kNoError) {
            return code;
        }
        if (source.GetCount() == 0 || positions == 0) {
            return kRecognitionFailed;
        }
        sliding_search search(options, model, graph, positions, source);
        if (const error_code code = search.Run(startStates, progress); code != kNoError) {
            return code;
        }
        uint32_t endState = 0;
        if (!search.FindEndState(endState)) {
            return kRecognitionFailed;
        }
        if (score != nullptr) {
            *score = search.previous.scores[endState];
        }
        return path != nullptr ? search.TraceBack(endState, *path) : search.code;
    });
}

} // namespace tessarin
