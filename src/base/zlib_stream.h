#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace tessarin {

/// Packs `plain` into a zlib stream at `out`. Returns its length; none when it does not fit.
std::optional<size_t> DeflateZlib(std::span<const uint8_t> plain, std::span<uint8_t> out);

/// Unpacks the zlib stream at the beginning of `stream` into `out`. Returns the length of what was
/// packed; none when the stream is damaged, ends early, or holds more than fits.
std::optional<size_t> InflateZlib(std::span<const uint8_t> stream, std::span<uint8_t> out);

} // namespace tessarin
