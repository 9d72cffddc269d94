#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

/// A file that lines are added to and that survives the end of the process, and of the machine up
/// to the last Sync. Several threads may add.
class SyncedLog {
public:
    /// Opens `path` for lines after its first `keptBytes`, and keeps other processes from it.
    /// Throws Failure, also when one has it.
    SyncedLog(const std::string& path, uint64_t keptBytes);

    /// Adds a line, which gets its end, and returns where in the file it begins. Throws Failure.
    uint64_t Add(std::string_view line);
    /// Returns when all that was added is on the disk. Throws Failure.
    void Sync();

private:
    struct closer {
        void operator()(std::FILE* open) const { std::fclose(open); }
    };

    std::string path;
    std::mutex lock;
    std::unique_ptr<std::FILE, closer> file;
    uint64_t size = 0;
    bool isSynced = true;
};
