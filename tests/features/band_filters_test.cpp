#include "features/band_filters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace tessarin {
namespace {

constexpr int32_t kHalf = 256;
constexpr float kRate = 16000.0f;
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::vector<float> Energies(const std::vector<tagBandFilter>& filters,
                            const std::vector<float>& power) {
    CBandFilterBank bank;
    bank.SetFilters(filters);
    EXPECT_TRUE(bank.Prepare(static_cast<int32_t>(power.size()) - 1, kRate));
    std::vector<float> energies(filters.size(), -1.0f);
    bank.Apply(power, energies);
    return energies;
}

/// One band, straight from the definition.
float PlainEnergy(const tagBandFilter& band, const std::vector<float>& power) {
    const int half = static_cast<int>(power.size()) - 1;
    const float width = kRate / static_cast<float>(half * 2);
    float sum = 0;
    float weights = 0;
    for (int i = static_cast<int>(band.low / width);
         i <= std::min(static_cast<int>(band.high / width), half); ++i) {
        const float f = static_cast<float>(i) * width;
        float weight = 0;
        if (f < band.low) {
            weight = 0;
        } else if (f > band.low && f < band.centre) {
            weight = (f - band.low) / (band.centre - band.low);
        } else if (f < band.high) {
            weight = (band.high - f) / (band.high - band.centre);
        }
        weights += weight;
        sum += weight * power[static_cast<size_t>(i)];
    }
    const float mean = sum / weights;
    return mean < 1 ? 0 : std::log10(mean);
}

std::vector<float> Slope() {
    std::vector<float> power(kHalf + 1);
    for (size_t i = 0; i < power.size(); ++i) {
        power[i] = static_cast<float>((i * i * 7919) % 100003);
    }
    return power;
}

TEST(BandFilters, AgreeWithThePlainLoopToTheBit) {
    const std::vector<float> power = Slope();
    std::vector<tagBandFilter> filters;
    for (float low = 0.0f; low < 7000.0f; low += 93.7f) {
        filters.push_back({low, low + 0.11f * low + 40.0f, low + 0.25f * low + 90.0f, 0});
    }
    filters.push_back({31.25f, 62.5f, 93.75f, 0}); // edges on bins
    filters.push_back({1000, 1000, 2000, 0});      // no rising side
    filters.push_back({1000, 2000, 2000, 0});      // no falling side
    filters.push_back({7000, 8000, 9000, 0});      // beyond the last bin
    filters.push_back({3000, 1000, 2000, 0});      // inside out
    for (size_t i = 0; i < filters.size(); ++i) {
        const float expected = PlainEnergy(filters[i], power);
        EXPECT_EQ(Energies({filters[i]}, power)[0], std::isnan(expected) ? 0.0f : expected) << i;
    }
}

TEST(BandFilters, TakeAMeanBelowOneForSilence) {
    const tagBandFilter band = {500, 1000, 1500, 0};
    EXPECT_EQ(Energies({band}, std::vector<float>(kHalf + 1, 0.99f))[0], 0.0f);
    EXPECT_GT(Energies({band}, std::vector<float>(kHalf + 1, 1.01f))[0], 0.0f);
}

TEST(BandFilters, SurviveAnyNumbers) {
    const std::vector<float> power = Slope();
    for (const tagBandFilter& band : std::vector<tagBandFilter>{{kNan, kNan, kNan, 0},
                                                                {-kInfinity, 0, kInfinity, 0},
                                                                {-1e30f, 100, 1e30f, 0},
                                                                {9000, 9500, 9900, 0},
                                                                {40, 41, 42, 0},
                                                                {0, 0, 0, 0}}) {
        const std::vector<float> energies = Energies({band}, power);
        EXPECT_TRUE(energies[0] == 0.0f || energies[0] > 1.0f) << band.low;
    }
    for (float rate : {0.0f, -1.0f, kNan, kInfinity}) {
        CBandFilterBank bank;
        bank.SetFilters(std::vector<tagBandFilter>{{100, 200, 300, 0}});
        std::vector<float> energies(1);
        if (bank.Prepare(kHalf, rate)) {
            bank.Apply(power, energies);
        }
    }
}

TEST(BandFilters, FollowTheTransformSizeAndTheRate) {
    CBandFilterBank bank;
    bank.SetFilters(std::vector<tagBandFilter>{{0, 1000, 2000, 0}});
    std::vector<float> energies(1);
    std::vector<float> low(kHalf + 1, 0.0f);
    std::fill(low.begin(), low.begin() + 64, 1e6f); // up to 2000 Hz at 16000 Hz
    ASSERT_TRUE(bank.Prepare(kHalf, kRate));
    bank.Apply(low, energies);
    EXPECT_FLOAT_EQ(energies[0], 6.0f);
    ASSERT_TRUE(bank.Prepare(kHalf, kRate / 2)); // now up to 1000 Hz: half the triangle
    bank.Apply(low, energies);
    EXPECT_NEAR(energies[0], 6.0 - std::log10(2.0), 0.01);
}

TEST(BandFilters, RefuseABankThatCoversTooMuch) {
    CBandFilterBank bank;
    bank.SetFilters(std::vector<tagBandFilter>(5000, {0, 1000, 9000, 0}));
    EXPECT_FALSE(bank.Prepare(1024, kRate));
    EXPECT_TRUE(bank.Prepare(512, kRate));
}

} // namespace
} // namespace tessarin
