#include "recognition/loose/heard_phones.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "model/accoustic_hmm.h"
#include "recognition/graph/transition_lists.h"
#include "recognition/loose/state_scores.h"

namespace tessarin {
namespace {

constexpr double kNever = -std::numeric_limits<double>::infinity();
constexpr double kChangeCost = 3.0; ///< of a phone, in addition to the choice among all of them
constexpr uint8_t kEntered = UINT8_MAX;

// The spread of trained voices, and how it grows for others.
constexpr double kUsualDistance = 1.75;
constexpr double kDistancePerSpread = 0.95;
constexpr double kLargestSpread = 2.2;

float Logarithm(float probability) {
    return probability > 0.0f ? std::log(probability) : -std::numeric_limits<float>::infinity();
}

/// The logarithms of the steps into each state from its own phone, forward or in place.
transition_lists StepsInsidePhones(const CAccousticHMM& model) {
    const auto perPhone = static_cast<uint32_t>(model.numStates);
    transition_lists steps;
    for (uint32_t to = 0; to < static_cast<uint32_t>(model.GetTotalStates()); ++to) {
        const auto& states = model.models[to / perPhone].states;
        for (uint32_t from = to - to % perPhone; from <= to; ++from) {
            const float log = Logarithm(states[from % perPhone].transitions[to % perPhone]);
            if (std::isfinite(log)) {
                steps.Add({from, log});
            }
        }
        steps.FinishState();
    }
    return steps;
}

/// One run over the loop.
struct loop_search {
    loop_search(const CAccousticHMM& acousticModel, const state_scores& stateScores);

    void Advance(size_t t);
    void Enter(size_t t, size_t phone, double entry);
    heard_phones TraceBack() const;

    const state_scores& scores;
    const size_t perPhone;
    const size_t numStates;
    const transition_lists steps; // logarithms
    std::vector<double> leaving;  // of each phone
    double entryCost;
    std::vector<double> previous;
    std::vector<double> current;
    std::vector<uint8_t> sources;      // of each state of each observation, or kEntered
    std::vector<uint16_t> bestLeavers; // phone that the observation's entries came from
};

loop_search::loop_search(const CAccousticHMM& model, const state_scores& stateScores)
    : scores(stateScores), perPhone(static_cast<size_t>(model.numStates)),
      numStates(static_cast<size_t>(model.GetTotalStates())), steps(StepsInsidePhones(model)),
      entryCost(std::log(static_cast<double>(model.numModels)) + kChangeCost),
      previous(numStates, kNever), current(numStates),
      sources(numStates * stateScores.GetCount(), kEntered), bestLeavers(stateScores.GetCount()) {
    for (const CSingleAccHmm& phone : model.models) {
        const float stay = phone.states.back().transitions.back();
        leaving.push_back(static_cast<double>(Logarithm(1.0f - stay)));
    }
}

void loop_search::Advance(size_t t) {
    double bestLeaving = t == 0 ? 0.0 : kNever;
    for (size_t phone = 0; t > 0 && phone < leaving.size(); ++phone) {
        const double score = previous[phone * perPhone + perPhone - 1] + leaving[phone];
        if (score > bestLeaving) {
            bestLeaving = score;
            bestLeavers[t] = static_cast<uint16_t>(phone);
        }
    }
    for (size_t phone = 0; phone < leaving.size(); ++phone) {
        Enter(t, phone, bestLeaving - entryCost);
    }
    std::swap(previous, current);
}

void loop_search::Enter(size_t t, size_t phone, double entry) {
    const float* const row = scores[t];
    const size_t first = phone * perPhone;
    for (size_t local = 0; local < perPhone; ++local) {
        double best = local == 0 ? entry : kNever;
        uint8_t source = kEntered;
        for (const auto& [from, log] : steps.Into(static_cast<uint32_t>(first + local))) {
            const double score = previous[from] + static_cast<double>(log);
            if (score > best) {
                best = score;
                source = static_cast<uint8_t>(from - first);
            }
        }
        current[first + local] = best + static_cast<double>(row[first + local]);
        sources[t * numStates + first + local] = source;
    }
}

/// The path ends wherever the last observation is best.
heard_phones loop_search::TraceBack() const {
    heard_phones heard;
    const size_t count = scores.GetCount();
    heard.states.resize(count);
    heard.scores.resize(count);
    auto state =
        static_cast<size_t>(std::max_element(previous.begin(), previous.end()) - previous.begin());
    for (size_t t = count; t-- > 0;) {
        heard.states[t] = static_cast<uint16_t>(state);
        heard.scores[t] = scores[t][state];
        const uint8_t source = sources[t * numStates + state];
        state = source == kEntered ? bestLeavers[t] * perPhone + perPhone - 1
                                   : state - state % perPhone + source;
    }
    return heard;
}

} // namespace

heard_phones HearPhones(const CAccousticHMM& model, const state_scores& scores) {
    loop_search search(model, scores);
    for (size_t t = 0; t < scores.GetCount(); ++t) {
        search.Advance(t);
    }
    return scores.GetCount() > 0 ? search.TraceBack() : heard_phones{};
}

void heard_distance::Add(const CAccousticHMM& model, const state_scores& scores,
                         const heard_phones& heard, size_t observations) {
    for (size_t t = 0; t < observations; ++t) {
        if (!heard.IsSilence(t, model.numStates)) {
            sum += static_cast<double>(scores.Best(t) - heard.scores[t]);
            ++count;
        }
    }
}

double heard_distance::Spread() const {
    if (count == 0) {
        return 1.0;
    }
    const double distance = sum / static_cast<double>(count);
    return std::clamp(1.0 + (distance - kUsualDistance) / kDistancePerSpread, 1.0, kLargestSpread);
}

} // namespace tessarin
