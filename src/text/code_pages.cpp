#include "text/code_pages.h"

#include <algorithm>

#include "text/code_page_tables.h"

namespace tessarin {
namespace {

constexpr char16_t kUpperHalf = 0x80;

} // namespace

code_page code_page::Find(uint32_t number) {
    switch (number) {
    case 1250:
        return code_page(kCodePage1250.data());
    case 1251:
        return code_page(kCodePage1251.data());
    default:
        return code_page(kCodePage1252.data());
    }
}

std::u16string code_page::ToWide(std::string_view text) const {
    std::u16string wide;
    wide.reserve(text.size());
    for (const char each : text) {
        const auto byte = static_cast<uint8_t>(each);
        wide += byte < kUpperHalf ? char16_t{byte} : upperHalf[byte - kUpperHalf];
    }
    return wide;
}

std::optional<std::string> code_page::ToNarrow(std::u16string_view text) const {
    const char16_t* const end = upperHalf + kUpperHalf;
    std::string narrow;
    narrow.reserve(text.size());
    for (const char16_t character : text) {
        if (character < kUpperHalf) {
            narrow += static_cast<char>(character);
            continue;
        }
        const char16_t* const found = std::find(upperHalf, end, character);
        if (found == end) {
            return std::nullopt;
        }
        narrow += static_cast<char>(kUpperHalf + (found - upperHalf));
    }
    return narrow;
}

} // namespace tessarin
