#include <cstring>
#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "session/live_weights.h"
#include "session/sample_ring.h"

namespace {

using namespace tessarin;

constexpr size_t kRest = 0;
constexpr size_t kLips = 1;

tessarin_live_frame FrameOf(int64_t startMs, int64_t endMs, const char* label) {
    tessarin_live_frame frame{startMs, endMs, 1, {}};
    std::strcpy(frame.weights[0].label, label);
    frame.weights[0].weight = 1.0f;
    return frame;
}

TEST(LiveWeights, LieOnLinesBetweenTheMiddlesOfFrames) {
    LiveWeights weights;
    LiveWeights::weights out;
    int64_t atMs = -1;
    const auto lipsAt = [&](int64_t timeMs) {
        EXPECT_EQ(weights.At(timeMs, out, atMs), kNoError);
        EXPECT_FLOAT_EQ(out[kLips] + out[kRest], 1.0f);
        return out[kLips];
    };
    EXPECT_EQ(lipsAt(500), 0.0f) << "at rest before the first frame";
    EXPECT_EQ(atMs, 0);
    weights.Add(std::vector{FrameOf(0, 40, "x"), FrameOf(40, 80, "m")});
    EXPECT_EQ(lipsAt(3), 0.0f);
    EXPECT_FLOAT_EQ(lipsAt(50), 0.75f);
    EXPECT_EQ(atMs, 50);
    EXPECT_EQ(lipsAt(60), 1.0f);
    EXPECT_EQ(lipsAt(std::numeric_limits<int64_t>::max()), 1.0f);
    EXPECT_EQ(atMs, 60) << "the newest";
}

TEST(LiveWeights, AreKnownForTenSeconds) {
    LiveWeights weights;
    LiveWeights::weights out;
    int64_t atMs = 0;
    for (int64_t startMs = 0; startMs < 60000; startMs += 100) {
        weights.Add(std::vector{FrameOf(startMs, startMs + 100, "m")});
    }
    EXPECT_EQ(weights.At(49949, out, atMs), kOutOfRange);
    EXPECT_EQ(out[kRest], 1.0f);
    EXPECT_EQ(weights.At(49950, out, atMs), kNoError);
    EXPECT_EQ(out[kLips], 1.0f);
}

TEST(SampleRing, KeepsOrderAndTakesWhatHasRoom) {
    SampleRing ring;
    ring.Open(5);
    int16_t next = 0;
    int16_t expected = 0;
    std::vector<int16_t> out(3);
    for (size_t round = 0; round < 20; ++round) { // around the end at each place
        const int16_t first = next;
        next = static_cast<int16_t>(
            next + static_cast<int16_t>(ring.Write(3, [&](size_t i) -> int16_t {
                return static_cast<int16_t>(first + static_cast<int16_t>(i));
            })));
        const size_t count = ring.Read(std::span(out).first(1 + round % 3));
        for (size_t i = 0; i < count; ++i) {
            EXPECT_EQ(out[i], expected++);
        }
        EXPECT_LE(next - expected, 5);
    }
    EXPECT_EQ(ring.GetWritten(), static_cast<uint64_t>(next));
    EXPECT_GT(expected, 20);
}

} // namespace
