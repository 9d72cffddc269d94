#pragma once

#include <cmath>

#include "features/spectral_feature_descriptor.h"

namespace tessarin::test {

inline float MelToHz(float mel) {
    return 700.0f * (std::pow(10.0f, mel / 2595.0f) - 1.0f);
}

inline float HzToMel(float hz) {
    return 2595.0f * std::log10(1.0f + hz / 700.0f);
}

/// Replaces the bands by `numBands` triangles from `lowHz` to `highHz`, spaced evenly in mel.
inline void SetMelBands(CSpectralFeatureDescriptor& descriptor, int32_t numBands,
                        float lowHz = 100.0f, float highHz = 7800.0f) {
    const float low = HzToMel(lowHz);
    const float step = (HzToMel(highHz) - low) / static_cast<float>(numBands + 1);
    descriptor.numBands = numBands;
    descriptor.bands.RemoveAll();
    for (int32_t i = 0; i < numBands; ++i) {
        const float edge = low + step * static_cast<float>(i);
        descriptor.bands.Add({MelToHz(edge), MelToHz(edge + step), MelToHz(edge + 2 * step), 0});
    }
}

} // namespace tessarin::test
