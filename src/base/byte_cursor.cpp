#include "base/byte_cursor.h"

namespace tessarin {

std::span<const uint8_t> ByteCursor::ReadBytes(size_t count) {
    if (!Holds(count)) {
        failed = true;
        return {};
    }
    const std::span<const uint8_t> bytes(at, count);
    at += count;
    remaining -= count;
    return bytes;
}

std::string_view ByteCursor::ReadString() {
    const void* end = failed || remaining == 0 ? nullptr : std::memchr(at, 0, remaining);
    if (end == nullptr) {
        failed = true;
        return {};
    }
    const auto length = static_cast<size_t>(static_cast<const uint8_t*>(end) - at);
    const std::span<const uint8_t> text = ReadBytes(length + 1);
    return {reinterpret_cast<const char*>(text.data()), length};
}

} // namespace tessarin
