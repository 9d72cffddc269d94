#include "platform/scratch_file.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tessarin {

namespace {

/// Some systems refuse larger pieces.
constexpr size_t kLargestPiece = size_t{1} << 30;

/// Without a name, the file lives as long as it is open. What is not a plain file keeps its name.
void RemoveName(int descriptor, const char* path) {
    struct stat status = {};
    if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        unlink(path);
    }
}

} // namespace

open_failure ScratchFile::Open(const char* path) {
    Close();
    const int descriptor =
        open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, S_IRUSR | S_IWUSR);
    if (descriptor < 0) {
        return errno == EMFILE ? open_failure::kTooManyOpenFiles : open_failure::kOther;
    }
    RemoveName(descriptor, path);
    handle = descriptor;
    return open_failure::kNone;
}

void ScratchFile::Close() {
    if (handle >= 0) {
        close(static_cast<int>(handle));
    }
    handle = -1;
    size = 0;
}

bool ScratchFile::Append(const void* data, size_t bytes) {
    const auto* next = static_cast<const char*>(data);
    while (bytes > 0) {
        const ssize_t written =
            write(static_cast<int>(handle), next, std::min(bytes, kLargestPiece));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        next += written;
        size += written;
        bytes -= static_cast<size_t>(written);
    }
    return true;
}

bool ScratchFile::ReadAt(int64_t position, void* data, size_t bytes) {
    auto* next = static_cast<char*>(data);
    while (bytes > 0) {
        const ssize_t got =
            pread(static_cast<int>(handle), next, std::min(bytes, kLargestPiece), position);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return false;
        }
        next += got;
        position += got;
        bytes -= static_cast<size_t>(got);
    }
    return true;
}

} // namespace tessarin
