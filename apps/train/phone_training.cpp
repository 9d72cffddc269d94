#include "apps/train/phone_training.h"

#include <algorithm>
#include <cmath>

#include "apps/train/discriminative_update.h"
#include "apps/train/parallel.h"
#include "apps/train/phone_loop.h"

namespace tessarin::training {
namespace {

/// Scores count for this much, so that phones a little worse than the best still have a say.
constexpr double kScoreScale = 0.15;
/// Power of the probability that a phone follows another, as the search without a text takes it.
constexpr double kFollowPower = 4.0;
/// Weight of the Gaussian before this training in the update, in observations.
constexpr double kPrior = 100.0;
constexpr size_t kShares = 32; ///< the sums are taken in so many parts, whatever the threads

/// The scaled likelihood of each observation in each state, the largest of an observation being 1.
std::vector<double> Weigh(const labelled_speech& speech,
                          const std::vector<mixture_scorer>& scorers) {
    const size_t states = scorers.size();
    std::vector<double> weights(speech.state.size() * states);
    for (size_t t = 0; t < speech.state.size(); ++t) {
        double* row = &weights[t * states];
        for (size_t state = 0; state < states; ++state) {
            row[state] = kScoreScale * scorers[state].Score(speech.observations[t]);
        }
        const double best = *std::max_element(row, row + states);
        for (size_t state = 0; state < states; ++state) {
            row[state] = std::exp(row[state] - best);
        }
    }
    return weights;
}

void AddUtterance(const labelled_speech& speech, const phone_loop& loop,
                  const std::vector<mixture_scorer>& scorers, rival_sums& sums) {
    const path_gains paths = FindGains(loop, Weigh(speech, scorers), speech.state);
    const size_t states = loop.GetNumStates();
    for (size_t t = 0; t < speech.state.size(); ++t) {
        for (size_t state = 0; state < states; ++state) {
            sums.Add(state, scorers[state], speech.observations[t],
                     paths.gains[t * states + state]);
        }
        sums.observations += FindWorth(speech.state[t], speech.state[t]);
    }
    sums.merit += paths.worth;
}

/// A part of the speech is enough for a round, and each part has its turn. Copies of a recording
/// stand side by side, and every round gets some of each kind.
bool HasItsTurn(size_t utterance, size_t round, size_t numRounds) {
    return (utterance + utterance / numRounds) % numRounds == round;
}

} // namespace

std::vector<double> TrainPhones(const std::vector<labelled_speech>& speech,
                                const transition_model& transitions,
                                const std::vector<double>& floors, size_t numRounds,
                                size_t numThreads, std::vector<state_mixture>& mixtures) {
    const std::vector<state_mixture> likeliest = mixtures;
    const phone_loop loop(transitions, kScoreScale, kFollowPower);
    std::vector<double> progress;
    for (size_t round = 0; round < numRounds; ++round) {
        const std::vector<mixture_scorer> scorers(mixtures.begin(), mixtures.end());
        std::vector<rival_sums> sums(kShares, rival_sums(mixtures, floors.size()));
        ParallelFor(kShares, numThreads, [&](size_t share) {
            for (size_t i = share; i < speech.size(); i += kShares) {
                if (HasItsTurn(i, round, numRounds)) {
                    AddUtterance(speech[i], loop, scorers, sums[share]);
                }
            }
        });
        for (size_t share = 1; share < kShares; ++share) {
            sums[0].Add(sums[share]);
        }
        progress.push_back(sums[0].merit / std::max(sums[0].observations, 1.0));
        if (sums[0].observations > 0.0) {
            sums[0].Update(likeliest, floors, kPrior, mixtures);
        }
    }
    return progress;
}

} // namespace tessarin::training
