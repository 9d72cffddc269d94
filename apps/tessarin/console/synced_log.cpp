#include "apps/tessarin/console/synced_log.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#if defined(_WIN32)
#include <io.h>
#include <share.h>
#else
#include <sys/file.h>
#include <unistd.h>
#endif

#include "apps/tessarin/console/failure.h"

namespace {

namespace fs = std::filesystem;

Failure LogFailure(const std::string& path, int reason) {
    return {kExitFailed, path + ": cannot be written: " + std::generic_category().message(reason)};
}

#if defined(_WIN32)
std::FILE* OpenAlone(const std::string& path, bool* isTaken) {
    std::FILE* file = _wfsopen(fs::path(path).c_str(), L"ab", _SH_DENYWR);
    *isTaken = file == nullptr && errno == EACCES;
    return file;
}
bool SyncFile(std::FILE* file) {
    return _commit(_fileno(file)) == 0;
}
#else
std::FILE* OpenAlone(const std::string& path, bool* isTaken) {
    std::FILE* file = std::fopen(path.c_str(), "ab");
    // A file system without locks is worked on without.
    *isTaken =
        file != nullptr && flock(fileno(file), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    return file;
}
bool SyncFile(std::FILE* file) {
    return fsync(fileno(file)) == 0;
}
#endif

} // namespace

SyncedLog::SyncedLog(const std::string& logPath, uint64_t keptBytes) : path(logPath) {
    bool isTaken = false;
    file.reset(OpenAlone(path, &isTaken));
    if (isTaken) {
        throw Failure(kExitFailed, path + ": another process is at work on it");
    }
    if (!file) {
        throw LogFailure(path, errno);
    }
    std::error_code failure;
    fs::resize_file(path, keptBytes, failure);
    if (failure) {
        throw LogFailure(path, failure.value());
    }
    size = keptBytes;
}

uint64_t SyncedLog::Add(std::string_view line) {
    const std::lock_guard guard(lock);
    const uint64_t begin = size;
    if (std::fwrite(line.data(), 1, line.size(), file.get()) != line.size() ||
        std::fputc('\n', file.get()) == EOF || std::fflush(file.get()) != 0) {
        throw LogFailure(path, errno);
    }
    size += line.size() + 1;
    isSynced = false;
    return begin;
}

void SyncedLog::Sync() {
    {
        const std::lock_guard guard(lock);
        if (isSynced) {
            return;
        }
        isSynced = true; // for what was added so far
    }
    if (!SyncFile(file.get())) {
        throw LogFailure(path, errno);
    }
}
