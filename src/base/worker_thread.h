#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "base/crit_section.h"

namespace tessarin {

class NativeThread;

/// One thread of work that can be cancelled and started again. A derived class's `Run` polls
/// `IsCancelled`; its destructor calls `CancelThread`, while its own members still live.
class CWorkerThread {
public:
    CWorkerThread() = default;
    CWorkerThread(const CWorkerThread&) = delete;
    CWorkerThread& operator=(const CWorkerThread&) = delete;
    virtual ~CWorkerThread();

    /// Sets the cancel flag, which stays set until the next start, and waits for the thread,
    /// unless it is the thread itself that asks.
    virtual void CancelThread();

    virtual bool IsCancelled();
    virtual bool IsRunning();
    virtual void Sleep(uint32_t ms);

    /// Level 0 is below normal, 1 normal, 2 above; other levels change nothing. Best effort. Kept:
    /// it acts on a running thread only, so a worker sets the level that it needs from its own
    /// body.
    virtual void SetPriority(uint32_t level);

    /// The body of the thread.
    virtual int32_t Run() = 0;

    /// Runs the body. An exception that leaves it becomes its result, as an error code.
    virtual int32_t ThreadMain();

    /// Stops a running thread and starts another. Of several callers at once each stops the thread
    /// of the one before. Returns false when the system gives no thread.
    virtual bool StartThread();

protected:
    CCritSection section; ///< a derived class guards with it what its thread and others share

private:
    bool BeginThread();

    uint32_t priority = 1;
    std::shared_ptr<NativeThread> thread;
    std::atomic<uint8_t> cancelled = 0;
    std::atomic<bool> running = false;
};

} // namespace tessarin
