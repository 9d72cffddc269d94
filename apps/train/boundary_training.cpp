#include "apps/train/boundary_training.h"

#include <algorithm>
#include <cmath>

#include "apps/train/discriminative_update.h"
#include "apps/train/parallel.h"

namespace tessarin::training {
namespace {

/// Scores count for this much, so that alternatives a little worse than the best still have a say.
constexpr double kScoreScale = 0.15;
/// How many states of the chain a boundary may stray from where it is known to be.
constexpr size_t kReach = 9;
constexpr size_t kBand = 2 * kReach + 1;
/// Weight of the maximum-likelihood Gaussian in the update, in observations.
constexpr double kPrior = 150.0;
constexpr size_t kShares = 32; ///< the sums are taken in so many parts, whatever the threads

/// Forward-backward over the chain of an utterance's states, near the known division.
class chain_posteriors {
public:
    chain_posteriors(const labelled_speech& ofSpeech, const std::vector<mixture_scorer>& scorers,
                     const transition_model& transitions)
        : speech(ofSpeech), length(speech.state.size()), weights(length * kBand),
          forward(length * kBand), centre(length) {
        for (const phone_run& run : speech.runs) {
            for (size_t state = 0; state < kStates; ++state) {
                const size_t global = run.phone * kStates + state;
                chain.push_back(static_cast<uint16_t>(global));
                stay.push_back(std::pow(transitions.stay[global], kScoreScale));
                go.push_back(std::pow(1.0 - transitions.stay[global], kScoreScale));
            }
        }
        FindCentres();
        Weigh(scorers);
    }

    /// For each observation and place of the band the share of divisions that pass there, of those
    /// that keep the known phones or of all. Returns the logarithm of their sum, scaled.
    double Find(bool keepPhones, std::vector<double>& shares) {
        double logSum = 0.0;
        std::ranges::fill(forward, 0.0);
        for (size_t t = 0; t < length; ++t) {
            double sum = 0.0;
            for (size_t place = 0; place < kBand; ++place) {
                if (!IsAllowed(t, place, keepPhones)) {
                    continue;
                }
                double& value = forward[t * kBand + place];
                value = Arriving(t, place) * weights[t * kBand + place];
                sum += value;
            }
            if (!(sum > 0.0)) {
                return 0.0;
            }
            for (size_t place = 0; place < kBand; ++place) {
                forward[t * kBand + place] /= sum;
            }
            logSum += std::log(sum);
        }
        Backward(keepPhones, shares);
        return logSum;
    }

    size_t GetLength() const { return length; }
    bool Exists(size_t t, size_t place) const {
        return centre[t] + place >= kReach && centre[t] + place - kReach < chain.size();
    }
    uint16_t GlobalState(size_t t, size_t place) const { return chain[Position(t, place)]; }

private:
    size_t Position(size_t t, size_t place) const { return centre[t] + place - kReach; }

    void FindCentres() {
        for (size_t run = 0; run < speech.runs.size(); ++run) {
            const phone_run& phone = speech.runs[run];
            for (size_t t = phone.first; t < phone.first + phone.count; ++t) {
                centre[t] = run * kStates + speech.state[t] % kStates;
            }
        }
    }

    void Weigh(const std::vector<mixture_scorer>& scorers) {
        for (size_t t = 0; t < length; ++t) {
            double best = -1e300;
            for (size_t place = 0; place < kBand; ++place) {
                if (Exists(t, place)) {
                    const double score =
                        scorers[GlobalState(t, place)].Score(speech.observations[t]);
                    weights[t * kBand + place] = kScoreScale * score;
                    best = std::max(best, kScoreScale * score);
                }
            }
            for (size_t place = 0; place < kBand; ++place) {
                double& weight = weights[t * kBand + place];
                weight = Exists(t, place) ? std::exp(weight - best) : 0.0;
            }
        }
    }

    bool IsAllowed(size_t t, size_t place, bool keepPhones) const {
        return Exists(t, place) &&
               (!keepPhones || Position(t, place) / kStates == centre[t] / kStates);
    }

    double At(const std::vector<double>& values, size_t t, size_t position) const {
        const size_t shifted = position + kReach;
        return shifted >= centre[t] && shifted - centre[t] < kBand
                   ? values[t * kBand + shifted - centre[t]]
                   : 0.0;
    }

