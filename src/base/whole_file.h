#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "tessarin/error_codes.h"

namespace tessarin {

/// The bytes of the file at `path`, with a zero byte after them when `addNul`, and their number
/// without it in `*size`. Null when the file does not open or is larger than 4 GiB; what cannot
/// report its size, such as a directory or a pipe, counts as not opening.
std::unique_ptr<uint8_t[]> ReadWholeFile(const char* path, uint32_t* size, bool addNul);

/// Whether the file opens for reading.
bool FileExists(const char* path);

/// Makes `content` the file at `path`, or where a link at `path` leads. It is written to a
/// temporary file in the same folder, which then replaces the old one, so that a failure leaves the
/// old file as it was. A file with several hard links is written in place. So is a file in a folder
/// where no new file can be made; a line in the trace log says so. Returns 0, kFileLocked when the
/// file cannot be opened for writing, or kWriteFailed when not all bytes could be written.
[[nodiscard]] error_code WriteWholeFile(const char* path, std::span<const uint8_t> content);

} // namespace tessarin
