#pragma once

#include <cstdio>
#include <string>
#include <vector>

/// What was typed, in UTF-8. Prepares the console for UTF-8 and the standard streams for bytes,
/// where the system does not do so by itself.
std::vector<std::string> PrepareConsole(int argc, char** argv);

/// Opens a file for reading bytes; null when that fails.
std::FILE* OpenForReading(const std::string& path);
