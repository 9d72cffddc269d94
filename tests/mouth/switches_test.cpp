#include "mouth/switches.h"

#include <array>
#include <cstring>
#include <limits>
#include <random>

#include <gmock/gmock.h>

#include "mouth/switch_path.h"

namespace {

using tessarin::FindShapePath;
using tessarin::FindSwitches;
using tessarin::ShapeCosts;
using tessarin::ShapeMap;

ShapeMap Map() {
    return ShapeMap::Parse("set s\nshapes X A O\nclosed A\nrest X\nx X\np A\nAA O\n");
}

/// Frames of 33 ms, as the weights of x, p and AA.
std::vector<tessarin_frame> Frames(const std::vector<std::array<float, 3>>& weights) {
    std::vector<tessarin_frame> frames;
    for (const std::array<float, 3>& each : weights) {
        const auto i = static_cast<int32_t>(frames.size());
        tessarin_frame frame{i * 100 / 3, (i + 1) * 100 / 3, 3, {}};
        for (size_t k = 0; k < 3; ++k) {
            std::strcpy(frame.weights[k].label, std::array{"x", "p", "AA"}[k]);
            frame.weights[k].weight = each[k];
        }
        frames.push_back(frame);
    }
    return frames;
}

/// What a sequence costs, or infinity when it is not allowed.
double CostOf(const ShapeCosts& costs, const std::vector<uint32_t>& path, size_t seen,
              size_t held) {
    double sum = 0.0;
    std::vector<double> now;
    size_t lasted = 0;
    for (size_t i = 0; i < path.size(); ++i) {
        costs.Find(i, now);
        sum += now[path[i]];
        if (i > 0 && path[i] != path[i - 1]) {
            sum += tessarin::kChangeCost;
            if (lasted < seen || (lasted < held && !costs.IsClosed(path[i]))) {
                return std::numeric_limits<double>::infinity();
            }
            lasted = 0;
        }
        ++lasted;
    }
    return lasted >= seen ? sum : std::numeric_limits<double>::infinity();
}

TEST(ShapePath, IsTheCheapestOfAllSequences) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> weight(0.0f, 1.0f);
    const ShapeMap map = Map();
    constexpr size_t kFrames = 7;
    for (int trial = 0; trial < 60; ++trial) {
        std::vector<std::array<float, 3>> weights(kFrames);
        for (auto& each : weights) {
            each = {weight(random), weight(random), weight(random)};
        }
        const std::vector<tessarin_frame> frames = Frames(weights);
        const ShapeCosts costs(frames, map);
        const size_t seen = 1 + trial % 3;
        const size_t held = seen + static_cast<size_t>(trial) / 3 % 3;
        double least = std::numeric_limits<double>::infinity();
        std::vector<uint32_t> path(kFrames);
        for (size_t code = 0; code < 2187; ++code) { // 3 to the power of 7
            size_t rest = code;
            for (uint32_t& shape : path) {
                shape = static_cast<uint32_t>(rest % 3);
                rest /= 3;
            }
            least = std::min(least, CostOf(costs, path, seen, held));
        }
        const std::vector<uint32_t> found = FindShapePath(costs, seen, held);
        EXPECT_NEAR(CostOf(costs, found, seen, held), least, 1e-9) << trial;
    }
}

TEST(Switches, RestInPausesAlone) {
    // Three frames that rest within a sound are a pause, one is the way to the next sound.
    const auto frames = Frames({{1, 0, 0},
                                {1, 0, 0},
                                {0, 0, 1},
                                {0, 0, 1},
                                {.8f, 0, .2f},
                                {0, 0, 1},
                                {0, 0, 1},
                                {.8f, 0, .2f},
                                {.9f, 0, .1f},
                                {.8f, 0, .2f},
                                {0, 0, 1},
                                {0, 0, 1}});
    std::vector<std::pair<int32_t, uint32_t>> found;
    for (const tessarin_switch& each : FindSwitches(frames, Map(), 0)) {
        found.emplace_back(each.start_ms, each.shape);
    }
    EXPECT_THAT(found, testing::ElementsAre(testing::Pair(0, 0), testing::Pair(66, 2),
                                            testing::Pair(233, 0), testing::Pair(333, 2)));
}

TEST(Switches, NeverMissClosedLips) {
    // One frame of closed lips in a held vowel: they are shown for two, whatever the hold.
    std::vector<std::array<float, 3>> weights(20, {0, 0, 1});
    weights[9] = {0, .9f, .1f};
    for (const int32_t holdMs : {0, 200}) {
        const auto switches = FindSwitches(Frames(weights), Map(), holdMs);
        ASSERT_EQ(switches.size(), 3u) << holdMs;
        EXPECT_EQ(switches[1].shape, 1u);
        EXPECT_LE(switches[1].start_ms, 300);
        EXPECT_GT(switches[2].start_ms, 300);
        EXPECT_GE(switches[2].start_ms - switches[1].start_ms, std::max(66, holdMs));
    }
    // Soft ones win against rest.
    const auto soft = FindSwitches(
        Frames({{1, 0, 0}, {1, 0, 0}, {.7f, .3f, 0}, {.7f, .3f, 0}, {1, 0, 0}, {1, 0, 0}}), Map(),
        0);
    ASSERT_EQ(soft.size(), 3u);
    EXPECT_EQ(soft[1].shape, 1u);
}

TEST(Switches, OfNoFramesRest) {
    const auto switches = FindSwitches({}, Map(), 100);
    ASSERT_EQ(switches.size(), 1u);
    EXPECT_EQ(switches[0].shape, 0u);
    EXPECT_EQ(FindSwitches(Frames({{0, 0, 1}}), Map(), 10000).front().shape, 2u)
        << "a track that is shorter than the hold";
}

} // namespace
