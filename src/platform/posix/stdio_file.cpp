#include "platform/stdio_file.h"

namespace tessarin {

std::FILE* OpenStdio(const char* path, const char* mode) {
    return std::fopen(path, mode);
}

std::filesystem::path PathOf(std::string_view text) {
    return text;
}

std::string TextOf(const std::filesystem::path& path) {
    return path.string();
}

} // namespace tessarin
