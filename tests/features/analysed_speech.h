#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "features/spectral_stream.h"
#include "features/test_descriptors.h"
#include "support/signals.h"

namespace tessarin::test {

inline constexpr int32_t kBands = 24;

/// The front end that most tests analyse with.
struct analysis {
    CSpectralFeatureDescriptor descriptor;
    analysis() { SetMelBands(descriptor, kBands); }
};

using observations = std::vector<std::vector<float>>;

inline observations ReadAll(CSpectralStream& stream, int32_t numFeatures) {
    observations all;
    for (uint32_t i = 0; i < stream.GetNumObservations(); ++i) {
        std::vector<float> features(static_cast<size_t>(numFeatures));
        float energy = 0;
        EXPECT_EQ(stream.GetObservation(features.data(), &energy), kNoError);
        all.push_back(features);
    }
    return all;
}

inline std::vector<float> Speechlike(size_t count) {
    std::vector<float> samples = WhiteNoise(count, 300.0f, 5);
    const std::vector<float> low = Sine(count, 210, 16000, 4000);
    const std::vector<float> high = Sine(count, 2900, 16000, 900);
    for (size_t i = 0; i < count; ++i) {
        samples[i] += low[i] * static_cast<float>(i % 4000) / 4000.0f + high[i];
    }
    return samples;
}

} // namespace tessarin::test
