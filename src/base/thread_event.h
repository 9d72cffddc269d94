#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace tessarin {

class CCritSection;

/// Event that wakes one waiter and falls back by itself. It begins signalled, so that the first
/// wait returns at once.
class CThreadEvent {
public:
    CThreadEvent() = default;
    CThreadEvent(const CThreadEvent&) = delete;
    CThreadEvent& operator=(const CThreadEvent&) = delete;
    virtual ~CThreadEvent() = default;

    void Set();

    /// Waits at most `ms` milliseconds for the event, with `lock` released meanwhile; the caller
    /// holds it exactly once. `kForever` sets no limit.
    void Wait(CCritSection& lock, uint32_t ms);

    static constexpr uint32_t kForever = 0xFFFFFFFF;

private:
    std::mutex mutex;
    std::condition_variable condition;
    /// Kept: signalled from the start, so that a worker looks at what there is before it waits.
    bool signalled = true;
};

} // namespace tessarin
