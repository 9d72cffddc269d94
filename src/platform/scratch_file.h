#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/binary_file.h"

namespace tessarin {

/// A file for what does not fit in memory: written from front to back, read anywhere. Only its
/// owner may read it, and it is gone when it is closed, however the process ends.
class ScratchFile {
public:
    ScratchFile() = default;
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() { Close(); }

    /// Makes the file, in place of an old one of the name; kNone, kTooManyOpenFiles or kOther.
    [[nodiscard]] open_failure Open(const char* path);
    void Close();

    /// Appends bytes. False when they do not all arrive.
    [[nodiscard]] bool Append(const void* data, size_t bytes);
    /// Reads bytes from a position. False when they are not all there.
    [[nodiscard]] bool ReadAt(int64_t position, void* data, size_t bytes);
    /// How many bytes were appended.
    int64_t GetSize() const { return size; }

private:
    intptr_t handle = -1;
    int64_t size = 0;
};

} // namespace tessarin
