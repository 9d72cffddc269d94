#include "apps/tessarin/readers/textgrid_reader.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

namespace {

/// Both text forms hold the same values in the same order: strings in quotes, numbers that stand
/// alone, and flags in angle brackets. All else is there for people.
class GridValues {
public:
    explicit GridValues(std::string_view text) : rest(text) {}

    std::string ReadString();
    double ReadNumber();
    size_t ReadCount();
    void SkipFlag() { FindValue('<'); }

private:
    char FindValue(char wanted);
    static bool IsNumber(std::string_view word);
    void DropWord();

    std::string_view rest;
};

bool IsBlank(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

bool GridValues::IsNumber(std::string_view word) {
    const std::string copy(word);
    char* end = nullptr;
    const double number = std::strtod(copy.c_str(), &end);
    return !copy.empty() && *end == '\0' && std::isfinite(number);
}

void GridValues::DropWord() {
    size_t length = 0;
    while (length < rest.size() && !IsBlank(rest[length])) {
        ++length;
    }
    rest.remove_prefix(length);
}

/// Goes to the next value, which must be of the wanted kind: `"`, `0` for a number, or `<`.
char GridValues::FindValue(char wanted) {
    while (!rest.empty()) {
        const char c = rest.front();
        if (IsBlank(c)) {
            rest.remove_prefix(1);
            continue;
        }
        if (c == '!') {
            const size_t end = rest.find('\n');
            rest.remove_prefix(end == std::string_view::npos ? rest.size() : end);
            continue;
        }
        size_t length = 0;
        while (length < rest.size() && !IsBlank(rest[length])) {
            ++length;
        }
        const bool isNumber = c != '"' && c != '<' && IsNumber(rest.substr(0, length));
        if (isNumber || c == '"' || c == '<') {
            if ((isNumber ? '0' : c) != wanted) {
                break;
            }
            if (c == '<') {
                DropWord();
            }
            return wanted;
        }
        DropWord();
    }
    throw std::invalid_argument("the TextGrid does not hold together");
}

std::string GridValues::ReadString() {
    FindValue('"');
    std::string text;
    for (size_t i = 1; i < rest.size(); ++i) {
        if (rest[i] != '"') {
            text += rest[i];
        } else if (i + 1 < rest.size() && rest[i + 1] == '"') {
            text += rest[++i];
        } else {
            rest.remove_prefix(i + 1);
            return text;
        }
    }
    throw std::invalid_argument("a text in the TextGrid does not end");
}

double GridValues::ReadNumber() {
    FindValue('0');
    const std::string word(rest.substr(0, rest.find_first_of(" \t\r\n")));
    DropWord();
    return std::strtod(word.c_str(), nullptr);
}

size_t GridValues::ReadCount() {
    const double count = ReadNumber();
    // Each of what is counted takes at least a character.
    if (!(count >= 0.0 && count <= static_cast<double>(rest.size()))) {
        throw std::invalid_argument("a size in the TextGrid is larger than what follows");
    }
    return static_cast<size_t>(count);
}

grid_tier ReadTier(GridValues& values) {
    const std::string kind = values.ReadString();
    if (kind != "IntervalTier" && kind != "TextTier") {
        throw std::invalid_argument("not a kind of tier: " + kind);
    }
    grid_tier tier;
    tier.name = values.ReadString();
    values.ReadNumber();
    values.ReadNumber();
    const size_t count = values.ReadCount();
    for (size_t i = 0; i < count; ++i) {
        const double start = values.ReadNumber();
        if (kind == "TextTier") {
            values.ReadString();
            continue;
        }
        const double end = values.ReadNumber();
        tier.intervals.push_back({start * 1000.0, end * 1000.0, values.ReadString()});
    }
    return tier;
}

} // namespace

std::vector<grid_tier> ReadTextGrid(std::string_view text) {
    GridValues values(text);
    const std::string type = values.ReadString();
    const std::string object = values.ReadString();
    if (type != "ooTextFile" || object != "TextGrid") {
        throw std::invalid_argument("it is not a TextGrid");
    }
    values.ReadNumber();
    values.ReadNumber();
    values.SkipFlag();
    const size_t count = values.ReadCount();
    std::vector<grid_tier> tiers;
    for (size_t i = 0; i < count; ++i) {
        tiers.push_back(ReadTier(values));
    }
    return tiers;
}
