#include "text/lexicon/word_order.h"

#include <algorithm>
#include <cstdint>
#include <functional>

namespace tessarin {

namespace {

uint8_t FoldLetter(char character) {
    const auto code = static_cast<uint8_t>(character);
    return code >= 'A' && code <= 'Z' ? static_cast<uint8_t>(code - 'A' + 'a') : code;
}

} // namespace

bool IsWordBelow(std::string_view first, std::string_view second) {
    return std::ranges::lexicographical_compare(first, second, std::less(), FoldLetter, FoldLetter);
}

} // namespace tessarin
