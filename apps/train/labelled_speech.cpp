#include "apps/train/labelled_speech.h"

#include <algorithm>
#include <cmath>

namespace tessarin::training {

std::vector<phone_run> FindRuns(const std::vector<phone_interval>& phones, double speed,
                                size_t numObservations) {
    const size_t numPhones = phones.size();
    if (numObservations < numPhones * kStates) {
        return {};
    }
    // Observation t is reported at t periods and a half, but says most about what is heard at t +
    // 1: its differences look back. The phone there is the one it is trained for.
    std::vector<size_t> starts(numPhones + 1, 0);
    for (size_t i = 1; i < numPhones; ++i) {
        const double place = phones[i].start_ms / speed / kObservationMs - 1.0;
        starts[i] =
            std::max(static_cast<size_t>(std::max(std::ceil(place), 0.0)), starts[i - 1] + kStates);
    }
    starts[numPhones] = numObservations;
    for (size_t i = numPhones; i-- > 1;) {
        starts[i] = std::min(starts[i], starts[i + 1] - kStates);
    }
    std::vector<phone_run> runs;
    for (size_t i = 0; i < numPhones; ++i) {
        runs.push_back({phones[i].phone, starts[i], starts[i + 1] - starts[i]});
    }
    return runs;
}

void DivideEvenly(labelled_speech& speech) {
    speech.state.resize(speech.observations.GetCount());
    for (const phone_run& run : speech.runs) {
        for (size_t i = 0; i < run.count; ++i) {
            speech.state[run.first + i] =
                static_cast<uint16_t>(run.phone * kStates + i * kStates / run.count);
        }
    }
}

} // namespace tessarin::training
