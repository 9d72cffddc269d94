#include "apps/tessarin/readers/separated_values.h"

#include <algorithm>

namespace {

/// Reads the rows one character after the other.
class RowReader {
public:
    RowReader(std::string_view whole, char between) : text(whole), separator(between) {}

    std::vector<separated_row> Read() {
        std::vector<separated_row> rows;
        while (at < text.size()) {
            separated_row row = ReadRow();
            if (row.cells.size() > 1 || !row.cells.front().empty()) {
                rows.push_back(std::move(row));
            }
        }
        return rows;
    }

private:
    separated_row ReadRow() {
        separated_row row;
        row.line = line;
        row.cells.emplace_back();
        while (at < text.size()) {
            const char c = text[at];
            if (c == '"' && separator != '\t' && row.cells.back().empty()) {
                ++at;
                row.isOpen = !ReadQuoted(row.cells.back());
                continue;
            }
            ++at;
            if (c == separator) {
                row.cells.emplace_back();
            } else if (c == '\n') {
                ++line;
                break;
            } else if (c != '\r' || (at < text.size() && text[at] != '\n')) {
                row.cells.back() += c;
            }
        }
        return row;
    }

    /// Up to the closing quote. Whether there is one.
    bool ReadQuoted(std::string& cell) {
        while (at < text.size()) {
            const char c = text[at++];
            if (c == '"') {
                if (at == text.size() || text[at] != '"') {
                    return true;
                }
                ++at;
            }
            line += c == '\n' ? 1 : 0;
            cell += c;
        }
        return false;
    }

    std::string_view text;
    char separator;
    size_t at = 0;
    size_t line = 1;
};

} // namespace

std::vector<separated_row> ReadSeparatedValues(std::string_view text, char separator) {
    return RowReader(text, separator).Read();
}
