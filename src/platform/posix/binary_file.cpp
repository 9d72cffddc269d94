#include "platform/binary_file.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace tessarin {

namespace {

open_failure FailureOf(int error) {
    switch (error) {
    case ENOENT:
        return open_failure::kNoSuchFile;
    case ENOTDIR:
        return open_failure::kNoSuchPath;
    case EACCES:
    case EPERM:
    case EISDIR:
        return open_failure::kAccessDenied;
    case EBUSY:
    case ETXTBSY:
        return open_failure::kSharingViolation;
    case EMFILE:
    case ENFILE:
        return open_failure::kTooManyOpenFiles;
    case ENOMEM:
        return open_failure::kNoMemory;
    default:
        return open_failure::kOther;
    }
}

/// There is one number for a missing file and a missing folder.
bool IsInMissingFolder(const char* path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code ignored;
    return !folder.empty() && !std::filesystem::exists(folder, ignored);
}

} // namespace

open_failure BinaryFile::Open(const char* path) {
    Close();
    if (path == nullptr) {
        return open_failure::kNoSuchFile;
    }
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        const open_failure failure = FailureOf(errno);
        return failure == open_failure::kNoSuchFile && IsInMissingFolder(path)
                   ? open_failure::kNoSuchPath
                   : failure;
    }
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode)) {
        close(descriptor);
        return open_failure::kAccessDenied;
    }
    stream.reset(fdopen(descriptor, "rb"));
    if (stream == nullptr) {
        close(descriptor);
        return open_failure::kNoMemory;
    }
    size = S_ISREG(status.st_mode) ? int64_t{status.st_size} : 0;
    return open_failure::kNone;
}

int64_t BinaryFile::Read(void* buffer, size_t bytes) {
    const size_t got = std::fread(buffer, 1, bytes, stream.get());
    return got < bytes && std::ferror(stream.get()) != 0 ? -1 : static_cast<int64_t>(got);
}

bool BinaryFile::Seek(int64_t position) {
    return position >= 0 && fseeko(stream.get(), position, SEEK_SET) == 0;
}

int64_t BinaryFile::Tell() {
    return ftello(stream.get());
}

} // namespace tessarin
