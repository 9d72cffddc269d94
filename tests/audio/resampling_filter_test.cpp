#include "audio/resampling_filter.h"

#include <cmath>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace tessarin {
namespace {

struct design {
    int32_t numPhases;
    size_t tapsPerPhase;
    float fc;
};

constexpr design kDesigns[] = {
    {1, 47, 0.26666668f}, {2, 71, 1.0f}, {160, 43, 0.2902494f}, {640, 71, 1.0f}};

/// The filter in the order of its taps, not of its phases.
std::vector<float> Taps(const design& d) {
    const size_t phases = static_cast<size_t>(d.numPhases);
    std::vector<float> stored(phases * d.tapsPerPhase);
    DesignResamplingFilter(stored, d.numPhases, d.fc);
    std::vector<float> taps(stored.size());
    for (size_t i = 0; i < taps.size(); ++i) {
        taps[i] = stored[i % phases * d.tapsPerPhase + i / phases];
    }
    return taps;
}

double Gain(const std::vector<float>& taps, double radiansPerTap) {
    double real = 0;
    double imaginary = 0;
    for (size_t i = 0; i < taps.size(); ++i) {
        real += taps[i] * std::cos(radiansPerTap * static_cast<double>(i));
        imaginary += taps[i] * std::sin(radiansPerTap * static_cast<double>(i));
    }
    return std::hypot(real, imaginary);
}

TEST(ResamplingFilter, IsTheWindowWhereTheSincIsFlat) {
    constexpr float kLowCutoff = 1e-4f; // sin(x) / x stays within 1e-6 of 1
    const std::vector<float> taps = Taps({1, 12, kLowCutoff});
    // At 0, 60, 90, 120 and 180 degrees the cosines are whole or half.
    const std::pair<size_t, double> window[] = {
        {0, 0.00006}, {2, 0.055645}, {3, 0.21747}, {4, 0.520575}, {6, 1.0}};
    for (const auto& [tap, value] : window) {
        EXPECT_NEAR(static_cast<double>(taps[tap]) / (0.9 * 1e-4), value, 2e-6) << tap;
    }
}

TEST(ResamplingFilter, IsEvenAboutHalfItsLength) {
    for (const design& d : kDesigns) {
        SCOPED_TRACE(d.numPhases);
        const std::vector<float> taps = Taps(d);
        const size_t length = taps.size();
        for (size_t i = 1; i < length; ++i) {
            ASSERT_NEAR(taps[i], taps[length - i], 1e-6) << i;
        }
        // The largest taps are the one at N/2, or the two beside it.
        const float middle = taps[length / 2];
        EXPECT_NEAR(middle, 0.9f * d.fc, length % 2 == 0 ? 1e-6 : 0.02);
        EXPECT_GT(middle, taps[length / 2 - 1]);
    }
}

TEST(ResamplingFilter, PassesTheBandAtNineTenthsAndStopsImages) {
    constexpr double kPi = 3.141592653589793;
    for (const design& d : kDesigns) {
        SCOPED_TRACE(d.numPhases);
        const std::vector<float> taps = Taps(d);
        const double edge = kPi * static_cast<double>(d.fc) / d.numPhases;
        EXPECT_NEAR(Gain(taps, 0.0), 0.9 * d.numPhases, 0.01 * d.numPhases);
        EXPECT_NEAR(Gain(taps, 0.5 * edge), 0.9 * d.numPhases, 0.01 * d.numPhases);
        if (d.fc < 1.0f || d.numPhases > 2) {
            EXPECT_LT(Gain(taps, 1.7 * edge), 0.001 * d.numPhases);
        }
    }
}

} // namespace
} // namespace tessarin
