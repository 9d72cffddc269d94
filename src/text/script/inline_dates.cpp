#include <algorithm>

#include "text/script/inline_reader.h"

namespace tessarin {

/// Whether the digits at `i` are a group of a telephone number, or of others that are joined by
/// hyphens and said digit by digit.
bool InlineReader::IsTelephoneGroup(size_t i) const {
    constexpr size_t kMostGroups = 8;
    size_t first = i;
    for (size_t groups = 0; groups < kMostGroups && first >= 2 && tokens.Is(first - 1, '-') &&
                            tokens.IsDigits(first - 2);
         ++groups) {
        first -= 2;
    }
    std::string sizes;
    for (size_t at = first; tokens.IsDigits(at) && sizes.size() < kMostGroups; at += 2) {
        sizes += static_cast<char>('0' + std::min<size_t>(tokens.NumDigits(at), 9));
        if (!tokens.Is(at + 1, '-')) {
            break;
        }
    }
    const bool areSingles = sizes.size() >= 3 && sizes.find_first_not_of('1') == std::string::npos;
    return sizes == "34" || sizes == "334" || sizes == "1334" || areSingles;
}

/// A group of a telephone number, by itself, since it may be followed by a pause; or a date such as
/// 1999-12-25.
InlineReader::maybe_match InlineReader::MatchDigitGroups(size_t i) const {
    const std::string_view digits = tokens.Text(i);
    const bool isAreaCode = i > 0 && tokens.Is(i - 1, '(') && digits.size() == 3 &&
                            tokens.Is(i + 1, ')') && tokens.IsDigits(tokens.SkipBlank(i + 2));
    if (isAreaCode || IsTelephoneGroup(i)) {
        const bool isRound = digits.size() == 3 && digits.ends_with("00") && digits[0] != '0';
        return match{isRound ? numbers.Cardinal(digits) : numbers.Digits(digits), i + 1};
    }
    const char32_t joint = tokens.Is(i + 1, '/') ? U'/' : U'-';
    const bool isDate = digits.size() == 4 && tokens.Is(i + 1, joint) &&
                        tokens.NumDigits(i + 2) == 2 && tokens.Is(i + 3, joint) &&
                        tokens.NumDigits(i + 4) == 2;
    if (!isDate) {
        return std::nullopt;
    }
    std::string spoken(
        table.Get(script_section::kMonthNumbers, std::to_string(ValueOf(tokens.Text(i + 2)))));
    const uint32_t day = ValueOf(tokens.Text(i + 4));
    if (spoken.empty() || day == 0 || day > 31) {
        return std::nullopt;
    }
    AddWords(numbers.Ordinal(tokens.Text(i + 4)), spoken);
    AddWords(numbers.Year(digits), spoken);
    return match{spoken, i + 5};
}

InlineReader::maybe_match InlineReader::MatchSlashDate(size_t i) const {
    const size_t end = i + 5;
    if (!tokens.Is(i + 1, '/') || !tokens.Is(i + 3, '/') || tokens.NumDigits(i + 2) == 0 ||
        tokens.NumDigits(i + 2) > 2 || tokens.NumDigits(i) > 2 ||
        (tokens.NumDigits(i + 4) != 2 && tokens.NumDigits(i + 4) != 4)) {
        return std::nullopt;
    }
    const bool dayFirst =
        (table.Word("date-order") == "dmy" && ValueOf(tokens.Text(i + 2)) <= 12) ||
        ValueOf(tokens.Text(i)) > 12;
    const std::string_view day = tokens.Text(dayFirst ? i : i + 2);
    const std::string_view month = table.Get(
        script_section::kMonthNumbers, std::to_string(ValueOf(tokens.Text(dayFirst ? i + 2 : i))));
    if (month.empty() || ValueOf(day) == 0 || ValueOf(day) > 31) {
        return std::nullopt;
    }
    return match{std::string(month) + " " + numbers.Ordinal(day) + " " +
                     numbers.Year(tokens.Text(i + 4)),
                 end};
}

InlineReader::maybe_match InlineReader::MatchTime(size_t i) const {
    const std::string_view hour = tokens.Text(i);
    const std::string_view minute = tokens.Text(i + 2);
    if (hour.size() > 2 || !tokens.Is(i + 1, ':') || tokens.NumDigits(i + 2) != 2 ||
        ValueOf(hour) > 24 || ValueOf(minute) > 59) {
        return std::nullopt;
    }
    match found{numbers.Cardinal(hour), i + 3};
    const bool hasSeconds = tokens.Is(i + 3, ':') && tokens.NumDigits(i + 4) == 2;
    const size_t next = tokens.SkipBlank(i + 3);
    const bool hasHalf = table.Has(script_section::kDayHalves, tokens.Text(next)) ||
                         table.Has(script_section::kDayHalves, tokens.Text(next, next + 3));
    if (minute != "00" || hasSeconds) {
        AddWords(minute.starts_with('0') ? numbers.Digits(minute) : numbers.Cardinal(minute),
                 found.spoken);
    } else if (!hasHalf) {
        AddWords(table.Word(ValueOf(hour) > 12 ? "hundred" : "oclock"), found.spoken);
    }
    if (!hasSeconds) {
        found.others = OtherTimes(hour, minute);
    }
    if (hasSeconds) {
        const std::string_view second = tokens.Text(i + 4);
        AddWords(second.starts_with('0') ? numbers.Digits(second) : numbers.Cardinal(second),
                 found.spoken);
        found.end = i + 5;
    }
    if ((tokens.Is(found.end, '-') || tokens.Is(found.end, kEnDash)) &&
        tokens.IsDigits(found.end + 1)) {
        AddWords(table.Word("to"), found.spoken);
        found.others.clear();
        ++found.end;
    }
    return found;
}

/// Further ways to say a time: nine for nine o'clock, half past three, ten to five.
std::vector<std::string> InlineReader::OtherTimes(std::string_view hour,
                                                  std::string_view minute) const {
    const std::string hours = numbers.Cardinal(hour);
    if (minute == "00") {
        return {hours, hours + " " + std::string(table.Word("oclock"))};
    }
    std::vector<std::string> others;
    if (minute.starts_with('0')) {
        others.push_back(hours + " " + numbers.Cardinal(minute));
    }
    const uint32_t value = ValueOf(minute);
    const std::string_view past = table.Word("past");
    if (past.empty() || ValueOf(hour) > 12 || value % 5 != 0) {
        return others;
    }
    const bool isPast = value <= 30;
    const uint32_t distance = isPast ? value : 60 - value;
    std::string spoken(distance == 15   ? table.Get(script_section::kFractions, "4")
                       : distance == 30 ? table.Get(script_section::kFractions, "2")
                                        : numbers.Cardinal(std::to_string(distance)));
    AddWords(isPast ? past : table.Word("to"), spoken);
    AddWords(isPast ? hours : numbers.Cardinal(std::to_string(ValueOf(hour) % 12 + 1)), spoken);
    if (distance == 15) {
        others.push_back(std::string(table.Word("article")) + " " + spoken);
    }
    others.push_back(std::move(spoken));
    return others;
}

/// Three or more numbers with points between.
InlineReader::maybe_match InlineReader::MatchVersion(size_t i) const {
    if (!tokens.Is(i + 1, '.') || !tokens.IsDigits(i + 2) || !tokens.Is(i + 3, '.') ||
        !tokens.IsDigits(i + 4)) {
        return std::nullopt;
    }
    match found{numbers.Cardinal(tokens.Text(i)), i + 1};
    while (tokens.Is(found.end, '.') && tokens.IsDigits(found.end + 1)) {
        AddWords(table.Word("point"), found.spoken);
        AddWords(numbers.Cardinal(tokens.Text(found.end + 1)), found.spoken);
        found.end += 2;
    }
    return found;
}

bool InlineReader::IsMonthBefore(size_t i) const {
    const size_t word = tokens.WordBefore(i, 2);
    return word + 1 <= i && tokens.IsCapitalised(word) &&
           table.Has(script_section::kMonths, tokens.Text(word)) && i - word <= 3;
}

/// 5 in Nov. 5 or 5 Nov, or the days from one to another.
InlineReader::maybe_match InlineReader::MatchDayOfMonth(size_t i) const {
    const auto isDay = [&](size_t at) {
        return tokens.NumDigits(at) > 0 && tokens.NumDigits(at) <= 2 &&
               ValueOf(tokens.Text(at)) >= 1 && ValueOf(tokens.Text(at)) <= 31;
    };
    if (!isDay(i)) {
        return std::nullopt;
    }
    const bool isGlued = tokens.IsWord(i + 1) || tokens.Is(i + 1, ':') || tokens.Is(i + 1, '%');
    if (IsMonthBefore(i) && !isGlued) {
        match found{numbers.Ordinal(tokens.Text(i)), i + 1};
        found.others = {std::string(table.Word("the")) + " " + found.spoken,
                        numbers.Cardinal(tokens.Text(i))};
        if ((tokens.Is(i + 1, '-') || tokens.Is(i + 1, kEnDash)) && isDay(i + 2)) {
            AddWords(table.Word("to"), found.spoken);
            AddWords(numbers.Ordinal(tokens.Text(i + 2)), found.spoken);
            found.others.clear();
            found.end = i + 3;
        }
        return found;
    }
    const bool isMonthNext = tokens.IsBlank(i + 1) && tokens.IsCapitalised(i + 2) &&
                             table.Has(script_section::kMonths, tokens.Text(i + 2)) &&
                             (tokens.Text(i + 2).size() <= 4 || tokens.IsDigits(i + 4));
    if (!isMonthNext) {
        return std::nullopt;
    }
    std::string spoken(table.Word("the"));
    AddWords(numbers.Ordinal(tokens.Text(i)), spoken);
    return match{spoken + " of", i + 1};
}

} // namespace tessarin
