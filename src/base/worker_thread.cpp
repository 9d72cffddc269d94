#include "base/worker_thread.h"

#include <chrono>
#include <thread>
#include <utility>

#include "base/flog.h"
#include "base/guarded.h"
#include "platform/thread.h"

namespace tessarin {

namespace {

// The resampler alone keeps 16 KiB of samples on the stack.
constexpr size_t kStackBytes = size_t{512} * 1024;

} // namespace

CWorkerThread::~CWorkerThread() {
    CWorkerThread::CancelThread();
}

void CWorkerThread::CancelThread() {
    cancelled = 1;
    const flog trace("CWorkerThread::CancelThread");
    std::shared_ptr<NativeThread> last;
    {
        // Once more under the lock: another thread may have started again and cleared the flag.
        const crit_section_scope scope(section);
        cancelled = 1;
        last = thread;
    }
    if (last != nullptr) {
        last->Join();
    }
}

bool CWorkerThread::IsCancelled() {
    return cancelled != 0;
}

bool CWorkerThread::IsRunning() {
    return running;
}

void CWorkerThread::Sleep(uint32_t ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

void CWorkerThread::SetPriority(uint32_t level) {
    const crit_section_scope scope(section);
    priority = level;
    if (running && level <= 2) {
        thread->SetPriority(static_cast<int>(level) - 1);
    }
}

int32_t CWorkerThread::ThreadMain() {
    const int32_t result = Guarded([this] { return Run(); });
    running = false;
    return result;
}

bool CWorkerThread::StartThread() {
    for (;;) {
        std::shared_ptr<NativeThread> last;
        {
            const crit_section_scope scope(section);
            last = thread;
        }
        CancelThread();
        const crit_section_scope scope(section);
        if (thread == last) { // else another caller has started one meanwhile
            return BeginThread();
        }
    }
}

bool CWorkerThread::BeginThread() {
    cancelled = 0;
    auto started = std::make_shared<NativeThread>();
    const auto enter = [](void* self) { static_cast<CWorkerThread*>(self)->ThreadMain(); };
    running = true;
    if (!started->Start(enter, this, kStackBytes)) {
        running = false;
        return false;
    }
    thread = std::move(started);
    return true;
}

} // namespace tessarin
