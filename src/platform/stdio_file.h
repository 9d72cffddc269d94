#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace tessarin {

/// As fopen, for a path in UTF-8 where paths are text, with "x" as the last letter of `mode` for a
/// file that must be new. Null when that fails.
std::FILE* OpenStdio(const char* path, const char* mode);

/// The path of a text as OpenStdio takes it, and its text again.
std::filesystem::path PathOf(std::string_view text);
std::string TextOf(const std::filesystem::path& path);

} // namespace tessarin
