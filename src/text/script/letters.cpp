#include "text/script/letters.h"

#include "text/script/number_words.h"

namespace tessarin {

bool IsVowel(char letter) {
    return std::string_view("AEIOUYaeiouy").find(letter) != std::string_view::npos;
}

std::string Spelled(std::string_view word) {
    std::string letters;
    for (const char letter : word) {
        if (letter != '.' && letter != '\'') {
            AddWords(std::string_view(&letter, 1), letters);
        }
    }
    return letters;
}

uint32_t RomanValue(std::string_view text) {
    struct numeral {
        std::string_view letters;
        uint32_t value;
    };
    constexpr numeral kNumerals[] = {{"C", 100}, {"XC", 90}, {"L", 50}, {"XL", 40}, {"X", 10},
                                     {"IX", 9},  {"V", 5},   {"IV", 4}, {"I", 1}};
    uint32_t value = 0;
    std::string_view rest = text;
    for (const numeral& each : kNumerals) {
        const size_t most = each.letters.size() == 1 && each.value != 5 && each.value != 50 ? 3 : 1;
        for (size_t i = 0; i < most && rest.starts_with(each.letters); ++i) {
            value += each.value;
            rest.remove_prefix(each.letters.size());
        }
    }
    return rest.empty() ? value : 0;
}

} // namespace tessarin
