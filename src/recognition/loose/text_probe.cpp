#include "recognition/loose/text_probe.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "recognition/loose/loose_viterbi.h"
#include "recognition/loose/state_scores.h"
#include "recognition/loose/word_chain.h"

namespace tessarin {
namespace {

constexpr float kNever = -std::numeric_limits<float>::infinity();
/// By how much the text must fit better than other speech, for each observation, as a share of the
/// cost of other speech. For dialogue by voices that the model does not know, the right place
/// gains half of it, the best one of the rest of the text a quarter.
constexpr double kLeastGain = 0.35;
/// A place elsewhere may have this share of the gain at most.
constexpr double kMostElsewhere = 0.7;
/// Junctions from which on a place is another one.
constexpr size_t kElsewhere = 60;

/// One forward pass in single precision; after some thousand observations it is still exact to a
/// hundredth.
struct probe {
    probe(const word_chain& wordChain, size_t first, const departure_costs& departureCosts);

    void Advance(const float* output, float filler);
    void FinishJunctions(float filler);
    std::optional<size_t> Place(double other, size_t observations) const;

    const word_chain& chain;
    const size_t firstWord;
    const uint32_t firstState;
    const departure_costs& costs;
    std::vector<float> states;
    std::vector<float> next;
    std::vector<float> fillers;
    std::vector<float> junctions;
};

probe::probe(const word_chain& wordChain, size_t first, const departure_costs& departureCosts)
    : chain(wordChain), firstWord(first), firstState(wordChain.JunctionBegin(first)),
      costs(departureCosts), states(wordChain.GetNumStates() - firstState, kNever),
      next(states.size()), fillers(wordChain.GetNumJunctions() - first, kNever),
      junctions(fillers.size(), 0.0f) {}

void probe::Advance(const float* output, float filler) {
    for (uint32_t state = 0; state < states.size(); ++state) {
        const uint32_t entry = chain.GetEntry(firstState + state);
        float best = entry != word_chain::kNoJunction ? junctions[entry - firstWord] : kNever;
        for (const word_chain::arc& arc : chain.Into(firstState + state)) {
            best = std::max(best, states[arc.from - firstState] + arc.log);
        }
        next[state] = best + output[chain.GetModelState(firstState + state)];
    }
    std::swap(states, next);
    FinishJunctions(filler - static_cast<float>(costs.fillerStep));
}

void probe::FinishJunctions(float filler) {
    const auto entry = static_cast<float>(costs.fillerEntry);
    const auto skip = static_cast<float>(costs.skip);
    const auto& words = chain.GetWords();
    float before = kNever;
    for (size_t junction = 0; junction < junctions.size(); ++junction) {
        fillers[junction] = std::max(fillers[junction], junctions[junction] - entry) + filler;
        float best = fillers[junction];
        if (junction > 0) {
            const word_chain::word& word = words[firstWord + junction - 1];
            if (word.isOptional || word.isSkippable) {
                best = std::max(best, before - (word.isOptional ? 0.0f : skip));
            }
            for (const word_chain::exit& exit : chain.WordExits(firstWord + junction - 1)) {
                best = std::max(best, states[exit.state - firstState] + exit.log);
            }
        }
        for (const word_chain::exit& exit : chain.SilenceExits(firstWord + junction)) {
            best = std::max(best, states[exit.state - firstState] + exit.log);
        }
        junctions[junction] = before = best;
    }
}

/// `other` is the score of the audio as other speech.
std::optional<size_t> probe::Place(double other, size_t observations) const {
    const auto best = std::ranges::max_element(junctions);
    const auto place = static_cast<size_t>(best - junctions.begin());
    const double gain = static_cast<double>(*best) - other;
    double elsewhere = 0.0;
    for (size_t junction = 0; junction < junctions.size(); ++junction) {
        if (junction + kElsewhere < place || junction > place + kElsewhere) {
            elsewhere = std::max(elsewhere, static_cast<double>(junctions[junction]) - other);
        }
    }
    const double least = kLeastGain * costs.fillerStep * static_cast<double>(observations);
    return gain >= least && elsewhere <= kMostElsewhere * gain
               ? std::optional<size_t>(firstWord + place)
               : std::nullopt;
}

} // namespace

std::optional<size_t> FindInText(const word_chain& chain, size_t firstWord,
                                 const state_scores& scores, size_t first,
                                 std::span<const float> fillerScores,
                                 const departure_costs& costs) {
    probe search(chain, firstWord, costs);
    double other = -costs.fillerEntry;
    for (size_t t = first; t < fillerScores.size(); ++t) {
        search.Advance(scores[t], fillerScores[t]);
        other += static_cast<double>(fillerScores[t]) - costs.fillerStep;
    }
    return search.Place(other, fillerScores.size() - first);
}

} // namespace tessarin
