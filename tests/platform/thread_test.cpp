#include "platform/thread.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace tessarin {

namespace {

TEST(NativeThread, OffersTheStackThatWasAskedFor) {
    // More than the default of any common system, touched page by page.
    constexpr size_t kUsed = 24u << 20;
    const auto body = [](void* sum) {
        volatile char local[kUsed];
        for (size_t i = 0; i < kUsed; i += 4096) {
            local[i] = 1;
            *static_cast<size_t*>(sum) += static_cast<size_t>(local[i]);
        }
    };
    size_t pages = 0;
    NativeThread thread;
    ASSERT_TRUE(thread.Start(body, &pages, kUsed + (1u << 20)));
    thread.Join();
    EXPECT_EQ(pages, kUsed / 4096);
}

TEST(NativeThread, MayBeJoinedByManyAndByItself) {
    struct work {
        NativeThread thread;
        std::atomic<bool> go = false;
        std::atomic<bool> done = false;
    } shared;
    const auto body = [](void* passed) {
        work& mine = *static_cast<work*>(passed);
        while (!mine.go) {
            std::this_thread::yield();
        }
        mine.thread.SetPriority(-1);
        mine.thread.Join(); // at once, though others wait for this thread
        mine.done = true;
    };
    ASSERT_TRUE(shared.thread.Start(body, &shared, 1u << 18));
    std::vector<std::thread> waiting;
    for (int i = 0; i < 3; ++i) {
        waiting.emplace_back([&shared] {
            shared.thread.Join();
            EXPECT_TRUE(shared.done);
        });
    }
    shared.go = true;
    for (std::thread& thread : waiting) {
        thread.join();
    }
}

TEST(NativeThread, JoinWithoutAThreadReturns) {
    NativeThread thread;
    thread.Join();
    thread.SetPriority(1);
}

} // namespace

} // namespace tessarin
