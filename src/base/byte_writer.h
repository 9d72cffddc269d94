#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace tessarin {

/// Puts a file together in memory, as ByteCursor reads it: numbers are little-endian.
class ByteWriter {
public:
    void WriteU8(uint8_t value) { content.push_back(value); }
    void WriteU16(uint16_t value);
    void WriteU32(uint32_t value);
    void WriteBytes(std::span<const uint8_t> more);
    /// The text and a zero byte. A zero byte in the text ends it.
    void WriteString(std::string_view text);

    size_t Size() const { return content.size(); }
    /// Writes a number over the one at `place`, which was written before.
    void PatchU32(size_t place, uint32_t value);

    std::span<const uint8_t> Content() const { return content; }

private:
    std::vector<uint8_t> content;
};

} // namespace tessarin
