#include "text/script/inline_reader.h"

namespace tessarin {

InlineReader::maybe_match InlineReader::MatchSign(size_t i) const {
    if (maybe_match found = MatchSignBeforeNumber(i)) {
        return found;
    }
    const char32_t code = tokens.At(i).code;
    const bool isJoint = code == '-' && i > 0 && !tokens.IsGap(i - 1) && !tokens.IsGap(i + 1) &&
                         (tokens.IsWord(i - 1) || tokens.IsDigits(i - 1)) &&
                         (tokens.IsWord(i + 1) || tokens.IsDigits(i + 1));
    if (isJoint) {
        return match{"", i + 1}; // one word, without a pause
    }
    const std::string_view name = table.Get(script_section::kSymbols, tokens.Text(i));
    if (name.empty()) {
        return std::nullopt;
    }
    const size_t next = tokens.SkipBlank(i + 1);
    if (code == '<' || code == '>') {
        const bool compares = tokens.IsDigits(next) ||
                              table.Find(script_section::kCurrencies, tokens.Text(next)) != nullptr;
        return compares ? maybe_match{{std::string(name), i + 1}} : match{"", i + 1};
    }
    if (code == '~' && !tokens.IsDigits(next) &&
        table.Find(script_section::kCurrencies, tokens.Text(next)) == nullptr) {
        return match{"", i + 1};
    }
    if (code == '=' && (tokens.Is(i + 1, '=') || (i > 0 && tokens.Is(i - 1, '=')))) {
        return match{"", i + 1}; // a line across
    }
    return match{std::string(name), i + 1};
}

/// Signs that belong to the number after them.
InlineReader::maybe_match InlineReader::MatchSignBeforeNumber(size_t i) const {
    const char32_t code = tokens.At(i).code;
    const bool isDigitNext = tokens.IsDigits(i + 1);
    const bool isFree =
        i == 0 || tokens.IsGap(i - 1) ||
        (tokens.At(i - 1).kind == script_token_kind::kSymbol && !tokens.Is(i - 1, ')'));
    if (maybe_match money = MatchMoney(i)) {
        return money;
    }
    if (code == '-' && i > 0 && (tokens.Is(i - 1, '%') || tokens.Is(i - 1, 0xB0)) && isDigitNext) {
        return match{std::string(table.Word("to")), i + 1};
    }
    const bool isAfterHalf = code == '-' && isDigitNext && i >= 4 && tokens.Is(i - 1, '.') &&
                             table.Has(script_section::kDayHalves, tokens.Text(i - 4, i - 1));
    if (isAfterHalf) {
        return match{std::string(table.Word("to")), i + 1};
    }
    if (code == '-' && isFree && !(i > 0 && tokens.Is(i - 1, '.')) && !dashesAreTurns &&
        (isDigitNext || (MatchMoney(i + 1) && !tokens.IsGap(i + 1)))) {
        return match{std::string(table.Word("minus")), i + 1};
    }
    if (code == '#' && i + 1 < tokens.GetCount()) {
        if (isDigitNext) {
            return match{std::string(table.Word("number")), i + 1};
        }
        if (tokens.IsWord(i + 1)) {
            return match{std::string(table.Word("hashtag")), i + 1};
        }
    }
    if (code == '.' && isDigitNext && isFree) {
        std::string spoken(table.Word("point"));
        AddWords(SayDecimals(tokens.Text(i + 1)), spoken);
        return match{spoken, i + 2};
    }
    if (code == '\'' && tokens.NumDigits(i + 1) == 2 && isFree) {
        std::string spoken = numbers.Pairs(tokens.Text(i + 1));
        const bool isDecade = tokens.Text(i + 2) == "s";
        return match{isDecade ? numbers.MakePlural(spoken) : spoken, isDecade ? i + 3 : i + 2};
    }
    return MatchFractionSign(i);
}

} // namespace tessarin
