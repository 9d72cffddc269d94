#include "apps/tessarin/readers/image_reader.h"

#include <bit>

float ImageReader::ReadF32() {
    return std::bit_cast<float>(ReadNumber(4));
}

std::string ImageReader::ReadString() {
    const size_t end = failed ? std::string::npos : bytes.find('\0', place);
    if (end == std::string::npos) {
        failed = true;
        return {};
    }
    std::string text = bytes.substr(place, end - place);
    place = end + 1;
    return text;
}

void ImageReader::Skip(uint64_t count) {
    failed = failed || count > bytes.size() - place;
    place += failed ? 0 : static_cast<size_t>(count);
}

uint32_t ImageReader::ReadNumber(size_t size) {
    if (failed || bytes.size() - place < size) {
        failed = true;
        return 0;
    }
    uint32_t value = 0;
    for (size_t i = 0; i < size; ++i) {
        value |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[place + i])) << (8 * i);
    }
    place += size;
    return value;
}
