#pragma once

#include <cstdint>

namespace tessarin {

/// Nanoseconds of a clock that never goes back; only differences mean anything.
uint64_t PerformanceCounterNs();

} // namespace tessarin
