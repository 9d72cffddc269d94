#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tessarin {

/// A code page of one byte a character, whose lower half is ASCII.
class code_page {
public:
    /// The code page of a Windows number: 1250, 1251 or 1252; any other gives 1252.
    static code_page Find(uint32_t number);

    std::u16string ToWide(std::string_view text) const;
    /// Nothing when the page lacks a character of the text.
    std::optional<std::string> ToNarrow(std::u16string_view text) const;

private:
    explicit code_page(const char16_t* ofUpperHalf) : upperHalf(ofUpperHalf) {}

    const char16_t* upperHalf; ///< characters of the bytes from 0x80
};

} // namespace tessarin
