#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

namespace tessarin {

/// Memory for `count` floats with unset contents, or null when there is none or its size in bytes
/// passes the signed 32-bit range, which no real block of audio does.
[[nodiscard]] inline std::unique_ptr<float[]> NewFloats(uint64_t count) {
    constexpr uint64_t kMost = std::numeric_limits<int32_t>::max() / sizeof(float);
    return std::unique_ptr<float[]>(
        count > kMost ? nullptr : new (std::nothrow) float[static_cast<size_t>(count)]);
}

} // namespace tessarin
