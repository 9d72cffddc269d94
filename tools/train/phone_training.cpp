#include "tools/train/phone_training.h"

#include <algorithm>
#include <cmath>

#include "tools/train/discriminative_update.h"
#include "tools/train/parallel.h"

namespace tessarin::training {
namespace {

/// Scores count for this much, so that phones a little worse than the best still have a say.
constexpr double kScoreScale = 0.15;
/// Power of the probability that a phone follows another, as the search without a text takes it.
constexpr double kFollowPower = 6.0;
/// Weight of the Gaussian before this training in the update, in observations.
constexpr double kPrior = 100.0;
constexpr size_t kShares = 32; ///< the sums are taken in so many parts, whatever the threads

double Normalise(double* values, size_t count) {
    double sum = 0.0;
    for (size_t i = 0; i < count; ++i) {
        sum += values[i];
    }
    for (size_t i = 0; i < count && sum > 0.0; ++i) {
        values[i] /= sum;
    }
    return sum;
}

/// The loop of all phones, in scaled probabilities.
class phone_loop {
public:
    explicit phone_loop(const transition_model& transitions)
        : numPhones(transitions.follow.size()), stay(transitions.stay), go(transitions.stay),
          follow(numPhones * numPhones) {
        for (size_t state = 0; state < stay.size(); ++state) {
            stay[state] = std::pow(transitions.stay[state], kScoreScale);
            go[state] = std::pow(1.0 - transitions.stay[state], kScoreScale);
        }
        for (size_t first = 0; first < numPhones; ++first) {
            for (size_t second = 0; second < numPhones; ++second) {
                follow[first * numPhones + second] =
                    std::pow(transitions.follow[first][second], kFollowPower * kScoreScale);
            }
        }
    }

    size_t GetNumStates() const { return stay.size(); }

    /// What arrives in each state at an observation, of what was in each at the one before.
    void Forward(const double* before, double* after) const {
        std::vector<double> entry(numPhones);
        for (size_t first = 0; first < numPhones; ++first) {
            const size_t last = first * kStates + kStates - 1;
            const double leaving = before[last] * go[last];
            for (size_t second = 0; second < numPhones; ++second) {
                entry[second] += leaving * follow[first * numPhones + second];
            }
        }
        for (size_t state = 0; state < stay.size(); ++state) {
            const double arriving =
                state % kStates == 0 ? entry[state / kStates] : before[state - 1] * go[state - 1];
            after[state] = before[state] * stay[state] + arriving;
        }
    }

    /// What each state leads to at the next observation, where states are worth `after`.
    void Backward(const double* after, double* before) const {
        for (size_t phone = 0; phone < numPhones; ++phone) {
            double leaving = 0.0;
            for (size_t second = 0; second < numPhones; ++second) {
                leaving += follow[phone * numPhones + second] * after[second * kStates];
            }
            for (size_t local = 0; local < kStates; ++local) {
                const size_t state = phone * kStates + local;
                const double next = local + 1 < kStates ? after[state + 1] : leaving;
                before[state] = stay[state] * after[state] + go[state] * next;
            }
        }
    }

private:
    size_t numPhones;
    std::vector<double> stay;
    std::vector<double> go;
    std::vector<double> follow;
};

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

/// For each observation the share of the paths through the loop that pass each state.
std::vector<double> FindShares(const std::vector<double>& weights, const phone_loop& loop) {
    const size_t states = loop.GetNumStates();
    const size_t length = weights.size() / states;
    std::vector<double> shares(weights.size());
    for (size_t t = 0; t < length; ++t) {
        double* row = &shares[t * states];
        if (t == 0) {
            for (size_t state = 0; state < states; state += kStates) {
                row[state] = 1.0;
            }
        } else {
            loop.Forward(row - states, row);
        }
        for (size_t state = 0; state < states; ++state) {
            row[state] *= weights[t * states + state];
        }
        Normalise(row, states);
    }
    std::vector<double> after(states, 1.0);
    std::vector<double> heard(states);
    for (size_t t = length; t-- > 0;) {
        double* row = &shares[t * states];
        for (size_t state = 0; state < states; ++state) {
            row[state] *= after[state];
            heard[state] = after[state] * weights[t * states + state];
        }
        Normalise(row, states);
        loop.Backward(heard.data(), after.data());
        Normalise(after.data(), states);
    }
    return shares;
}

void AddUtterance(const labelled_speech& speech, const phone_loop& loop,
                  const std::vector<mixture_scorer>& scorers, rival_sums& sums) {
    const std::vector<double> shares = FindShares(Weigh(speech, scorers), loop);
    const size_t states = loop.GetNumStates();
    for (size_t t = 0; t < speech.state.size(); ++t) {
        const double* row = &shares[t * states];
        for (size_t state = 0; state < states; ++state) {
            const double known = state == speech.state[t] ? 1.0 : 0.0;
            sums.Add(state, scorers[state], speech.observations[t], known - row[state]);
        }
        sums.logKnown += row[speech.state[t]];
    }
    sums.observations += static_cast<double>(speech.state.size());
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
    const phone_loop loop(transitions);
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
        progress.push_back(sums[0].logKnown / std::max(sums[0].observations, 1.0));
        if (sums[0].observations > 0.0) {
            sums[0].Update(likeliest, floors, kPrior, mixtures);
        }
    }
    return progress;
}

} // namespace tessarin::training
