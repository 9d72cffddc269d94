#include "platform/stdio_file.h"

#include <cerrno>
#include <string_view>

#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>

#include "platform/windows/wide_text.h"

namespace tessarin {

namespace {

/// The C library of the system knows no "x".
std::FILE* OpenNew(const std::wstring& path) {
    int file = -1;
    const errno_t code = _wsopen_s(&file, path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY,
                                   _SH_DENYNO, _S_IREAD | _S_IWRITE);
    if (code != 0) {
        errno = code;
        return nullptr;
    }
    std::FILE* const stream = _fdopen(file, "wb");
    if (stream == nullptr) {
        _close(file);
    }
    return stream;
}

} // namespace

std::FILE* OpenStdio(const char* path, const char* mode) {
    const std::wstring wide = WidePath(path);
    const std::string_view text = mode;
    return text.ends_with('x') ? OpenNew(wide) : _wfopen(wide.c_str(), WideText(text).c_str());
}

std::filesystem::path PathOf(std::string_view text) {
    return WideText(text);
}

std::string TextOf(const std::filesystem::path& path) {
    return Utf8Text(path.native());
}

} // namespace tessarin
