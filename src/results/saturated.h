#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tessarin {

/// A time in milliseconds held to 32 bits. Sums of times are made in 64 bits and brought back by
/// this, so that the times of a damaged result stay defined.
constexpr int32_t Saturated(int64_t ms) {
    using limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<int64_t>(ms, limits::min(), limits::max()));
}

} // namespace tessarin
