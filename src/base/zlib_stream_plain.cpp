#include "base/inflater.h"
#include "base/zlib_stream.h"

namespace tessarin {

/// Without zlib nothing is packed: lexicon files are read, not made.
std::optional<size_t> DeflateZlib(std::span<const uint8_t>, std::span<uint8_t>) {
    return std::nullopt;
}

std::optional<size_t> InflateZlib(std::span<const uint8_t> stream, std::span<uint8_t> out) {
    return Inflater(stream, out).Run();
}

} // namespace tessarin
