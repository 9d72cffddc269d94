#include "features/lpc.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace tessarin {
namespace {

using ::testing::Each;
using ::testing::FloatNear;

struct analysis {
    std::vector<float> residual;
    std::array<float, 32> coefficients{};
    std::array<float, 32> reflection{};
    std::array<float, 32> logAreas{};
};

analysis Analysed(const std::vector<float>& x, int32_t order) {
    analysis result;
    result.residual.resize(x.size(), -1.0f);
    LPC().Analyse(x.data(), static_cast<int32_t>(x.size()), order, result.residual.data(),
                  result.coefficients.data(), result.reflection.data(), result.logAreas.data());
    return result;
}

/// The impulse response of 1 / (1 - a z^-1 - b z^-2), long enough to have died away.
std::vector<float> Resonance(float a, float b) {
    std::vector<float> x(400, 0.0f);
    x[0] = 1.0f;
    x[1] = a;
    for (size_t i = 2; i < x.size(); ++i) {
        x[i] = a * x[i - 1] + b * x[i - 2];
    }
    return x;
}

TEST(LPC, FindsTheFilterOfAResonance) {
    const analysis found = Analysed(Resonance(1.2f, -0.72f), 2);
    EXPECT_NEAR(found.coefficients[1], 1.2f, 1e-4);
    EXPECT_NEAR(found.coefficients[2], -0.72f, 1e-4);
    EXPECT_NEAR(found.reflection[1], 1.2f / 1.72f, 1e-4); // a / (1 - b)
    EXPECT_NEAR(found.reflection[2], -0.72f, 1e-4);
    EXPECT_NEAR(found.logAreas[2], std::log(1.72f / 0.28f), 1e-3);
    EXPECT_THAT(found.residual, Each(FloatNear(0.0f, 1e-4f)));
}

TEST(LPC, LeavesTheSamplesBeforeItsReachOutOfTheResidual) {
    const std::vector<float> x = {5, -3, 8, 1, -9, 2};
    const analysis found = Analysed(x, 2);
    EXPECT_EQ(found.residual[2], 0.0f);
    EXPECT_EQ(found.residual[3],
              x[3] - (found.coefficients[1] * x[2] + found.coefficients[2] * x[1]));
}

TEST(LPC, FindsNothingInSilence) {
    const analysis found = Analysed(std::vector<float>(50, 0.0f), 10);
    EXPECT_THAT(found.coefficients, Each(0.0f));
    EXPECT_THAT(found.reflection, Each(0.0f));
    EXPECT_THAT(found.logAreas, Each(0.0f));
    EXPECT_THAT(found.residual, Each(0.0f));
}

TEST(LPC, HoldsTheOrderToWhatThereIs) {
    const std::vector<float> x = {1, 2, 3};
    for (int32_t order : {-5, 0, 31, 1000}) {
        const analysis found = Analysed(x, order);
        EXPECT_EQ(found.coefficients[3], 0.0f) << order;
        EXPECT_TRUE(std::isfinite(found.coefficients[2])) << order;
    }
    EXPECT_EQ(LPC().Analyse(x.data(), 3, 2, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(LPC().Analyse(nullptr, 0, 2, nullptr, nullptr, nullptr, nullptr), 0);
}

} // namespace
} // namespace tessarin
