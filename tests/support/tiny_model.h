#pragma once

#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "model/accoustic_hmm.h"
#include "support/byte_builder.h"
#include "support/temp_file.h"

namespace tessarin::test {

/// A small acoustic model for tests: strictly left to right, with every phoneme after every other.
struct tiny_model {
    std::vector<std::string> labels = {"x", "AA", "s"};
    int32_t numStates = 3;
    int32_t numMixtures = 1;
    int32_t numFeatures = 2;
    float selfLoop = 0.6f;
    float variance = 0.25f;

    /// All means of global state `s` are `s`, those of later Gaussians a little more.
    std::unique_ptr<CAccousticHMM> Make() const {
        auto model = std::make_unique<CAccousticHMM>();
        model->numModels = static_cast<int32_t>(labels.size());
        model->numStates = numStates;
        model->numMixtures = numMixtures;
        model->labels = labels;
        model->descriptor.numFeatures = numFeatures;
        model->models.resize(labels.size());
        const auto total = static_cast<size_t>(model->GetTotalStates());
        model->transitions = float_matrix(total, total);
        for (size_t s = 0; s < total; ++s) {
            AddState(*model, s);
        }
        model->AnalyseTopology();
        model->BuildScoring();
        return model;
    }

private:
    void AddState(CAccousticHMM& model, size_t s) const {
        const size_t states = static_cast<size_t>(numStates);
        const size_t local = s % states;
        CAccousticHMMState state;
        state.transitions.assign(states, 0.0f);
        state.transitions[local] = model.transitions[s][s] = selfLoop;
        if (local + 1 < states) {
            state.transitions[local + 1] = model.transitions[s][s + 1] = 1.0f - selfLoop;
        } else {
            for (size_t phoneme = 0; phoneme < labels.size(); ++phoneme) {
                model.transitions[s][phoneme * states] +=
                    (1.0f - selfLoop) / static_cast<float>(labels.size());
            }
        }
        const auto width = static_cast<size_t>(numFeatures);
        const double gConst =
            std::pow(2.0 * std::numbers::pi * static_cast<double>(variance), -0.5 * numFeatures);
        for (int32_t m = 0; m < numMixtures; ++m) {
            CGaussMixture mixture;
            mixture.weight = 1.0 / numMixtures;
            mixture.mean.assign(width, static_cast<float>(s) + 0.125f * static_cast<float>(m));
            mixture.inverseCovariance.assign(width, 1.0f / variance);
            mixture.gConst = gConst;
            state.mixtures.push_back(mixture);
        }
        model.models[s / states].states.push_back(state);
    }
};

/// The image of a model.
inline bytes ImageOf(CAccousticHMM& model) {
    const TempFile file;
    if (!model.Write(file.Path())) {
        return {};
    }
    const std::string image = file.Content();
    return {image.begin(), image.end()};
}

} // namespace tessarin::test
