#include <algorithm>
#include <array>

#include "text/script/inline_reader.h"

namespace tessarin {

namespace {

struct vulgar_fraction {
    char32_t code;
    std::string_view over;
    std::string_view under;
};
constexpr vulgar_fraction kVulgarFractions[] = {
    {0xBC, "1", "4"},   {0xBD, "1", "2"},   {0xBE, "3", "4"},   {0x2153, "1", "3"},
    {0x2154, "2", "3"}, {0x2155, "1", "5"}, {0x2156, "2", "5"}, {0x2157, "3", "5"},
    {0x2158, "4", "5"}, {0x2159, "1", "6"}, {0x215A, "5", "6"}, {0x215B, "1", "8"},
    {0x215C, "3", "8"}, {0x215D, "5", "8"}, {0x215E, "7", "8"},
};

const vulgar_fraction* FindVulgar(char32_t code) {
    for (const vulgar_fraction& each : kVulgarFractions) {
        if (each.code == code) {
            return &each;
        }
    }
    return nullptr;
}

} // namespace

InlineReader::maybe_match InlineReader::MatchNumber(size_t i) const {
    using matcher = maybe_match (InlineReader::*)(size_t) const;
    constexpr std::array<matcher, 7> kMatchers = {
        &InlineReader::MatchFixed,     &InlineReader::MatchDigitGroups,
        &InlineReader::MatchSlashDate, &InlineReader::MatchTime,
        &InlineReader::MatchVersion,   &InlineReader::MatchDayOfMonth,
        &InlineReader::MatchQuantity};
    for (const matcher each : kMatchers) {
        if (maybe_match found = (this->*each)(i)) {
            return found;
        }
    }
    return std::nullopt;
}

/// Numbers that have an entry of their own in the table, such as 24/7.
InlineReader::maybe_match InlineReader::MatchFixed(size_t i) const {
    const size_t end = i + 3;
    if (end > tokens.GetCount() || !tokens.IsDigits(i + 2) || tokens.IsGap(i + 1) ||
        tokens.IsWord(end) || tokens.Is(end, '/')) {
        return std::nullopt;
    }
    const std::string_view spoken = table.Get(script_section::kFixed, tokens.Text(i, end));
    return spoken.empty() ? std::nullopt : maybe_match{{std::string(spoken), end}};
}

InlineReader::written_number InlineReader::ReadNumber(size_t i) const {
    written_number number{std::string(tokens.Text(i)), "", i + 1, false};
    if (number.whole.size() <= 3) {
        while (tokens.Is(number.end, ',') && tokens.NumDigits(number.end + 1) == 3) {
            number.whole += tokens.Text(number.end + 1);
            number.end += 2;
            number.isGrouped = true;
        }
    }
    if (tokens.Is(number.end, '.') && tokens.IsDigits(number.end + 1)) {
        number.decimals = tokens.Text(number.end + 1);
        number.end += 2;
    }
    return number;
}

std::string InlineReader::SayDecimals(std::string_view digits) const {
    std::string spoken;
    for (size_t i = 0; i < digits.size(); ++i) {
        AddWords(table.Get(script_section::kCardinals, digits.substr(i, 1)), spoken);
    }
    return spoken;
}

std::string InlineReader::SayNumber(const written_number& number) const {
    std::string spoken = numbers.Cardinal(number.whole);
    if (!number.decimals.empty()) {
        AddWords(table.Word("point"), spoken);
        AddWords(SayDecimals(number.decimals), spoken);
    }
    return spoken;
}

bool InlineReader::IsWordBefore(script_section section, size_t i, size_t reach) const {
    const size_t word = tokens.WordBefore(i, reach);
    return word < tokens.GetCount() && table.Has(section, tokens.Text(word));
}

/// Whether one of the last words of the line is in a section.
bool InlineReader::IsWordNear(script_section section, size_t i, size_t numWords) const {
    for (; numWords > 0; --numWords) {
        i = tokens.WordBefore(i);
        if (i == tokens.GetCount()) {
            return false;
        }
        if (table.Has(section, tokens.Text(i))) {
            return true;
        }
    }
    return false;
}

/// Digits without separators. What stands around them decides how they are said.
std::string InlineReader::SayPlain(size_t i) const {
    const std::string_view digits = tokens.Text(i);
    const size_t next = tokens.SkipBlank(i + 1);
    const bool isGlued =
        i > 0 && (tokens.IsWord(i - 1) || (tokens.Is(i - 1, '-') && i > 1 && tokens.IsWord(i - 2)));
    if (digits.size() == 4 && next > i + 1 &&
        table.Has(script_section::kHours, tokens.Text(next)) && digits.ends_with("00")) {
        std::string spoken = digits.starts_with('0') ? numbers.Digits(digits.substr(0, 2))
                                                     : numbers.Cardinal(digits.substr(0, 2));
        AddWords(table.Word("hundred"), spoken);
        return spoken;
    }
    if (digits.size() == 3 && digits.starts_with("00")) {
        std::string spoken(table.Word("double"));
        AddWords(table.Word("oh"), spoken);
        AddWords(numbers.Digits(digits.substr(2)), spoken);
        return spoken;
    }
    if (digits.size() > 1 && digits.starts_with('0')) {
        return numbers.Digits(digits);
    }
    if (digits.size() > 2) {
        if (IsWordNear(script_section::kDigitContexts, i, 3)) {
            return numbers.Digits(digits);
        }
    }
    // A name with its number: Boeing 747.
    const size_t name = tokens.WordBefore(i, 1);
    const bool isOfName = digits.size() == 3 && !digits.ends_with("00") && name < i &&
                          name + 2 == i && tokens.IsCapitalised(name) && !IsSentenceStart(name);
    if (isGlued || isOfName || IsWordBefore(script_section::kPairContexts, i, 2)) {
        return numbers.Pairs(digits);
    }
    if (digits.size() >= 5 && !digits.ends_with("00") &&
        (IsWordNear(script_section::kNumbered, i, 2) || (i > 0 && tokens.Is(i - 1, '#')))) {
        return numbers.Digits(digits);
    }
    const uint32_t value = ValueOf(digits);
    const bool isEra =
        next > i + 1 && table.Has(script_section::kEras, tokens.Text(next)) &&
        (tokens.At(next).end - tokens.At(next).start > 1 || tokens.Is(next + 1, '.'));
    const bool isYear = digits.size() == 4 &&
                        ((value >= 1100 && value < 2100) ||
                         (value < 3000 && (IsWordBefore(script_section::kYearContexts, i, 1) ||
                                           IsWordNear(script_section::kYearWords, i, 2))));
    if (isYear) {
        return numbers.Year(digits);
    }
    return isEra && digits.size() == 3 ? numbers.Pairs(digits) : numbers.Cardinal(digits);
}

std::string InlineReader::SayFraction(std::string_view over, std::string_view under) const {
    const ScriptTable::fields* const names = table.Find(script_section::kFractions, under);
    if (names == nullptr) {
        return "";
    }
    std::string spoken = numbers.Cardinal(over);
    AddWords(over == "1" ? names->front() : (*names)[1], spoken);
    return spoken;
}

/// A number that ends in a fraction, or that is divided by another one.
InlineReader::maybe_match InlineReader::MatchFraction(const written_number& number) const {
    size_t at = number.end;
    const auto mixed = [&](std::string_view over, std::string_view under) {
        std::string spoken = SayNumber(number);
        AddWords(table.Word("and"), spoken);
        if (over == "1") {
            const std::string_view part = table.Get(script_section::kFractions, under);
            AddWords(table.Word("article"), spoken);
            AddWords(part, spoken);
        } else {
            AddWords(SayFraction(over, under), spoken);
        }
        return spoken;
    };
    if (const vulgar_fraction* const sign = FindVulgar(tokens.At(at).code);
        sign != nullptr && tokens.At(at).kind == script_token_kind::kSymbol) {
        return match{mixed(sign->over, sign->under), at + 1};
    }
    if (tokens.Is(at, '/') && tokens.IsDigits(at + 1)) {
        const std::string_view under = tokens.Text(at + 1);
        std::string part;
        if (number.IsPlain() && number.whole.size() >= 2 && under.size() >= 2 &&
            IsWordNear(script_section::kOverContexts, at - 1, 2)) {
            part = numbers.Pairs(number.whole);
            AddWords(table.Word("over"), part);
            AddWords(numbers.Cardinal(under), part);
        } else if (number.IsPlain() && ValueOf(number.whole) < ValueOf(under) &&
                   number.whole != "0") {
            part = SayFraction(number.whole, under);
        }
        if (part.empty()) {
            part = SayNumber(number);
            AddWords(table.Word("of"), part);
            AddWords(numbers.Cardinal(under), part);
        }
        return match{part, at + 2};
    }
    if (number.decimals.empty() && tokens.IsBlank(at) && tokens.IsDigits(at + 1) &&
        tokens.Is(at + 2, '/') && tokens.IsDigits(at + 3) &&
        ValueOf(tokens.Text(at + 1)) < ValueOf(tokens.Text(at + 3)) &&
        table.Find(script_section::kFractions, tokens.Text(at + 3)) != nullptr) {
        return match{mixed(tokens.Text(at + 1), tokens.Text(at + 3)), at + 4};
    }
    return std::nullopt;
}

/// A fraction in one sign, with its unit.
InlineReader::maybe_match InlineReader::MatchFractionSign(size_t i) const {
    const vulgar_fraction* const sign = FindVulgar(tokens.At(i).code);
    if (sign == nullptr) {
        return std::nullopt;
    }
    match found{SayFraction(sign->over, sign->under), i + 1};
    size_t end = tokens.SkipBlank(i + 1);
    if (const ScriptTable::fields* const unit = FindUnit(end, end, end == i + 1)) {
        AddWords(unit->front(), found.spoken);
        found.end = SkipUnitStop(end);
    }
    return found;
}

/// Letters that are written to a number: 21st, 1990s, 221B, 1.5M.
InlineReader::maybe_match InlineReader::MatchWithLetters(const written_number& number) const {
    const size_t at = number.end;
    const bool hasApostrophe = tokens.Is(at, '\'') && tokens.Text(at + 1) == "s";
    const size_t word = hasApostrophe ? at + 1 : at;
    if (!tokens.IsWord(word)) {
        return std::nullopt;
    }
    const std::string lower = InLowerCase(tokens.Text(word));
    if (number.decimals.empty() && table.Has(script_section::kOrdinalEndings, lower)) {
        return match{numbers.Ordinal(number.whole), word + 1};
    }
    if (number.decimals.empty() && lower == "s") {
        return match{numbers.MakePlural(number.isGrouped ? numbers.Cardinal(number.whole)
                                                         : numbers.Pairs(number.whole)),
                     word + 1};
    }
    const std::string_view power = table.Get(script_section::kAmounts, lower);
    if (tokens.Text(word) == "M" || (!number.decimals.empty() && !power.empty() &&
                                     tokens.IsAllCapitals(word) && tokens.Text(word) == "B")) {
        return match{SayNumber(number) + " " +
                         std::string(table.Get(script_section::kScales, power)),
                     word + 1};
    }
    return std::nullopt;
}

InlineReader::maybe_match InlineReader::MatchQuantity(size_t i) const {
    const written_number number = ReadNumber(i);
    if (maybe_match found = MatchFraction(number)) {
        if (const maybe_match unit = MatchUnit(i, found->end, false)) {
            AddWords(unit->spoken, found->spoken);
            found->end = unit->end;
            return found;
        }
        if (tokens.Is(found->end, '"') && !isQuoteOpen) {
            AddWords(table.Word(IsAdjective(i, found->end + 1) ? "inch" : "inch-mark"),
                     found->spoken);
            ++found->end;
        }
        return found;
    }
    if (maybe_match found = MatchFeetAndInches(number)) {
        return found;
    }
    if (maybe_match found = MatchWithLetters(number)) {
        return found;
    }
    if (maybe_match found = MatchCounted(i, number)) {
        return found;
    }
    const size_t at = number.end;
    match found{number.IsPlain() ? SayPlain(i) : SayNumber(number), at};
    const auto isNumberAt = [&](size_t place) {
        return tokens.IsDigits(place) ||
               (table.Find(script_section::kCurrencies, tokens.Text(place)) != nullptr &&
                tokens.IsDigits(place + 1));
    };
    const bool isRange =
        (tokens.Is(at, '-') || tokens.Is(at, kEnDash) || tokens.Is(at, ':')) && isNumberAt(at + 1);
    const size_t by = tokens.SkipBlank(at);
    const bool isTimes = tokens.Is(by, 0xD7) || InLowerCase(tokens.Text(by)) == "x";
    if (isRange) {
        AddWords(table.Word("to"), found.spoken);
        found.end = at + 1;
    } else if (isTimes && tokens.IsDigits(tokens.SkipBlank(by + 1))) {
        AddWords(table.Word("by"), found.spoken);
        found.end = by + 1;
    } else if (isTimes && by == at && !tokens.Is(tokens.SkipBlank(by + 1), '=')) {
        AddWords(table.Word("times"), found.spoken);
        found.end = by + 1;
    } else if (tokens.IsAllCapitals(at) && tokens.Text(at).size() <= 2 && number.IsPlain()) {
        found.spoken = numbers.Pairs(number.whole);
        for (const char letter : tokens.Text(at)) {
            AddWords(std::string_view(&letter, 1), found.spoken);
        }
        found.end = at + 1;
    } else if (tokens.Text(at).size() == 1 && tokens.IsWord(at) && number.IsPlain()) {
        found.spoken = numbers.Pairs(number.whole);
    } else if (number.decimals.empty()) {
        found.others = numbers.Readings(number.whole, number.isGrouped);
    } else if (number.whole == "0") {
        found.others = {found.spoken.substr(found.spoken.find(' ') + 1)}; // point five
    }
    return found;
}

} // namespace tessarin
