#include "base/timed_progress.h"

#include <chrono>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tessarin/progress_sink.h"

namespace tessarin {
namespace {

using testing::ElementsAre;
using testing::Pair;

class counting_sink final : public ProgressSink {
public:
    void SetStatus(const char*) override {}
    bool OnProgress(uint32_t done, uint32_t total) override {
        calls.emplace_back(done, total);
        return done == 7;
    }

    std::vector<std::pair<uint32_t, uint32_t>> calls;
};

TEST(TimedProgress, ReportsByStepAndByTime) {
    counting_sink sink;
    timed_progress progress(&sink);
    EXPECT_FALSE(progress.Report(1, 9, true));
    EXPECT_FALSE(progress.Report(2, 9, false));
    std::this_thread::sleep_for(std::chrono::milliseconds(510));
    EXPECT_FALSE(progress.Report(3, 9, false));
    EXPECT_FALSE(progress.Report(4, 9, false)); // the time counts from the last report
    EXPECT_TRUE(progress.Report(7, 9, true));
    EXPECT_THAT(sink.calls, ElementsAre(Pair(1, 9), Pair(3, 9), Pair(7, 9)));
    EXPECT_FALSE(timed_progress(nullptr).Report(7, 9, true));
}

} // namespace
} // namespace tessarin