    double Arriving(size_t t, size_t place) const {
        const size_t position = Position(t, place);
        if (t == 0) {
            return position == 0 ? 1.0 : 0.0;
        }
        double value = At(forward, t - 1, position) * stay[position];
        if (position > 0) {
            value += At(forward, t - 1, position - 1) * go[position - 1];
        }
        return value;
    }

    void Backward(bool keepPhones, std::vector<double>& shares) const {
        shares.assign(length * kBand, 0.0);
        std::vector<double> backward(length * kBand, 0.0);
        for (size_t t = length; t-- > 0;) {
            double scale = 0.0;
            for (size_t place = 0; place < kBand; ++place) {
                if (!IsAllowed(t, place, keepPhones)) {
                    continue;
                }
                const size_t position = Position(t, place);
                double value = position + 1 == chain.size() ? 1.0 : 0.0;
                if (t + 1 < length) {
                    value = stay[position] * Leaving(backward, t + 1, position);
                    if (position + 1 < chain.size()) {
                        value += go[position] * Leaving(backward, t + 1, position + 1);
                    }
                }
                backward[t * kBand + place] = value;
                scale = std::max(scale, value);
            }
            double sum = 0.0;
            for (size_t place = 0; place < kBand; ++place) {
                double& value = backward[t * kBand + place];
                value = scale > 0.0 ? value / scale : 0.0;
                shares[t * kBand + place] = value * forward[t * kBand + place];
                sum += shares[t * kBand + place];
            }
            for (size_t place = 0; place < kBand && sum > 0.0; ++place) {
                shares[t * kBand + place] /= sum;
            }
        }
    }

    double Leaving(const std::vector<double>& backward, size_t t, size_t position) const {
        return At(backward, t, position) * At(weights, t, position);
    }

    const labelled_speech& speech;
    size_t length;
    std::vector<uint16_t> chain; ///< global states
    std::vector<double> stay;
    std::vector<double> go;
    std::vector<double> weights; ///< scaled likelihoods
    std::vector<double> forward;
    std::vector<size_t> centre; ///< where in the chain the known division is
};

void AddUtterance(const labelled_speech& speech, const std::vector<mixture_scorer>& scorers,
                  const transition_model& transitions, rival_sums& sums) {
    chain_posteriors posteriors(speech, scorers, transitions);
    std::vector<double> known;
    std::vector<double> all;
    const double logKnown = posteriors.Find(true, known);
    const double logAll = posteriors.Find(false, all);
    if (known.empty() || all.empty()) {
        return;
    }
    sums.merit += logKnown - logAll;
    sums.observations += static_cast<double>(posteriors.GetLength());
    for (size_t t = 0; t < posteriors.GetLength(); ++t) {
        for (size_t place = 0; place < kBand; ++place) {
            // What is known and chosen alike cancels out.
            const double difference = known[t * kBand + place] - all[t * kBand + place];
            if (std::abs(difference) >= kNegligibleShare) {
                const uint16_t state = posteriors.GlobalState(t, place);
                sums.Add(state, scorers[state], speech.observations[t], difference);
            }
        }
    }
}

} // namespace

std::vector<double> TrainBoundaries(const std::vector<labelled_speech>& speech,
                                    const transition_model& transitions,
                                    const std::vector<double>& floors, size_t numRounds,
                                    size_t numThreads, std::vector<state_mixture>& mixtures) {
    const std::vector<state_mixture> likeliest = mixtures;
    std::vector<double> progress;
    for (size_t round = 0; round < numRounds; ++round) {
        const std::vector<mixture_scorer> scorers(mixtures.begin(), mixtures.end());
        std::vector<rival_sums> sums(kShares, rival_sums(mixtures, floors.size()));
        ParallelFor(kShares, numThreads, [&](size_t share) {
            for (size_t i = share; i < speech.size(); i += kShares) {
                AddUtterance(speech[i], scorers, transitions, sums[share]);
            }
        });
        for (size_t share = 1; share < kShares; ++share) {
            sums[0].Add(sums[share]);
        }
        constexpr double kObservationsPerSecond = 1000.0 / kObservationMs;
        progress.push_back(kObservationsPerSecond * sums[0].merit /
                           std::max(sums[0].observations, 1.0));
        sums[0].Update(likeliest, floors, kPrior, mixtures);
    }
    return progress;
}

} // namespace tessarin::training
