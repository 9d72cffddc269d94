#include "platform/clock.h"

#include <chrono>

namespace tessarin {

uint64_t PerformanceCounterNs() {
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart).count());
}

} // namespace tessarin
