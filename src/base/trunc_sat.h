#pragma once

#include <concepts>
#include <cstdint>
#include <limits>

namespace tessarin {

/// `value` truncated toward zero, held to the range of `Int`; not-a-number gives 0. The plain
/// conversion is undefined outside that range.
template <std::integral Int, std::floating_point Float> constexpr Int TruncSat(Float value) {
    using limits = std::numeric_limits<Int>;
    // The greatest Int is not always a Float, but the power of two above it is.
    constexpr Float kAbove = static_cast<Float>(limits::max() / 2 + 1) * 2;
    if (!(value > static_cast<Float>(limits::min()))) {
        return value == value ? limits::min() : 0;
    }
    return value >= kAbove ? limits::max() : static_cast<Int>(value);
}

/// The low 16 bits of the truncated value: how a sum that may leave the sample range wraps when
/// it is stored as a sample.
template <std::floating_point Float> constexpr int16_t TruncToLow16(Float value) {
    return static_cast<int16_t>(static_cast<uint16_t>(TruncSat<int32_t>(value)));
}

} // namespace tessarin
