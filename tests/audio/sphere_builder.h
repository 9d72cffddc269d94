#pragma once

#include <cstdio>
#include <span>
#include <string>
#include <string_view>

#include "support/byte_builder.h"

namespace tessarin::test {

/// A Sphere file with `text` in a header of `headerSize` bytes, padded with blanks.
inline bytes SphereFile(std::string_view text, std::span<const uint8_t> data,
                        size_t headerSize = 1024) {
    char size[9];
    std::snprintf(size, sizeof(size), "%7zu\n", headerSize % 10000000);
    std::string header = "NIST_1A\n" + std::string(size) + std::string(text);
    header.resize(headerSize, ' ');
    return ByteBuilder().Text(header).Bytes(data).Take();
}

} // namespace tessarin::test
