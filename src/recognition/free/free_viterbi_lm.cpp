#include "recognition/free/free_viterbi.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "base/guarded.h"
#include "model/accoustic_hmm.h"
#include "recognition/free/free_search.h"
#include "recognition/free/hmm_hypothesis_tree.h"
#include "recognition/graph/transition_lists.h"

namespace tessarin {
namespace {

/// What a phoneme change is worth without a trigram to say so.
constexpr double kBigramBackoff = 1e-6;
constexpr double kUnigramShare = 1e-7;
constexpr double kBigramShare = 0.99;

/// One run. A state has at most one hypothesis at an observation, and they stand in the order of
/// their states, so walking a state's sources is walking the hypotheses that can lead to it.
struct language_search {
    language_search(const CAccousticHMM& acousticModel, int32_t growthStep)
        : model(acousticModel), statesPerPhone(static_cast<uint32_t>(acousticModel.numStates)),
          numStates(static_cast<uint32_t>(acousticModel.GetTotalStates())),
          steps(numStates, [&](uint32_t from, uint32_t to) { return StepProbability(from, to); }),
          previous(numStates, -1), current(numStates, -1), tree(growthStep) {}

    float StepProbability(uint32_t from, uint32_t to) const;
    void Seed(const float* x);
    void Advance(const float* x, int32_t t);
    void MakeRoom();
    void EnterState(const float* x, uint32_t state);
    int32_t BestSource(uint32_t state, double& bestScore) const;
    double LanguageFactor(const hmm_hypothesis& from, uint16_t phone) const;
    error_code TraceBack(TArray<uint32_t>& path) const;
    uint32_t StateOf(const hmm_hypothesis& hypothesis) const {
        return hypothesis.phone * statesPerPhone + hypothesis.state;
    }

