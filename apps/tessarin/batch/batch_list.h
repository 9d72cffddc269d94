#pragma once

#include <string>
#include <vector>

#include "apps/tessarin/batch/batch_line.h"

/// The lines of a list: CSV, TSV or JSON lines, by the name of the file. The first row of a table
/// names its columns: audio, and any of name, text, text_file, words, speaker and options; paths
/// count from the folder of the list. A row that cannot be read becomes a line with a fault. Throws
/// Failure for a list that is none.
std::vector<batch_line> ReadBatchList(const std::string& path);

/// The lines of a folder: all recordings in it and below, but for what is in `except`. The text of
/// each stands beside it under the same name, or all stand in one list in the folder itself. Throws
/// Failure.
std::vector<batch_line> ReadBatchFolder(const std::string& path, const std::string& except);

/// Numbers the lines and names their outputs, each by its path below `root`, such that no two share
/// one; where they would, the later line gets a fault.
void NameBatchLines(const std::string& root, std::vector<batch_line>* lines);
