#include "features/noise_floor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tessarin {
namespace {

using ::testing::ElementsAre;
using ::testing::FloatEq;

std::vector<float> Reduced(CNoiseFloor& floor, std::vector<float> energies) {
    floor.Reduce(energies);
    return energies;
}

TEST(NoiseFloor, LearnsATenthOfTheTenthFrame) {
    CNoiseFloor floor;
    for (int frame = 1; frame <= 10; ++frame) {
        const float level = static_cast<float>(frame);
        EXPECT_THAT(Reduced(floor, {level, 10 * level}), ElementsAre(level, 10 * level));
    }
    EXPECT_THAT(Reduced(floor, {5.0f, 5.0f}), ElementsAre(FloatEq(4.0f), 0.0f));
    EXPECT_THAT(Reduced(floor, {0.5f, 10.5f}), ElementsAre(0.0f, FloatEq(0.5f)));
}

TEST(NoiseFloor, UsesTheFirstInstalledFloorAtOnce) {
    CNoiseFloor floor;
    floor.Install(std::vector<float>{1.0f, 2.0f});
    floor.Install(std::vector<float>{9.0f, 9.0f});
    EXPECT_THAT(Reduced(floor, {3.0f, 1.0f}), ElementsAre(2.0f, 0.0f));
}

TEST(NoiseFloor, KeepsWhatItLearnedWhenLearningEnds) {
    CNoiseFloor floor;
    Reduced(floor, {20.0f});
    floor.StopLearning();
    EXPECT_THAT(Reduced(floor, {5.0f}), ElementsAre(3.0f));
    floor.Clear();
    EXPECT_THAT(Reduced(floor, {5.0f, 6.0f}), ElementsAre(5.0f, 6.0f));
}

} // namespace
} // namespace tessarin
