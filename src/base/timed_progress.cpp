#include "base/timed_progress.h"

#include "platform/clock.h"
#include "tessarin/progress_sink.h"

namespace tessarin {

namespace {

constexpr uint64_t kIntervalNs = 500'000'000;

} // namespace

timed_progress::timed_progress(ProgressSink* host)
    : sink(host), lastNs(host != nullptr ? PerformanceCounterNs() : 0) {}

bool timed_progress::Report(uint32_t done, uint32_t total, bool isDue) {
    if (sink == nullptr) {
        return false;
    }
    const uint64_t now = PerformanceCounterNs();
    if (!isDue && now - lastNs < kIntervalNs) {
        return false;
    }
    lastNs = now;
    return sink->OnProgress(done, total);
}

} // namespace tessarin
