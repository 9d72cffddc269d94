#include "platform/binary_file.h"

#include <share.h>
#include <windows.h>

#include "platform/windows/wide_text.h"

namespace tessarin {

namespace {

open_failure FailureOf(DWORD error) {
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
        return open_failure::kNoSuchFile;
    case ERROR_PATH_NOT_FOUND:
        return open_failure::kNoSuchPath;
    case ERROR_ACCESS_DENIED:
        return open_failure::kAccessDenied;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return open_failure::kSharingViolation;
    case ERROR_TOO_MANY_OPEN_FILES:
        return open_failure::kTooManyOpenFiles;
    case ERROR_NOT_ENOUGH_MEMORY:
        return open_failure::kNoMemory;
    default:
        return open_failure::kOther;
    }
}

} // namespace

open_failure BinaryFile::Open(const char* path) {
    Close();
    if (path == nullptr) {
        return open_failure::kNoSuchFile;
    }
    SetLastError(ERROR_SUCCESS);
    stream.reset(_wfsopen(WidePath(path).c_str(), L"rb", _SH_DENYNO));
    if (stream == nullptr) {
        return FailureOf(GetLastError());
    }
    size = 0;
    if (_fseeki64(stream.get(), 0, SEEK_END) == 0) {
        size = _ftelli64(stream.get());
        std::rewind(stream.get());
    }
    return open_failure::kNone;
}

int64_t BinaryFile::Read(void* buffer, size_t bytes) {
    const size_t got = std::fread(buffer, 1, bytes, stream.get());
    return got < bytes && std::ferror(stream.get()) != 0 ? -1 : static_cast<int64_t>(got);
}

bool BinaryFile::Seek(int64_t position) {
    return position >= 0 && _fseeki64(stream.get(), position, SEEK_SET) == 0;
}

int64_t BinaryFile::Tell() {
    return _ftelli64(stream.get());
}

} // namespace tessarin
