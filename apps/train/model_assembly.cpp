#include "apps/train/model_assembly.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "apps/train/labelled_speech.h"
#include "model/accoustic_hmm.h"
#include "model/phoneme_alphabet.h"

namespace tessarin::training {
namespace {

CGaussMixture MakeGaussian(const diagonal_gaussian& source) {
    CGaussMixture gaussian;
    gaussian.weight = source.weight;
    gaussian.mean.assign(source.mean.begin(), source.mean.end());
    double logFactor = 0.0;
    for (const double variance : source.variance) {
        const auto inverse = static_cast<float>(1.0 / variance);
        gaussian.inverseCovariance.push_back(inverse);
        logFactor += 0.5 * std::log(static_cast<double>(inverse) / (2.0 * std::numbers::pi));
    }
    gaussian.gConst = std::exp(logFactor);
    return gaussian;
}

void AddState(CAccousticHMM& model, size_t state, const state_mixture& mixture,
              const transition_model& transitions) {
    const size_t phone = state / kStates;
    const size_t own = state % kStates;
    CAccousticHMMState& target = model.models[phone].states.emplace_back();
    for (const diagonal_gaussian& gaussian : mixture) {
        target.mixtures.push_back(MakeGaussian(gaussian));
    }
    CGaussMixture nothing = target.mixtures.front();
    nothing.weight = 0.0;
    target.mixtures.resize(static_cast<size_t>(model.numMixtures), nothing);

    const auto stay = static_cast<float>(transitions.stay[state]);
    target.transitions.assign(kStates, 0.0f);
    target.transitions[own] = stay;
    model.transitions[state][state] = stay;
    if (own + 1 < kStates) {
        target.transitions[own + 1] = 1.0f - stay;
        model.transitions[state][state + 1] = 1.0f - stay;
        return;
    }
    // The way out of the phone stands in the matrix of all states alone.
    for (size_t next = 0; next < transitions.follow.size(); ++next) {
        model.transitions[state][next * kStates] +=
            static_cast<float>((1.0 - transitions.stay[state]) * transitions.follow[phone][next]);
    }
}

} // namespace

std::unique_ptr<CAccousticHMM> AssembleModel(const std::vector<state_mixture>& mixtures,
                                             const transition_model& transitions) {
    auto model = std::make_unique<CAccousticHMM>();
    DescribeFeatures(model->descriptor);
    for (const phoneme_symbol& symbol : PhonemeAlphabet()) {
        model->labels.emplace_back(symbol.label);
    }
    model->numModels = static_cast<int32_t>(model->labels.size());
    model->numStates = static_cast<int32_t>(kStates);
    model->numMixtures =
        static_cast<int32_t>(std::ranges::max(mixtures, {}, [](const state_mixture& mixture) {
                                 return mixture.size();
                             }).size());
    model->models.resize(model->labels.size());
    model->transitions = float_matrix(mixtures.size(), mixtures.size());
    for (size_t state = 0; state < mixtures.size(); ++state) {
        AddState(*model, state, mixtures[state], transitions);
    }
    model->AnalyseTopology();
    model->BuildScoring();
    return model;
}

} // namespace tessarin::training
