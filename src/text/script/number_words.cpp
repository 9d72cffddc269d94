#include "text/script/number_words.h"

#include <algorithm>
#include <charconv>

#include "text/script/script_table.h"

namespace tessarin {

namespace {

std::string_view WithoutZeros(std::string_view digits) {
    const size_t first = std::min(digits.find_first_not_of('0'), digits.size() - 1);
    return digits.substr(first);
}

/// Puts `word` in the place of the last of `words`.
std::string WithLast(std::string words, std::string_view word) {
    const size_t start = words.rfind(' ') + 1; // npos + 1 is 0
    return words.replace(start, words.size() - start, word);
}

std::string_view LastOf(std::string_view words) {
    return words.substr(words.rfind(' ') + 1);
}

} // namespace

uint32_t ValueOf(std::string_view digits) {
    uint32_t value = UINT32_MAX;
    if (digits.size() <= 9) {
        std::from_chars(digits.data(), digits.data() + digits.size(), value);
    }
    return value;
}

void AddWords(std::string_view words, std::string& to) {
    if (!words.empty()) {
        to += to.empty() ? "" : " ";
        to += words;
    }
}

std::string NumberWords::Cardinal(std::string_view digits) const {
    digits = WithoutZeros(digits);
    std::string words;
    const size_t numGroups = (digits.size() + 2) / 3;
    for (size_t group = numGroups; group > 0; --group) {
        const size_t after = 3 * (group - 1);
        const size_t end = digits.size() - after;
        const std::string_view three =
            digits.substr(end > 3 ? end - 3 : 0, std::min<size_t>(end, 3));
        const std::string_view scale = table.Get(script_section::kScales, std::to_string(after));
        if (group > 1 && scale.empty()) {
            return Digits(digits);
        }
        const std::string_view plain = WithoutZeros(three);
        if (plain != "0" || numGroups == 1) {
            AddWords(BelowThousand(plain), words);
            AddWords(scale, words);
        }
    }
    return words;
}

std::string NumberWords::BelowThousand(std::string_view digits) const {
    if (digits.size() < 3) {
        return TwoDigits(digits);
    }
    std::string words = TwoDigits(digits.substr(0, 1));
    AddWords(table.Word("hundred"), words);
    if (digits.substr(1) != "00") {
        AddWords(TwoDigits(WithoutZeros(digits.substr(1))), words);
    }
    return words;
}

/// One or two digits of which the first is not zero, or a single zero.
std::string NumberWords::TwoDigits(std::string_view digits) const {
    std::string words(table.Get(script_section::kCardinals, digits));
    if (words.empty()) {
        words = table.Get(script_section::kCardinals, std::string(digits.substr(0, 1)) + "0");
        AddWords(table.Get(script_section::kCardinals, digits.substr(1)), words);
    }
    return words;
}

std::string NumberWords::Ordinal(std::string_view digits) const {
    return MakeOrdinal(Cardinal(digits));
}

std::string NumberWords::Digits(std::string_view digits) const {
    std::string words;
    for (size_t i = 0; i < digits.size(); ++i) {
        const bool isInnerZero = digits[i] == '0' && digits.size() > 1;
        AddWords(isInnerZero ? table.Word("oh")
                             : table.Get(script_section::kCardinals, digits.substr(i, 1)),
                 words);
    }
    return words;
}

std::string NumberWords::Pairs(std::string_view digits) const {
    if (digits.size() < 3 || digits.size() > 4 || digits.starts_with('0')) {
        return digits.starts_with('0') ? Digits(digits) : Cardinal(digits);
    }
    const std::string_view front = digits.substr(0, digits.size() - 2);
    const std::string_view back = digits.substr(digits.size() - 2);
    if (back == "00" && front.ends_with('0')) {
        return Cardinal(digits);
    }
    std::string words = TwoDigits(front);
    if (back == "00") {
        AddWords(table.Word("hundred"), words);
    } else if (back.starts_with('0')) {
        AddWords(table.Word("oh"), words);
        AddWords(TwoDigits(back.substr(1)), words);
    } else {
        AddWords(TwoDigits(back), words);
    }
    return words;
}

std::string NumberWords::Year(std::string_view digits) const {
    const bool countsThousands = digits.size() == 4 && digits.substr(1, 2) == "00";
    return countsThousands ? Cardinal(digits) : Pairs(digits);
}

std::vector<std::string> NumberWords::Readings(std::string_view digits, bool isGrouped) const {
    constexpr size_t kMostDigits = 10;
    if (digits.size() > kMostDigits || (digits.size() <= 2 && !digits.starts_with('0'))) {
        return {};
    }
    const std::string_view front =
        digits.substr(0, digits.size() - std::min<size_t>(digits.size(), 2));
    const std::string_view back = digits.substr(front.size());
    std::vector<std::string> ways;
    const auto add = [&](std::initializer_list<std::string_view> parts) {
        std::string words;
        for (const std::string_view part : parts) {
            AddWords(part, words);
        }
        ways.push_back(std::move(words));
    };
    if (digits.starts_with('0')) {
        std::string zeros;
        for (size_t i = 0; i < digits.size(); ++i) {
            AddWords(TwoDigits(digits.substr(i, 1)), zeros);
        }
        ways = {Digits(digits), zeros, Cardinal(digits)};
        if (digits == "0") {
            add({table.Word("oh")});
        }
        return ways;
    }
    const std::string cardinal = Cardinal(digits);
    if (digits.find_first_not_of('0', 1) == std::string_view::npos && digits[0] == '1') {
        add({table.Word("article"), LastOf(cardinal)}); // a hundred
    }
    if (!isGrouped && digits.size() <= 4) {
        ways.push_back(Pairs(digits));
    }
    ways.push_back(cardinal);
    if (back != "00") {
        add({Cardinal(std::string(front) + "00"), table.Word("and"), Cardinal(back)});
    }
    if (!isGrouped && digits.size() == 4 && back.starts_with('0') && back != "00" &&
        !front.ends_with('0')) {
        add({TwoDigits(front), table.Word("hundred"), TwoDigits(back.substr(1))});
        add({TwoDigits(front), TwoDigits(back.substr(1))});
    }
    if (!isGrouped) {
        ways.push_back(Digits(digits));
    }
    return ways;
}

std::string NumberWords::MakeOrdinal(std::string words) const {
    const std::string_view ordinal = table.Get(script_section::kOrdinals, LastOf(words));
    return ordinal.empty() ? words : WithLast(words, ordinal);
}

std::string NumberWords::MakePlural(std::string words) const {
    const std::string_view plural = table.Get(script_section::kPlurals, LastOf(words));
    return plural.empty() ? words + "s" : WithLast(words, plural);
}

} // namespace tessarin
