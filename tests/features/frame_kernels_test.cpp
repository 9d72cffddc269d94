#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "features/decibel_power.h"
#include "features/half_complex_fft.h"
#include "features/power_spectrum.h"
#include "support/signals.h"

namespace tessarin {
namespace {

TEST(DecibelPower, IsTheMeanSquareOfTheDifference) {
    float previous = -100.0f;
    const std::vector<float> square = {100, -100, 100, -100};
    EXPECT_NEAR(DecibelPower(square, previous), 10 * std::log10(40000.0) + 0.5, 1e-4);
    EXPECT_EQ(previous, -100.0f);
}

TEST(DecibelPower, CarriesTheLastSampleFromBlockToBlock) {
    const std::vector<float> constant(160, 1000.0f);
    float previous = 0.0f;
    EXPECT_GT(DecibelPower(constant, previous), 30.0f);
    EXPECT_EQ(DecibelPower(constant, previous), 0.5f);
}

TEST(DecibelPower, NeverGoesBelowSilence) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const std::vector<float>& quiet :
         {std::vector<float>{0, 0, 0}, {0.1f, 0.2f, 0.1f}, {nan, nan, nan}}) {
        float previous = quiet.front();
        EXPECT_EQ(DecibelPower(quiet, previous), 0.5f);
    }
    float previous = 7.0f;
    EXPECT_EQ(DecibelPower({}, previous), 0.0f);
    EXPECT_EQ(previous, 7.0f);
}

std::vector<float> Spectrum(std::vector<float> samples, float* power) {
    const auto size = static_cast<uint32_t>(samples.size());
    ForwardHalfComplexFFT().Transform(samples.data(), size);
    *power = PowerSpectrum(samples, static_cast<int32_t>(size));
    samples.resize(size / 2 + 1);
    return samples;
}

TEST(PowerSpectrum, OfASineHasItsAmplitudeInItsBin) {
    float power = 0;
    const std::vector<float> bins = Spectrum(test::Sine(512, 40, 512, 1000), &power);
    EXPECT_NEAR(std::sqrt(power), 1000.0, 0.5);
    EXPECT_NEAR(bins[40], 1000.0 * 1000.0 * 512 / 4, 500.0);
    EXPECT_LT(bins[39] + bins[41], 1.0);
}

TEST(PowerSpectrum, KeepsTheEnergyOfTheSamples) {
    const std::vector<float> noise = test::WhiteNoise(256, 100.0f, 7);
    const double energy = std::inner_product(noise.begin(), noise.end(), noise.begin(), 0.0);
    double alternating = 0;
    for (size_t i = 0; i < noise.size(); ++i) {
        alternating += i % 2 == 0 ? noise[i] : -noise[i];
    }
    float power = 0;
    const std::vector<float> bins = Spectrum(noise, &power);
    const double sum = std::accumulate(bins.begin() + 1, bins.end(), 0.0);
    EXPECT_NEAR(bins[0] + 2 * sum + alternating * alternating / 256, energy, energy * 1e-5);
}

TEST(PowerSpectrum, HasNothingAtTheNyquistFrequency) {
    std::vector<float> alternating(64);
    for (size_t i = 0; i < alternating.size(); ++i) {
        alternating[i] = i % 2 == 0 ? 1000.0f : -1000.0f;
    }
    float power = 0;
    EXPECT_EQ(Spectrum(alternating, &power), std::vector<float>(33, 0.0f));
    EXPECT_EQ(power, 0.0f);
}

} // namespace
} // namespace tessarin
