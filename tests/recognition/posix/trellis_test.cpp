#include "recognition/trellis/trellis.h"

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/posix/process_limit.h"
#include "support/temp_file.h"

namespace tessarin::test {
namespace {

FrameHypoList HundredStates(uint32_t from) {
    FrameHypoList list(100);
    for (uint32_t n = 0; n < 100; ++n) {
        list.Insert({from + n, from + n / 2, -static_cast<double>(n)});
    }
    return list;
}

TEST(Trellis, TellsThatTheProcessHasTooManyFiles) {
    const TempFile path(".trellis");
    trellis store;
    EXPECT_EQ(store.Open(nullptr, 100, 100, 0), 2); // a sanitizer needs a file to look at the type
    const int next = dup(0);
    close(next);
    const process_limit limit(RLIMIT_NOFILE, static_cast<rlim_t>(next));
    EXPECT_EQ(store.Open(path.Path(), 100, 100, 0), 17);
}

TEST(Trellis, TellsThatTheDiskIsFull) {
    const TempFile path(".trellis");
    trellis store;
    ASSERT_EQ(store.Open(path.Path(), 100, 200, 0), 0);
    std::vector<double> scores(200);
    ASSERT_EQ(store.Push(7, HundredStates(7), scores), 0);
    const process_limit limit(RLIMIT_FSIZE, 600);
    EXPECT_EQ(store.Push(7, HundredStates(7), scores), 17);
}

TEST(Trellis, TellsThatTheFileWasCutOff) {
    const TempFile path(".trellis");
    trellis store;
    ASSERT_EQ(store.Open(path.Path(), 100, 200, 0), 0);
    std::vector<double> scores(200);
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(store.Push(7, HundredStates(7), scores), 0);
    }
    bool isCut = false;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        const std::string target = std::filesystem::read_symlink(entry.path(), ignored).string();
        if (target.starts_with(path.Path())) {
            isCut = truncate(entry.path().c_str(), 900) == 0;
        }
    }
    if (!isCut) {
        GTEST_SKIP() << "no way to an open file without a name";
    }
    EXPECT_EQ(store.BeginRead(), nullptr);
    EXPECT_EQ(store.ReadPrevious(), nullptr);
}

// Kept: the budget is soft, so the observation that passes it is still in memory.
TEST(Trellis, ReadsBackFromTheFileAndThenFromMemory) {
    const TempFile path(".trellis");
    trellis store;
    ASSERT_EQ(store.Open(path.Path(), 100, 1000, 2 * 416 - 1), 0);
    std::vector<double> scores(1000);
    for (uint32_t frame = 0; frame < 5; ++frame) {
        FrameHypoList list = HundredStates(10 * frame);
        list.Prune(-90.5);
        ASSERT_EQ(store.Push(10 * frame, list, scores), 0);
    }
    EXPECT_EQ(store.GetNumFrames(), 5u);
    EXPECT_EQ(store.GetNumFramesInFile(), 2u); // the pruned ones are smaller: 3 fit
    EXPECT_EQ(scores[40 + 90], -90.0);
    EXPECT_EQ(scores[40 + 91], 0.0) << "pruned";
    const uint32_t* map = store.BeginRead();
    for (uint32_t frame = 5; frame-- > 0; map = store.ReadPrevious()) {
        ASSERT_NE(map, nullptr) << frame;
        EXPECT_EQ(map[0], 10 * frame);
        EXPECT_EQ(map[90], 10 * frame + 45);
    }
    EXPECT_EQ(map, nullptr);
}

TEST(FrameHypoList, GivesUpTheFirstOfTheWorst) {
    FrameHypoList list(3);
    for (const frame_hypo& hypo : {frame_hypo{1, 0, -5.0}, frame_hypo{2, 0, -7.0},
                                   frame_hypo{3, 0, -7.0}, frame_hypo{4, 0, -7.0}}) {
        list.Insert(hypo);
    }
    EXPECT_EQ(list.Entries()[1].state, 2u) << "no better than the worst";
    list.Insert({5, 0, -6.0});
    list.Insert({6, 0, -1.0});
    EXPECT_EQ(list.Entries()[1].state, 5u);
    EXPECT_EQ(list.Entries()[2].state, 6u);
    EXPECT_EQ(list.BestState(), 6u);
    list.Prune(-4.5);
    EXPECT_EQ(list.Entries()[0].state, 1u);
    EXPECT_EQ(list.Entries()[1].state, FrameHypoList::kPruned);
    list.Prune(0.0);
    EXPECT_EQ(list.Entries()[0].state, 1u) << "nothing is pruned without a beam";
}

} // namespace
} // namespace tessarin::test
