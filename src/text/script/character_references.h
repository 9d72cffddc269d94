#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin {

/// The character that a reference such as `&amp;` or `&#39;` at `text[at]` stands for, where `at`
/// moves on to what follows it; 0 when there is none.
char32_t ReadCharacterReference(std::string_view text, size_t& at);

/// A text whose character references are replaced by their characters.
struct decoded_text {
    std::string text;
    std::vector<uint32_t> origins; ///< of each byte and of the end: its place in what was decoded
};
decoded_text DecodeCharacterReferences(std::string_view text);

} // namespace tessarin
