#include "text/script/letter_case.h"

#include <algorithm>
#include <cstdint>

#include "text/script/script_tokens.h"

namespace tessarin {

namespace {

/// Small letters, and how far the capitals stand before them.
struct case_range {
    char32_t first;
    char32_t last;
    int32_t distance;
};
constexpr case_range kRanges[] = {
    {'a', 'z', 32},     {0xE0, 0xF6, 32},   {0xF8, 0xFE, 32},   {0xFF, 0xFF, -121},
    {0x3AC, 0x3AC, 38}, {0x3AD, 0x3AF, 37}, {0x3B1, 0x3C1, 32}, {0x3C2, 0x3C2, 31},
    {0x3C3, 0x3CB, 32}, {0x3CC, 0x3CC, 64}, {0x3CD, 0x3CE, 63}, {0x430, 0x44F, 32},
    {0x450, 0x45F, 80},
};

/// Blocks in which each capital stands right before its small letter.
struct pair_range {
    char32_t first; ///< a capital
    char32_t last;  ///< a small letter
};
constexpr pair_range kPairs[] = {
    {0x100, 0x12F}, {0x132, 0x137},   {0x139, 0x148}, {0x14A, 0x177},
    {0x179, 0x17E}, {0x1E00, 0x1E95}, {0x460, 0x481}, {0x1EA0, 0x1EFF},
};

char32_t UpperOf(char32_t code) {
    for (const case_range& range : kRanges) {
        if (code >= range.first && code <= range.last) {
            return static_cast<char32_t>(static_cast<int32_t>(code) - range.distance);
        }
    }
    for (const pair_range& range : kPairs) {
        if (code >= range.first && code <= range.last) {
            return code - (code - range.first) % 2;
        }
    }
    return code;
}

} // namespace

std::string InUpperCase(std::string_view text) {
    std::string upper;
    for (size_t at = 0; at < text.size();) {
        const size_t first = at;
        const char32_t code = NextCharacter(text, at);
        const char32_t capital = UpperOf(code);
        if (capital == code) {
            upper += text.substr(first, at - first);
        } else {
            AppendUtf8(capital, upper);
        }
    }
    return upper;
}

std::string InLowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char letter) {
        return IsUpper(letter) ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return lower;
}

} // namespace tessarin
