#include "frame/flog.h"

#include "frame/log_file.h"
#include "support/temp_file.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace tessarin {

namespace {

using testing::ElementsAre;

/// The lines that `body` writes to a log, without the two banners and their blank lines.
std::vector<std::string> Logged(const std::function<void()>& body) {
    const test::TempFile file(".log");
    EXPECT_GT(OpenLog(file.Path()), 0);
    body();
    CloseLog();
    std::istringstream content(file.Content());
    std::vector<std::string> lines;
    for (std::string line; std::getline(content, line);) {
        lines.push_back(line);
    }
    EXPECT_GE(lines.size(), 4u);
    return {lines.begin() + 2, lines.end() - 2};
}

TEST(flog, WritesEnterAndLeaveOfNestedScopes) {
    EXPECT_THAT(Logged([] {
                    const flog outer("Outer");
                    { const flog inner("CResampler::Instantiate", "%d %d", 16000, 1); }
                    flog::Message("HMM Magic %x %d", 0x7a68u, 2);
                }),
                ElementsAre("Enter: Outer", "Enter: CResampler::Instantiate16000 1",
                            "Leave: CResampler::Instantiate", "HMM Magic 7a68 2", "Leave: Outer"));
}

TEST(flog, LeavesWhenTheStackUnwinds) {
    EXPECT_THAT(Logged([] {
                    EXPECT_THROW(
                        {
                            const flog scope("Thrower");
                            throw std::runtime_error("");
                        },
                        std::runtime_error);
                }),
                ElementsAre("Enter: Thrower", "Leave: Thrower"));
}

TEST(flog, ScopeOlderThanTheLogLeavesWithoutAName) {
    auto older = std::make_unique<flog>("Older");
    EXPECT_THAT(Logged([&older] { older.reset(); }), ElementsAre("Leave: "));
    const flog quiet("Nothing is open now");
    flog::Message("nor here");
}

TEST(flog, EveryLineIsInTheFileAtOnce) {
    const test::TempFile file(".log");
    ASSERT_GT(OpenLog(file.Path()), 0);
    const flog scope("Flushed");
    EXPECT_THAT(file.Content(), testing::EndsWith("Enter: Flushed\n"));
    CloseLog();
}

TEST(flog, ThreadsDoNotMixTheirLines) {
    const std::vector<std::string> lines = Logged([] {
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([] {
                for (int i = 0; i < 50; ++i) {
                    const flog scope("Thread", " %s", "parameter");
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
    EXPECT_EQ(lines.size(), 400u);
    EXPECT_THAT(lines, testing::Each(testing::AnyOf("Enter: Thread parameter", "Leave: Thread")));
}

} // namespace

} // namespace tessarin
