#pragma once

#include <cstdio>

namespace tessarin {

/// As fopen, for a path in UTF-8 where paths are text, with "x" as the last letter of `mode` for a
/// file that must be new. Null when that fails.
std::FILE* OpenStdio(const char* path, const char* mode);

} // namespace tessarin
