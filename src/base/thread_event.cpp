#include "base/thread_event.h"

#include <chrono>

#include "base/crit_section.h"

namespace tessarin {

void CThreadEvent::Set() {
    const std::lock_guard guard(mutex);
    signalled = true;
    condition.notify_one(); // still locked: a waiter may destroy the event once it is woken
}

void CThreadEvent::Wait(CCritSection& lock, uint32_t ms) {
    lock.Unlock();
    {
        std::unique_lock guard(mutex);
        const auto isSignalled = [this] { return signalled; };
        if (ms == kForever) {
            condition.wait(guard, isSignalled);
        } else {
            condition.wait_for(guard, std::chrono::milliseconds(ms), isSignalled);
        }
        signalled = false;
    }
    lock.Lock();
}

} // namespace tessarin
