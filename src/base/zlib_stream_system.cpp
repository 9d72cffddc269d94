#include "base/zlib_stream.h"

#include <zlib.h>

namespace tessarin {

std::optional<size_t> DeflateZlib(std::span<const uint8_t> plain, std::span<uint8_t> out) {
    auto length = static_cast<uLongf>(out.size());
    if (compress2(out.data(), &length, plain.data(), static_cast<uLong>(plain.size()),
                  Z_BEST_COMPRESSION) != Z_OK) {
        return std::nullopt;
    }
    return length;
}

std::optional<size_t> InflateZlib(std::span<const uint8_t> stream, std::span<uint8_t> out) {
    auto length = static_cast<uLongf>(out.size());
    if (uncompress(out.data(), &length, stream.data(), static_cast<uLong>(stream.size())) != Z_OK) {
        return std::nullopt;
    }
    return length;
}

} // namespace tessarin
