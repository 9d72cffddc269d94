#pragma once

#include <cstdint>
#include <vector>

namespace tessarin {

class CAccousticHMM;
class float_matrix;

/// A search that knows nothing of a text: any order of a set of the model's states, with the
/// model's own transitions. What it scores is what a sentence has to be better than. The sets are
/// lists of states; a state may stand in one twice.
class BackgroundLoop {
public:
    /// `states` are global states of `model`, of whose transitions `logTransitions` are the natural
    /// logarithms; the search will run over so many observations.
    BackgroundLoop(const CAccousticHMM& model, const float_matrix& logTransitions,
                   std::vector<uint32_t> states, uint32_t frames);

    /// All states of the model.
    static std::vector<uint32_t> FreeStates(const CAccousticHMM& model);
    /// States for noise.
    static std::vector<uint32_t> NoiseStates(const CAccousticHMM& model);

    /// Takes in the first observation, `x`. `cache` has a place for the logarithmic likelihood of
    /// each global state, 0 where it is not known yet.
    void Seed(const float* x, double* cache);
    /// Takes in observation `t`, the next one.
    void Advance(uint32_t t, const float* x, double* cache);

    /// The score of the best path to observation `to` beyond that of the best to `from`.
    double GainBetween(uint32_t from, uint32_t to) const {
        return bestByFrame[to] - bestByFrame[from];
    }

private:
    struct step {
        uint32_t from; // a place in `states`
        float logProbability;
    };

    void FindSteps(const float_matrix& logTransitions);
    double BestSource(uint32_t place, bool& found) const;

    const CAccousticHMM& model;
    std::vector<uint32_t> states;
    std::vector<std::vector<step>> stepsInto; // of each place in `states`
    std::vector<double> previous;
    std::vector<double> current;
    std::vector<double> bestByFrame;
};

} // namespace tessarin
