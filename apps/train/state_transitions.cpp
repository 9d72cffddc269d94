#include "apps/train/state_transitions.h"

#include <algorithm>
#include <numeric>

namespace tessarin::training {

transition_model CountTransitions(const std::vector<labelled_speech>& speech, size_t numPhones) {
    constexpr double kUnseen = 0.5; // added to each count of a pair
    std::vector<double> observations(numPhones * kStates, 0.0);
    std::vector<double> visits(numPhones * kStates, 0.0);
    transition_model model;
    model.follow.assign(numPhones, std::vector<double>(numPhones, kUnseen));
    for (const labelled_speech& each : speech) {
        if (each.isChanged) {
            continue;
        }
        for (const uint16_t state : each.state) {
            observations[state] += 1.0;
        }
        for (size_t i = 0; i < each.runs.size(); ++i) {
            const size_t phone = each.runs[i].phone;
            for (size_t state = 0; state < kStates; ++state) {
                visits[phone * kStates + state] += 1.0;
            }
            if (i + 1 < each.runs.size()) {
                model.follow[phone][each.runs[i + 1].phone] += 1.0;
            }
        }
    }
    for (size_t state = 0; state < visits.size(); ++state) {
        const double stay =
            observations[state] > 0.0 ? 1.0 - visits[state] / observations[state] : 0.5;
        model.stay.push_back(std::clamp(stay, 0.05, 0.98));
    }
    for (std::vector<double>& row : model.follow) {
        const double sum = std::accumulate(row.begin(), row.end(), 0.0);
        for (double& probability : row) {
            probability /= sum;
        }
    }
    return model;
}

} // namespace tessarin::training
