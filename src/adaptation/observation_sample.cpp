#include "adaptation/observation_sample.h"

#include <algorithm>
#include <cstdint>

#include "tessarin/observation_stream.h"

namespace tessarin {

error_code ObservationSample::Read(IObservationStream& stream) {
    values.clear();
    std::vector<float> observation(numFeatures);
    const uint32_t count = stream.GetNumObservations();
    size_t step = 1;
    for (uint32_t i = 0; i < count; ++i) {
        float energy = 0.0f;
        const error_code code = stream.GetObservation(observation.data(), &energy);
        if (code != kNoError) {
            return code;
        }
        if (i % step == 0) {
            values.insert(values.end(), observation.begin(), observation.end());
        }
        if (values.size() > kMost * numFeatures) {
            DropEverySecond();
            step *= 2;
        }
    }
    return kNoError;
}

void ObservationSample::DropEverySecond() {
    const size_t count = values.size() / numFeatures;
    for (size_t i = 1; 2 * i < count; ++i) {
        std::copy_n(values.begin() + static_cast<std::ptrdiff_t>(2 * i * numFeatures), numFeatures,
                    values.begin() + static_cast<std::ptrdiff_t>(i * numFeatures));
    }
    values.resize((count + 1) / 2 * numFeatures);
}

} // namespace tessarin
