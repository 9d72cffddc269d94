#include <algorithm>
#include <array>

#include "text/script/inline_reader.h"
#include "text/script/letters.h"

namespace tessarin {

namespace {

constexpr size_t kLongestWord = 64; ///< that is looked at closely

} // namespace

InlineReader::maybe_match InlineReader::MatchWord(size_t i) const {
    using matcher = maybe_match (InlineReader::*)(size_t) const;
    constexpr std::array<matcher, 12> kMatchers = {&InlineReader::MatchAddress,
                                                   &InlineReader::MatchDottedLetters,
                                                   &InlineReader::MatchRoman,
                                                   &InlineReader::MatchNeighbour,
                                                   &InlineReader::MatchCalendar,
                                                   &InlineReader::MatchAbbreviation,
                                                   &InlineReader::MatchLettersAndDigits,
                                                   &InlineReader::MatchStutter,
                                                   &InlineReader::MatchJoint,
                                                   &InlineReader::MatchDrawl,
                                                   &InlineReader::MatchCapitals,
                                                   &InlineReader::MatchWithoutVowel};
    const std::string_view text = tokens.Text(i);
    if (text.size() <= kLongestWord) {
        for (const matcher each : kMatchers) {
            if (maybe_match found = (this->*each)(i)) {
                return found;
            }
        }
    }
    return match{std::string(text), i + 1};
}

/// An address of the web or of mail: up to the next gap, said sign by sign.
InlineReader::maybe_match InlineReader::MatchAddress(size_t i) const {
    constexpr size_t kReach = 60;
    if (!tokens.Is(i + 1, '.') && !tokens.Is(i + 1, '@') && !tokens.Is(i + 1, ':') &&
        !tokens.Is(i + 1, '_') && !tokens.IsDigits(i + 1)) {
        return std::nullopt;
    }
    size_t end = i;
    size_t lastWord = i;
    bool hasAt = false;
    bool hasStop = false;
    while (!tokens.IsGap(end) && end < i + kReach) {
        hasAt = hasAt || (tokens.Is(end, '@') && tokens.IsWord(end + 1));
        hasStop = hasStop || (tokens.Is(end, '.') && tokens.IsWord(end + 1));
        lastWord = tokens.IsWord(end) || tokens.IsDigits(end) ? end : lastWord;
        ++end;
    }
    end = lastWord + 1;
    const std::string first = InLowerCase(tokens.Text(i));
    const bool isLink = (first == "http" || first == "https") && tokens.Is(i + 1, ':') &&
                        tokens.Is(i + 2, '/') && tokens.Is(i + 3, '/');
    const bool isSite =
        hasStop && (first == "www" || (tokens.Is(i + 1, '.') && end == i + 3 &&
                                       table.Find(script_section::kDomains, tokens.Text(i + 2))));
    if (!isLink && !isSite && !(hasAt && hasStop)) {
        return std::nullopt;
    }
    match found{"", end};
    for (size_t at = isLink ? i + 4 : i; at < end; ++at) {
        if (tokens.IsDigits(at)) {
            AddWords(numbers.Cardinal(tokens.Text(at)), found.spoken);
        } else if (tokens.IsWord(at)) {
            const bool isSpelled =
                tokens.Text(at).size() < 4 && std::ranges::none_of(tokens.Text(at), IsVowel);
            AddWords(isSpelled ? Spelled(tokens.Text(at)) : std::string(tokens.Text(at)),
                     found.spoken);
        } else {
            const std::string_view name = tokens.Is(at, '.')   ? "dot"
                                          : tokens.Is(at, '@') ? "at"
                                          : tokens.Is(at, '/') ? "slash"
                                          : tokens.Is(at, '-') ? "dash"
                                          : tokens.Is(at, '_') ? "underscore"
                                                               : "";
            AddWords(table.Word(name), found.spoken);
        }
    }
    return found;
}

/// The token after the stop at `i`, or `i` where the stop ends a line, too, and is a pause.
size_t InlineReader::StopEnd(size_t i) const {
    return IsSentenceEnd(i + 1) ? i : i + 1;
}

/// Saint before a name, street after one.
InlineReader::maybe_match InlineReader::MatchNeighbour(size_t i) const {
    const ScriptTable::fields* const names =
        table.FindAnyCase(script_section::kNeighbours, tokens.Text(i));
    if (names == nullptr || !tokens.Is(i + 1, '.')) {
        return std::nullopt;
    }
    const size_t next = tokens.SkipBlank(i + 2);
    const bool hasNameAfter = tokens.IsCapitalised(next);
    const size_t before = tokens.WordBefore(i, 1);
    bool hasNumber = false;
    for (size_t back = 1; back <= 6 && back <= i; ++back) {
        hasNumber = hasNumber || tokens.IsDigits(i - back);
    }
    const bool isAfter = before < tokens.GetCount() && i > 0 && tokens.IsBlank(i - 1) &&
                         tokens.IsCapitalised(before) && (hasNumber || !hasNameAfter);
    return match{(*names)[isAfter ? 1 : 0], StopEnd(i + 1) == i + 1 ? i + 1 : i + 2};
}

/// Abbreviated months and days.
InlineReader::maybe_match InlineReader::MatchCalendar(size_t i) const {
    const std::string_view text = tokens.Text(i);
    if (!tokens.IsCapitalised(i) || text.size() > 5) {
        return std::nullopt;
    }
    const std::string_view month = table.Get(script_section::kMonths, text);
    const std::string_view name = month.empty() ? table.Get(script_section::kDays, text) : month;
    if (name.empty() || InLowerCase(text) == name) {
        return std::nullopt;
    }
    const bool hasStop = tokens.Is(i + 1, '.');
    const size_t next = tokens.SkipBlank(hasStop ? i + 2 : i + 1);
    const bool hasDigits =
        tokens.IsDigits(next) || (i >= 2 && tokens.IsBlank(i - 1) && tokens.IsDigits(i - 2));
    const bool goesOn = hasStop && !IsSentenceEnd(i + 2) && !tokens.IsCapitalised(next);
    if (!(goesOn || (!month.empty() && hasDigits))) {
        return std::nullopt;
    }
    match found{std::string(name), hasStop ? i + 2 : i + 1};
    if ((tokens.Is(found.end, '-') || tokens.Is(found.end, kEnDash)) &&
        tokens.IsCapitalised(found.end + 1)) {
        AddWords(table.Word("to"), found.spoken);
        ++found.end;
    }
    return found;
}

InlineReader::maybe_match InlineReader::MatchAbbreviation(size_t i) const {
    size_t end = i + 1;
    const ScriptTable::fields* entry = nullptr;
    if (tokens.Is(i + 1, '/')) {
        end = tokens.IsWord(i + 2) ? i + 3 : i + 2;
        entry = table.Find(script_section::kAbbreviations, InLowerCase(tokens.Text(i, end)));
        if (entry == nullptr) {
            end = i + 1;
        }
    }
    entry = entry != nullptr ? entry
                             : table.FindAnyCase(script_section::kAbbreviations, tokens.Text(i));
    if (entry == nullptr) {
        return std::nullopt;
    }
    const std::string_view when = entry->size() > 1 ? std::string_view((*entry)[1]) : "any";
    const bool hasStop = tokens.Is(end, '.') && !tokens.Is(end + 1, '.');
    const size_t next = tokens.SkipBlank(hasStop ? end + 1 : end);
    const bool isNumberNext = tokens.IsDigits(next) || RomanValue(tokens.Text(next)) > 1;
    const bool holds = when == "any" || (hasStop && when == "stop") ||
                       (hasStop && when == "number" && isNumberNext) ||
                       (hasStop && when == "capital" && tokens.IsCapitalised(i) &&
                        !(IsSentenceEnd(end + 1) && IsKnown(tokens.Text(i)) &&
                          tokens.WordBefore(i, 1) == tokens.GetCount()));
    if (!holds) {
        return std::nullopt;
    }
    return match{entry->front(), hasStop && StopEnd(end) != end ? end + 1 : end};
}

/// A Roman numeral: a number after words such as Chapter, an ordinal after a ruler's name.
InlineReader::maybe_match InlineReader::MatchRoman(size_t i) const {
    const uint32_t value = tokens.IsAllCapitals(i) ? RomanValue(tokens.Text(i)) : 0;
    const size_t before = tokens.WordBefore(i, 2);
    if (value == 0 || before == tokens.GetCount()) {
        return std::nullopt;
    }
    const bool isJoined = i > 0 && tokens.IsBlank(i - 1) &&
                          (before + 2 == i || (before + 3 == i && tokens.Is(before + 1, '.')));
    if (!isJoined || !tokens.IsCapitalised(before)) {
        return std::nullopt;
    }
    if (table.Has(script_section::kRoman, tokens.Text(before))) {
        return match{numbers.Cardinal(std::to_string(value)), i + 1};
    }
    const size_t title = tokens.WordBefore(before, 1);
    const bool isRuler =
        table.Has(script_section::kRegnal, tokens.Text(before)) ||
        (title < tokens.GetCount() && table.Has(script_section::kRegnal, tokens.Text(title)));
    if (isRuler && before + 2 == i) {
        std::string spoken(table.Word("the"));
        AddWords(numbers.Ordinal(std::to_string(value)), spoken);
        return match{spoken, i + 1};
    }
    return std::nullopt;
}

/// A day or a half of the day before a dash: from it to the next one.
InlineReader::maybe_match InlineReader::MatchJoint(size_t i) const {
    const bool isHalf = table.Has(script_section::kDayHalves, tokens.Text(i));
    const bool isDay = table.Has(script_section::kDays, tokens.Text(i)) && tokens.IsCapitalised(i);
    if (!isHalf && !isDay) {
        return std::nullopt;
    }
    const bool isJoined = (tokens.Is(i + 1, '-') || tokens.Is(i + 1, kEnDash)) &&
                          (tokens.IsDigits(i + 2) || tokens.IsCapitalised(i + 2));
    const bool isTime =
        isHalf && i > 0 && (tokens.IsDigits(i - 1) || (i > 1 && tokens.IsDigits(i - 2)));
    const bool isSecond = isDay && i >= 2 && (tokens.Is(i - 1, '-') || tokens.Is(i - 1, kEnDash)) &&
                          table.Has(script_section::kDays, tokens.Text(i - 2));
    if (!isTime && !isSecond && !(isDay && isJoined)) {
        return std::nullopt;
    }
    match found{isHalf ? Spelled(tokens.Text(i))
                       : std::string(table.Get(script_section::kDays, tokens.Text(i))),
                i + 1};
    if (isJoined) {
        AddWords(table.Word("to"), found.spoken);
        ++found.end;
    }
    return found;
}

} // namespace tessarin
