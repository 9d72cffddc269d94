#include "base/byte_writer.h"

#include "base/little_endian.h"

namespace tessarin {

void ByteWriter::WriteU16(uint16_t value) {
    uint8_t bytes[sizeof(value)];
    StoreLittleEndian(bytes, value);
    WriteBytes(bytes);
}

void ByteWriter::WriteU32(uint32_t value) {
    uint8_t bytes[sizeof(value)];
    StoreLittleEndian(bytes, value);
    WriteBytes(bytes);
}

void ByteWriter::WriteBytes(std::span<const uint8_t> more) {
    content.insert(content.end(), more.begin(), more.end());
}

void ByteWriter::WriteString(std::string_view text) {
    const std::string_view part = text.substr(0, text.find('\0'));
    content.insert(content.end(), part.begin(), part.end());
    WriteU8(0);
}

void ByteWriter::PatchU32(size_t place, uint32_t value) {
    StoreLittleEndian(content.data() + place, value);
}

} // namespace tessarin
