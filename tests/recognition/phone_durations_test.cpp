#include "recognition/graph/phone_durations.h"

#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fixtures.h"

namespace tessarin::test {
namespace {

const std::vector<std::string> kAllLabels = {
    "x",  "m",  "p",  "b",  "v", "f", "ZH", "CH", "j",  "SH", "s",  "z",  "DH", "TH",
    "t",  "NG", "g",  "k",  "h", "r", "ER", "w",  "UH", "UW", "AW", "IY", "y",  "IH",
    "AE", "AY", "EY", "EH", "n", "d", "l",  "AA", "AH", "AO", "OW", "OY"};

TEST(PhoneDurations, FollowTheClasses) {
    const auto model = MakeLikelihoodModel(kAllLabels);
    phone_durations durations;
    durations.SetUp(*model);
    for (const auto& [labels, ms] :
         {std::pair<const char*, uint32_t>{"m b NG y n SH t", 90},
          {"g d s", 120},
          {"r OY AA l w ER", 150}, // 160, in whole observations of each of three states
          {"x", 250},
          {"H q XX", 200}}) {
        std::istringstream each(labels);
        for (std::string label; each >> label;) {
            EXPECT_EQ(durations.LabelDurationMs(label), ms) << label;
        }
    }
}

// Kept: the limits take the place of those that a host has loaded, for good.
TEST(PhoneDurations, BecomeTheLimitsOfTheModel) {
    const auto model = MakeLikelihoodModel(kAllLabels);
    std::istringstream own("m 600 x 900");
    ASSERT_TRUE(model->ReadConstraints(own));
    phone_durations().SetUp(*model);
    EXPECT_EQ(model->GetPhoneLimitMs("m"), 30);
    EXPECT_EQ(model->GetPhoneLimitMs("s"), 40);
    EXPECT_EQ(model->GetPhoneLimitMs("OW"), 50);
    EXPECT_EQ(model->GetPhoneLimitMs("x"), -1);
}

TEST(PhoneDurations, FallBackOnTheClassesForOtherModels) {
    const auto model = MakeLikelihoodModel({"x", "AA", "s", "t"});
    std::istringstream own("s 600");
    ASSERT_TRUE(model->ReadConstraints(own));
    phone_durations durations;
    durations.SetUp(*model);
    EXPECT_EQ(model->GetPhoneLimitMs("s"), -1);
    EXPECT_EQ(durations.LabelDurationMs("AA"), 160u);
    EXPECT_EQ(durations.LabelDurationMs("x"), 250u);
    // Kept: these stand in two classes, and here the first one counts.
    for (const char* label : {"s", "g", "d"}) {
        EXPECT_EQ(durations.LabelDurationMs(label), 90u) << label;
    }
    // Kept: nothing is forgotten, and the next model's limits take the place of the classes.
    durations.SetUp(*MakeLikelihoodModel(kAllLabels));
    EXPECT_EQ(durations.LabelDurationMs("s"), 120u);
}

TEST(PhoneDurations, AddUpOverWords) {
    phone_durations durations;
    EXPECT_EQ(durations.PhonemeStringMs("mAA"), 400u) << "the table is empty at first";
    durations.SetUp(*MakeLikelihoodModel(kAllLabels));
    EXPECT_EQ(durations.PhonemeStringMs(""), 0u);
    EXPECT_EQ(durations.PhonemeStringMs("mAAs"), 90u + 150 + 120);
    EXPECT_EQ(durations.PhonemeStringMs("m?QQA"), 90u + 200 + 200 + 200);
    token_list tokens;
    tokens.Add(kWordToken, 0, 1, {{{"m", "AAs", "x"}}, {{"m"}}});
    EXPECT_EQ(durations.MarkerFrames(tokens.markers[0]), (150u + 120 + 90) / 10);
    tokens.AddCut(100);
    EXPECT_EQ(durations.MarkerFrames(tokens.markers[1]), 0u);
}

} // namespace
} // namespace tessarin::test
