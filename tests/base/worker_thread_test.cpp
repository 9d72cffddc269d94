#include "base/worker_thread.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace tessarin {

namespace {

/// Runs until it is cancelled.
class Worker : public CWorkerThread {
public:
    ~Worker() override { CancelThread(); }

    int32_t Run() override {
        ++runs;
        mostAtOnce = std::max<int>(mostAtOnce, runs - ends);
        while (!IsCancelled()) {
            Sleep(1);
        }
        ++ends;
        return 7;
    }

    void AwaitRuns(int number) {
        while (runs < number) {
            std::this_thread::yield();
        }
    }

    std::atomic<int> runs = 0;
    std::atomic<int> ends = 0;
    std::atomic<int> mostAtOnce = 0;
};

TEST(CWorkerThread, CancelWaitsForTheEndAndStaysSet) {
    Worker worker;
    worker.CancelThread();
    EXPECT_TRUE(worker.IsCancelled());
    ASSERT_TRUE(worker.StartThread());
    EXPECT_FALSE(worker.IsCancelled());
    EXPECT_TRUE(worker.IsRunning());
    worker.SetPriority(0);
    worker.SetPriority(99);
    worker.CancelThread();
    EXPECT_EQ(worker.ends, 1);
    EXPECT_FALSE(worker.IsRunning());
    EXPECT_TRUE(worker.IsCancelled());
}

TEST(CWorkerThread, StartStopsTheThreadBefore) {
    Worker worker;
    for (int i = 1; i <= 3; ++i) {
        ASSERT_TRUE(worker.StartThread());
        worker.AwaitRuns(i);
        EXPECT_EQ(worker.ends, i - 1);
    }
}

TEST(CWorkerThread, ManyMayCancelAtOnce) {
    Worker worker;
    ASSERT_TRUE(worker.StartThread());
    worker.AwaitRuns(1);
    std::vector<std::thread> cancellers;
    for (int i = 0; i < 4; ++i) {
        cancellers.emplace_back([&worker] {
            worker.CancelThread();
            EXPECT_EQ(worker.ends, 1);
        });
    }
    for (std::thread& thread : cancellers) {
        thread.join();
    }
}

TEST(CWorkerThread, ManyMayStartAtOnce) {
    Worker worker;
    std::vector<std::thread> starters;
    for (int i = 0; i < 4; ++i) {
        starters.emplace_back([&worker] {
            for (int j = 0; j < 50; ++j) {
                EXPECT_TRUE(worker.StartThread());
            }
        });
    }
    for (std::thread& thread : starters) {
        thread.join();
    }
    worker.CancelThread();
    EXPECT_EQ(worker.runs, 200);
    EXPECT_EQ(worker.ends, 200);
    EXPECT_EQ(worker.mostAtOnce, 1);
}

/// Cancels itself, then fails.
class Thrower : public CWorkerThread {
public:
    ~Thrower() override { CancelThread(); }

    int32_t Run() override {
        CancelThread();
        throw std::runtime_error("");
    }

    int32_t ThreadMain() override {
        result = CWorkerThread::ThreadMain();
        return result;
    }

    std::atomic<int32_t> result = 0;
};

TEST(CWorkerThread, WhatTheBodyThrowsBecomesACode) {
    Thrower worker;
    ASSERT_TRUE(worker.StartThread());
    while (worker.IsRunning()) {
        std::this_thread::yield();
    }
    worker.CancelThread();
    EXPECT_EQ(worker.result, 22);
}

} // namespace

} // namespace tessarin
