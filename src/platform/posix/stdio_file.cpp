#include "platform/stdio_file.h"

namespace tessarin {

std::FILE* OpenStdio(const char* path, const char* mode) {
    return std::fopen(path, mode);
}

} // namespace tessarin
