#pragma once

#include <cstdio>
#include <memory>

#include "platform/stdio_file.h"

namespace tessarin {

struct file_closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// A file that is being written.
using owned_file = std::unique_ptr<std::FILE, file_closer>;

/// Null when the file cannot be opened, or without a path.
inline owned_file OpenFile(const char* path, const char* mode) {
    return owned_file(path != nullptr ? OpenStdio(path, mode) : nullptr);
}

/// Closes `file`. Returns whether all that was written to it has arrived.
inline bool FinishFile(owned_file file) {
    const bool written = std::ferror(file.get()) == 0;
    return std::fclose(file.release()) == 0 && written;
}

} // namespace tessarin
