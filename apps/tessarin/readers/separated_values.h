#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

struct separated_row {
    std::vector<std::string> cells;
    size_t line = 0;     ///< where it begins in its text, from 1
    bool isOpen = false; ///< its last cell is in quotes that are never closed
};

/// The rows of a text of cells separated by `separator`; blank lines are skipped. With commas or
/// semicolons a cell may stand in quotes, in which a quote is doubled and lines may end; tabs
/// separate cells as they are.
std::vector<separated_row> ReadSeparatedValues(std::string_view text, char separator);
