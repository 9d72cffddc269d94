#include "base/thread_event.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

#include "base/crit_section.h"

namespace tessarin {

namespace {

using clock = std::chrono::steady_clock;

/// How long a wait took.
std::chrono::milliseconds Waited(CThreadEvent& event, CCritSection& lock, uint32_t ms) {
    const crit_section_scope scope(lock);
    const auto start = clock::now();
    event.Wait(lock, ms);
    return std::chrono::duration_cast<std::chrono::milliseconds>(clock::now() - start);
}

TEST(CThreadEvent, BeginsSignalledAndFallsBack) {
    CThreadEvent event;
    CCritSection lock;
    Waited(event, lock, CThreadEvent::kForever); // would hang if the first wait had to wait
    EXPECT_GE(Waited(event, lock, 30).count(), 30);
    event.Set();
    event.Set();
    Waited(event, lock, CThreadEvent::kForever);
    EXPECT_GE(Waited(event, lock, 30).count(), 30) << "two signals without a waiter are one";
}

TEST(CThreadEvent, ReleasesTheLockWhileItWaits) {
    CThreadEvent event;
    CCritSection lock;
    Waited(event, lock, 0);
    bool changed = false; // guarded by the lock
    std::thread setter;
    {
        const crit_section_scope scope(lock);
        setter = std::thread([&] {
            const crit_section_scope inner(lock);
            const crit_section_scope again(lock);
            changed = true;
            event.Set();
        });
        event.Wait(lock, CThreadEvent::kForever);
        EXPECT_TRUE(changed);
    }
    setter.join();
}

} // namespace

} // namespace tessarin
