#include "base/little_endian.h"

namespace tessarin {

namespace {

template <class T> bool Write(FILE* file, T value) {
    uint8_t bytes[sizeof(T)];
    StoreLittleEndian(bytes, value);
    return std::fwrite(bytes, sizeof(T), 1, file) == 1;
}

} // namespace

void ToLittleEndian(char16_t* text) {
    for (; *text != 0; ++text) {
        *text = ToLittleEndian<char16_t>(*text);
    }
}

bool WriteU16(FILE* file, uint16_t value) {
    return Write(file, value);
}

bool WriteU32(FILE* file, uint32_t value) {
    return Write(file, value);
}

} // namespace tessarin
