#include "base/flog.h"

#include <atomic>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "base/log_file.h"
#include "support/logged_lines.h"
#include "support/temp_file.h"

namespace tessarin {

namespace {

using test::LoggedLines;
using testing::ElementsAre;

TEST(flog, WritesEnterAndLeaveOfNestedScopes) {
    EXPECT_THAT(LoggedLines([] {
                    const flog outer("Outer");
                    { const flog inner("CResampler::Instantiate", "%d %d", 16000, 1); }
                    flog::Message("HMM Magic %x %d", 0x7a68u, 2);
                }),
                ElementsAre("Enter: Outer", "Enter: CResampler::Instantiate16000 1",
                            "Leave: CResampler::Instantiate", "HMM Magic 7a68 2", "Leave: Outer"));
}

TEST(flog, LeavesWhenTheStackUnwinds) {
    EXPECT_THAT(LoggedLines([] {
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
    EXPECT_THAT(LoggedLines([&older] { older.reset(); }), ElementsAre("Leave: "));
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

TEST(flog, LogThatDoesNotOpenEndsTheOneBefore) {
    const test::TempFile file(".log");
    ASSERT_GT(OpenLog(file.Path()), 0);
    EXPECT_EQ(OpenLog("no-such-folder/trace.log"), 0);
    EXPECT_EQ(OpenedLog(), nullptr);
    { const flog scope("Unheard"); }
    CloseLog();
    EXPECT_THAT(file.Content(), testing::EndsWith("\n\n")) << "the opening banner alone";
}

TEST(flog, ThreadsDoNotMixTheirLines) {
    const std::vector<std::string> lines = LoggedLines([] {
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

TEST(flog, LogMayEndWhileThreadsTrace) {
    std::atomic<bool> isOver = false;
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([&isOver] {
            while (!isOver) {
                const flog scope("Thread", " %s", "parameter");
                flog::Message("message");
            }
        });
    }
    const test::TempFile file(".log");
    for (int i = 0; i < 30; ++i) {
        ASSERT_GT(OpenLog(file.Path()), 0);
        if (i % 3 == 0) {
            ASSERT_GT(OpenLog(file.Path()), 0); // in its place
        }
        while (file.Content().find("message") == std::string::npos) {
            std::this_thread::yield();
        }
        CloseLog();
        const std::string content = file.Content();
        ASSERT_THAT(content, testing::StartsWith("**** Starting"));
        ASSERT_THAT(content.substr(content.rfind("****")), testing::EndsWith("\n\n"));
    }
    isOver = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace

} // namespace tessarin
