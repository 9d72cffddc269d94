#include "recognition/live/live_flusher.h"

#include <limits>

#include <gtest/gtest.h>

#include "base/crit_section.h"
#include "fixtures.h"
#include "recognition/live/heard_frames.h"
#include "results/concrete_sync_marker_collection.h"

namespace tessarin::test {
namespace {

/// Fifty observations of 10 ms of the first phoneme.
struct heard_silence {
    explicit heard_silence(int64_t age = 0) : flusher(*model, heard, 10.0, age) {
        for (int i = 0; i < 50; ++i) {
            heard.Push(heard.TakeRow(12), 0, 0.0f, {});
        }
    }

    std::unique_ptr<CAccousticHMM> model = MakeLikelihoodModel({"x", "AA", "IY", "s"});
    CCritSection lock;
    heard_frames heard{lock};
    live_flusher flusher;
};

TEST(LiveFlusher, LivesLongerThan32BitsOfMilliseconds) {
    constexpr int64_t kLast = std::numeric_limits<int32_t>::max() / 10; // of 10 ms
    for (const int64_t age : {kLast - 5, kLast, kLast * 10, int64_t{1} << 40}) {
        SCOPED_TRACE(age);
        heard_silence live(age);
        const std::optional<int64_t> end = live.flusher.EndBefore(100);
        ASSERT_EQ(end, (age + 40) * 10);
        EXPECT_EQ(live.flusher.TakePath(*end, 0), 40u);
        EXPECT_EQ(live.flusher.EndBefore(60), std::nullopt); // 100 ms are less than twice that
        // An end that a host can still name takes what it says, and then all.
        EXPECT_EQ(live.flusher.TakePath(std::numeric_limits<int32_t>::max(), 0), 10u);
        CConcreteSyncMarkerCollection results;
        ASSERT_EQ(live.flusher.BuildMarkers(10, 0, results), 0);
        ASSERT_EQ(results.size(), 1);
        EXPECT_STREQ(results[0].label, "x");
        EXPECT_EQ(results[0].start, 5);
        EXPECT_EQ(results[0].end, 105);
    }
}

// Ends are middles of observations, and half the overlap later.
TEST(LiveFlusher, EndsHalfTheOverlapLaterButForMinusOne) {
    struct {
        int32_t endMs, overlapMs;
        size_t taken;
    } const cases[] = {{0, 40, 2},   {10, 40, 3}, {-1, 40, 1}, // Kept: of a first flush one
                       {100, 0, 10}, {-1, 0, 1},  {100, 40, 12}};
    for (const auto& [endMs, overlapMs, taken] : cases) {
        SCOPED_TRACE(testing::Message() << endMs << ' ' << overlapMs);
        EXPECT_EQ(heard_silence().flusher.TakePath(endMs, overlapMs), taken);
    }
}

} // namespace
} // namespace tessarin::test
