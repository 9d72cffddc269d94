#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace tessarin {

/// Why a file does not open.
enum class open_failure {
    kNone,
    kNoSuchFile,
    kNoSuchPath,
    kAccessDenied,
    kSharingViolation,
    kTooManyOpenFiles,
    kNoMemory,
    kOther,
};

/// A file that is read as bytes, of any size. Paths are bytes as the host gave them.
class BinaryFile {
public:
    /// Opens a file for reading, after closing an open one. A directory counts as access denied.
    /// Does not wait for the writer of a pipe.
    [[nodiscard]] open_failure Open(const char* path);
    void Close() { stream.reset(); }
    bool IsOpen() const { return stream != nullptr; }

    /// Reads up to `bytes` bytes; fewer only at the end. Returns how many, or -1 on an error.
    int64_t Read(void* buffer, size_t bytes);

    /// Moves to a position from the start, which may lie beyond the end.
    [[nodiscard]] bool Seek(int64_t position);
    /// The position, or -1 where the file has none.
    int64_t Tell();
    /// The size when the file was opened; 0 for what is not a plain file.
    int64_t GetSize() const { return size; }

private:
    struct closer {
        void operator()(FILE* file) const { std::fclose(file); }
    };

    std::unique_ptr<FILE, closer> stream;
    int64_t size = 0;
};

} // namespace tessarin