    const CAccousticHMM& model;
    const uint32_t statesPerPhone;
    const uint32_t numStates;
    const transition_lists steps;
    std::vector<int32_t> previous; // the hypothesis of each state, -1 for none
    std::vector<int32_t> current;
    CHmmHypothesisTree tree;
    int32_t frameBegin = 0; // hypotheses of the last observation
    int32_t frameEnd = 0;
    double largest = 0.0;
};

/// A phoneme is entered from the last state of any other with what that one's self-loop leaves; the
/// matrix's own value of that step already has a guess at the language in it.
float language_search::StepProbability(uint32_t from, uint32_t to) const {
    const bool entersPhone = to % statesPerPhone == 0;
    const bool leavesPhone = from % statesPerPhone == statesPerPhone - 1;
    if (entersPhone && leavesPhone && from / statesPerPhone != to / statesPerPhone) {
        return 1.0f - model.transitions[from][from];
    }
    return model.transitions[from][to];
}

void language_search::Seed(const float* x) {
    for (uint32_t p = 0; p < static_cast<uint32_t>(model.numModels); ++p) {
        // Kept: a root is scored with the model's state number p, not with its phone's first state;
        // the first phonemes of every result depend on it.
        const double score =
            model.GetStateProbability(x, static_cast<int32_t>(p)) * (1.0 / model.numModels);
        if (!tree.AddRoot(static_cast<uint16_t>(p), score, 0)) {
            throw std::bad_alloc();
        }
        previous[p * statesPerPhone] = static_cast<int32_t>(p);
    }
    frameEnd = tree.GetCount();
}

void language_search::Advance(const float* x, int32_t) {
    MakeRoom();
    largest = 0.0;
    const int32_t begin = tree.GetCount();
    for (uint32_t state = 0; state < numStates; ++state) {
        EnterState(x, state);
    }
    frameBegin = begin;
    frameEnd = tree.GetCount();
    for (int32_t i = frameBegin; largest != 0.0 && i < frameEnd; ++i) {
        tree[i].score /= largest;
    }
    std::swap(previous, current);
}

/// A full tree first gives up what no path of the last observation comes from. That is nearly all
/// of it, as paths meet some seconds back; when it is not, the tree grows, so that it is not
/// soon full again.
void language_search::MakeRoom() {
    const auto wanted = static_cast<int32_t>(numStates);
    if (tree.GetCount() >= tree.GetCapacity() - wanted) {
        tree.SetFirstLive(frameBegin);
        const int32_t dropped = tree.DropDeadEnds();
        frameBegin -= dropped;
        frameEnd -= dropped;
        for (int32_t& index : previous) {
            index -= index < 0 ? 0 : dropped;
        }
        if (tree.GetCount() > tree.GetCapacity() / 2) {
            (void)tree.Grow(0); // a failure shows when there is no room left
        }
    }
    if (!tree.Reserve(wanted)) {
        throw std::bad_alloc();
    }
}

void language_search::EnterState(const float* x, uint32_t state) {
    current[state] = -1;
    double score = 0.0;
    const int32_t source = BestSource(state, score);
    if (source < 0) {
        return;
    }
    const hmm_hypothesis from = tree[source];
    const auto phone = static_cast<uint16_t>(state / statesPerPhone);
    const auto local = static_cast<uint16_t>(state % statesPerPhone);
    score *= model.GetStateProbability(x, static_cast<int32_t>(state));
    if (local == 0 && from.state != 0 && from.phone != phone) {
        score *= LanguageFactor(from, phone);
    }
    score *= model.GetPhoneDurationFactor(from.phone, phone, from.frames);
    if (!(score > 0.0)) {
        return;
    }
    largest = std::max(largest, score);
    current[state] = tree.GetCount();
    if (!tree.AddChild(from, source, phone, score, local)) {
        throw std::bad_alloc();
    }
}

/// The hypothesis that leads to `state` best, the first of equals; -1 for none.
int32_t language_search::BestSource(uint32_t state, double& bestScore) const {
    int32_t best = -1;
    for (const auto& [from, probability] : steps.Into(state)) {
        const int32_t index = previous[from];
        if (index < 0) {
            continue;
        }
        const double value = tree[index].score * double{probability};
        if (value > bestScore) {
            bestScore = value;
            best = index;
        }
    }
    return best;
}

/// How probable the language makes `phone` after the phone of `from`.
double language_search::LanguageFactor(const hmm_hypothesis& from, uint16_t phone) const {
    const double bigram = model.bigrams[from.phone][phone];
    const bool hasEnded = from.ended >= 0 && from.ended < tree.GetCount();
    const float trigram =
        hasEnded ? model.trigrams[tree[from.ended].phone][from.phone][phone] : 0.0f;
    if (model.trigramVersion) {
        if (!hasEnded) {
            return bigram * kBigramBackoff;
        }
        return trigram > 0.0f ? double{trigram} : 0.0;
    }
    // Kept: here a trigram only forbids, by being negative.
    if (trigram < 0.0f) {
        return 0.0;
    }
    return model.unigrams[phone] * kUnigramShare + bigram * kBigramShare;
}

error_code language_search::TraceBack(TArray<uint32_t>& path) const {
    double bestScore = 0.0;
    int32_t at = -1;
    for (int32_t i = frameBegin; i < frameEnd; ++i) {
        if (tree[i].score > bestScore) {
            bestScore = tree[i].score;
            at = i;
        }
    }
    if (at < 0) {
        std::fill(path.begin(), path.end(), 0u);
        return kRecognitionFailed;
    }
    const int32_t last = path.GetSize() - 1;
    path[last] = StateOf(tree[at]);
    // Kept: the last hypothesis stands twice, and all others one observation late.
    for (int32_t t = last - 1; t >= 0; --t) {
        path[t] = StateOf(tree[at]);
        at = tree[at].parent;
    }
    return kNoError;
}

} // namespace

error_code FreeViterbiLM(const CAccousticHMM& model, IObservationStream& stream,
                         ProgressSink* progress, TArray<uint32_t>& path, TArray<float>& energies,
                         int32_t growthStep) {
    return Guarded([&]() -> error_code {
        observation_source source(stream, model.descriptor.numFeatures);
        const error_code code = PrepareFreeSearch(model, source, path, energies);
        if (code != kNoError) {
            return code;
        }
        language_search search(model, growthStep);
        return RunFreeSearch(search, source, progress, path);
    });
}

error_code FreeViterbiLM(const CAccousticHMM& model, IObservationStream& stream,
                         ProgressSink* progress, TArray<uint32_t>& path, TArray<float>& energies) {
    return FreeViterbiLM(model, stream, progress, path, energies, CHmmHypothesisTree::kGrowthStep);
}

} // namespace tessarin
