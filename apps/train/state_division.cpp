#include "apps/train/state_division.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "apps/train/parallel.h"

namespace tessarin::training {
namespace {

constexpr double kImpossible = -std::numeric_limits<double>::infinity();

/// The two moments of a phone when it goes on to its second and to its third state. With three
/// states that is all there is to choose, so the sums of scores up to each place show the best.
void DivideRun(labelled_speech& speech, const phone_run& run,
               const std::vector<mixture_scorer>& scorers, const transition_model& transitions) {
    const size_t firstState = run.phone * kStates;
    std::vector<std::array<double, kStates>> best(run.count);
    std::vector<std::array<bool, kStates>> entered(run.count);
    for (size_t t = 0; t < run.count; ++t) {
        const float* x = speech.observations[run.first + t];
        for (size_t state = 0; state < kStates; ++state) {
            const double stay = transitions.stay[firstState + state];
            const double staying = t == 0 ? kImpossible : best[t - 1][state] + std::log(stay);
            double entering = t == 0 && state == 0 ? 0.0 : kImpossible;
            if (t > 0 && state > 0) {
                entering = best[t - 1][state - 1] +
                           std::log(1.0 - transitions.stay[firstState + state - 1]);
            }
            entered[t][state] = entering > staying;
            best[t][state] = std::max(entering, staying) + scorers[firstState + state].Score(x);
        }
    }
    size_t state = kStates - 1;
    for (size_t t = run.count; t-- > 0;) {
        speech.state[run.first + t] = static_cast<uint16_t>(firstState + state);
        state -= entered[t][state] && state > 0 ? 1 : 0;
    }
}

} // namespace

void DivideByLikelihood(std::vector<labelled_speech>& speech,
                        const std::vector<state_mixture>& mixtures,
                        const transition_model& transitions, size_t numThreads) {
    const std::vector<mixture_scorer> scorers(mixtures.begin(), mixtures.end());
    ParallelFor(speech.size(), numThreads, [&](size_t i) {
        for (const phone_run& run : speech[i].runs) {
            DivideRun(speech[i], run, scorers, transitions);
        }
    });
}

} // namespace tessarin::training
