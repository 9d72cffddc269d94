#include "apps/train/phone_loop.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "apps/train/labelled_speech.h"

namespace tessarin::training {
namespace {

/// Silence is long and easily recognized, and would otherwise outweigh the phones.
constexpr double kSilenceWorth = 0.3;

/// For each state: the paths that lead to it, or away from it, as the sum of their weights, and as
/// that of their weights times what they are worth so far.
struct path_sums {
    explicit path_sums(size_t states) : weight(states), worth(states) {}

    /// Only their ratios count, so they are kept where they cannot vanish.
    void Scale() {
        const double sum = std::accumulate(weight.begin(), weight.end(), 0.0);
        for (size_t state = 0; state < weight.size() && sum > 0.0; ++state) {
            weight[state] /= sum;
            worth[state] /= sum;
        }
    }

    std::vector<double> weight;
    std::vector<double> worth;
};

/// Takes the paths through an observation: each state with its likelihood and what it is worth.
void Pass(path_sums& paths, const double* weights, size_t known) {
    for (size_t state = 0; state < paths.weight.size(); ++state) {
        paths.worth[state] += paths.weight[state] * FindWorth(state, known);
        paths.weight[state] *= weights[state];
        paths.worth[state] *= weights[state];
    }
}

/// The paths up to and with each observation.
std::vector<path_sums> FindBeginnings(const phone_loop& loop, const std::vector<double>& weights,
                                      const std::vector<uint16_t>& known) {
    const size_t states = loop.GetNumStates();
    std::vector<path_sums> beginnings(known.size(), path_sums(states));
    for (size_t t = 0; t < known.size(); ++t) {
        path_sums& paths = beginnings[t];
        if (t == 0) {
            for (size_t state = 0; state < states; state += kStates) {
                paths.weight[state] = 1.0;
            }
        } else {
            loop.Forward(beginnings[t - 1].weight.data(), paths.weight.data());
            loop.Forward(beginnings[t - 1].worth.data(), paths.worth.data());
        }
        Pass(paths, &weights[t * states], known[t]);
        paths.Scale();
    }
    return beginnings;
}

} // namespace

phone_loop::phone_loop(const transition_model& transitions, double scale, double followPower)
    : numPhones(transitions.follow.size()), stay(transitions.stay), go(transitions.stay),
      follow(numPhones * numPhones) {
    for (size_t state = 0; state < stay.size(); ++state) {
        stay[state] = std::pow(transitions.stay[state], scale);
        go[state] = std::pow(1.0 - transitions.stay[state], scale);
    }
    for (size_t first = 0; first < numPhones; ++first) {
        for (size_t second = 0; second < numPhones; ++second) {
            follow[first * numPhones + second] =
                std::pow(transitions.follow[first][second], followPower * scale);
        }
    }
}

void phone_loop::Forward(const double* before, double* after) const {
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

void phone_loop::Backward(const double* after, double* before) const {
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

double FindWorth(size_t state, size_t known) {
    if (state / kStates != known / kStates) {
        return 0.0;
    }
    return known / kStates == kSilencePhone ? kSilenceWorth : 1.0;
}

path_gains FindGains(const phone_loop& loop, const std::vector<double>& weights,
                     const std::vector<uint16_t>& known) {
    const size_t states = loop.GetNumStates();
    path_gains result;
    result.gains.resize(weights.size());
    if (known.empty()) {
        return result;
    }
    const std::vector<path_sums> beginnings = FindBeginnings(loop, weights, known);
    const std::vector<double>& whole = beginnings.back().worth; // the weights there add up to 1
    result.worth = std::accumulate(whole.begin(), whole.end(), 0.0);

    path_sums endings(states);
    std::ranges::fill(endings.weight, 1.0);
    for (size_t t = known.size(); t-- > 0;) {
        const path_sums& begun = beginnings[t];
        const double all = std::inner_product(begun.weight.begin(), begun.weight.end(),
                                              endings.weight.begin(), 0.0);
        for (size_t state = 0; state < states && all > 0.0; ++state) {
            const double passing = begun.weight[state] * endings.weight[state];
            const double worth = begun.worth[state] * endings.weight[state] +
                                 begun.weight[state] * endings.worth[state];
            result.gains[t * states + state] = (worth - passing * result.worth) / all;
        }
        Pass(endings, &weights[t * states], known[t]);
        path_sums earlier(states);
        loop.Backward(endings.weight.data(), earlier.weight.data());
        loop.Backward(endings.worth.data(), earlier.worth.data());
        endings = std::move(earlier);
        endings.Scale();
    }
    return result;
}

} // namespace tessarin::training
