#include <algorithm>
#include <array>

#include "text/script/inline_reader.h"

namespace tessarin {

namespace {

char LowerCase(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool IsVowel(char letter) {
    return std::string_view("AEIOUYaeiouy").find(letter) != std::string_view::npos;
}

/// The letters with blanks between.
std::string Spelled(std::string_view word) {
    std::string letters;
    for (const char letter : word) {
        if (letter != '.' && letter != '\'') {
            AddWords(std::string_view(&letter, 1), letters);
        }
    }
    return letters;
}

/// The value of a Roman numeral as it is usually written; 0 for any other text.
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

/// The token behind the stop at `i`, or `i` where the stop ends a line, too, and is a pause.
size_t InlineReader::StopEnd(size_t i) const {
    return IsSentenceEnd(i + 1) ? i : i + 1;
}

/// U.N., p.m., or an initial before a name.
InlineReader::maybe_match InlineReader::MatchDottedLetters(size_t i) const {
    constexpr size_t kMostLetters = 8;
    size_t end = i;
    std::string spoken;
    size_t count = 0;
    for (; count < kMostLetters && tokens.IsWord(end) && tokens.Text(end).size() == 1 &&
           tokens.Is(end + 1, '.');
         ++count) {
        AddWords(tokens.Text(end), spoken);
        end += 2;
    }
    const std::string_view known =
        count >= 1 ? table.Get(script_section::kAbbreviations, tokens.Text(i, end - 1)) : "";
    if (count >= 2) {
        return match{known.empty() ? spoken : std::string(known),
                     end - 1 == StopEnd(end - 1) ? end - 1 : end};
    }
    const bool isInitial = count == 1 && known.empty() && tokens.IsCapitalised(i) &&
                           tokens.Text(i) != "I" && tokens.IsBlank(end) &&
                           tokens.IsCapitalised(end + 1);
    return isInitial ? maybe_match{{std::string(tokens.Text(i)), end}} : std::nullopt;
}

/// Saint or street: by whether the name stands behind or before.
InlineReader::maybe_match InlineReader::MatchNeighbour(size_t i) const {
    const ScriptTable::fields* const names =
        table.FindAnyCase(script_section::kNeighbours, tokens.Text(i));
    if (names == nullptr || names->size() < 2 || !tokens.Is(i + 1, '.')) {
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

/// Months and days that are written short.
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
    if (entry == nullptr || entry->empty()) {
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

/// A Roman numeral behind a word that has such, as a number, or behind a ruler's name, as an
/// ordinal.
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

/// B22, PS5, H2O, R2-D2, v2.0: the letters are said singly, what follows by itself.
InlineReader::maybe_match InlineReader::MatchLettersAndDigits(size_t i) const {
    const std::string_view text = tokens.Text(i);
    if (!tokens.IsDigits(i + 1)) {
        return std::nullopt;
    }
    if (InLowerCase(text) == "v" && (i == 0 || !tokens.IsDigits(i - 1))) {
        return match{std::string(table.Word("version")), i + 1};
    }
    return tokens.IsAllCapitals(i) && text.size() <= 3 ? maybe_match{{Spelled(text), i + 1}}
                                                       : std::nullopt;
}

/// The beginning of the next word, once or several times: Y-you, S-s-stop. A consonant is said as
/// the sound that it is.
InlineReader::maybe_match InlineReader::MatchStutter(size_t i) const {
    const std::string_view text = tokens.Text(i);
    const size_t next = tokens.Is(i + 1, '-') ? i + 2 : 0;
    if (next == 0 || !tokens.IsWord(next) || text.size() > 2) {
        return std::nullopt;
    }
    const std::string start = InLowerCase(tokens.Text(next).substr(0, text.size()));
    const bool isSpelling = tokens.IsAllCapitals(next) && tokens.Text(next).size() <= text.size();
    if (start != InLowerCase(text) || isSpelling || IsVowel(text[0])) {
        return std::nullopt;
    }
    const std::string letter(1, LowerCase(text[0]));
    return match{text.size() == 1 ? letter + letter + letter : std::string(text), i + 1};
}

/// A day, or a half of the day, joined to the next: from one to the other.
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
    if (!isTime && !(isDay && isJoined)) {
        return std::nullopt;
    }
    match found{isHalf ? Spelled(tokens.Text(i)) : std::string(tokens.Text(i)), i + 1};
    if (isJoined) {
        AddWords(table.Word("to"), found.spoken);
        ++found.end;
    }
    return found;
}

/// Letters for the letters of an abbreviation in capitals; other capitals are stress.
InlineReader::maybe_match InlineReader::MatchCapitals(size_t i) const {
    const std::string_view text = tokens.Text(i);
    if (text.size() < 2) {
        return std::nullopt;
    }
    std::string_view stem = text;
    std::string ending;
    if (stem.ends_with("'s") || stem.ends_with("s")) {
        ending = stem.ends_with("'s") ? "'s" : "s";
        stem.remove_suffix(ending.size());
    }
    const bool isPlural = !ending.empty() && stem.size() >= 2 &&
                          std::ranges::all_of(stem, [](char c) { return c >= 'A' && c <= 'Z'; });
    if (!tokens.IsAllCapitals(i) && !isPlural) {
        return std::nullopt;
    }
    if (!isPlural) {
        stem = text;
        ending.clear();
    }
    const std::string lower = InLowerCase(stem);
    if (table.Find(script_section::kAcronyms, stem) != nullptr) {
        return match{std::string(text), i + 1};
    }
    const bool hasVowel = std::ranges::any_of(stem, IsVowel);
    const bool isSound = table.Find(script_section::kSounds, lower) != nullptr;
    const bool isListed = table.Find(script_section::kLetters, stem) != nullptr;
    const bool isUnknown = isKnown && !IsKnown(stem);
    const bool isShort = stem.size() <= 3 || (stem.size() <= 5 && !hasVowel);
    if (stem.find('\'') == std::string_view::npos && !isSound && stem.size() <= 6 &&
        ((isListed && hasLowerCase) || (isUnknown && isShort && (hasLowerCase || !hasVowel)))) {
        std::string spoken = Spelled(stem);
        spoken += ending.empty() ? "" : "'s";
        return match{spoken, i + 1};
    }
    return match{std::string(text), i + 1,
                 hasLowerCase && !isPlural && !isListed && (hasVowel || isSound) && stem.size() > 1
                     ? kEmphasisedWord
                     : 0};
}

/// Letters that are written small, such as smh, and a sign between measures: 10 cm x 5 cm.
InlineReader::maybe_match InlineReader::MatchWithoutVowel(size_t i) const {
    const std::string_view text = tokens.Text(i);
    if (text == "x" && i > 0 && tokens.IsBlank(i - 1) && tokens.IsBlank(i + 1) &&
        tokens.IsDigits(i + 2)) {
        return match{std::string(table.Word("by")), i + 1};
    }
    const bool isMadeOfLetters =
        text.size() >= 2 && text.size() <= 5 && std::ranges::all_of(text, [](char letter) {
            return letter >= 'a' && letter <= 'z' && !IsVowel(letter);
        });
    if (!isKnown || !isMadeOfLetters || IsKnown(text) || table.Has(script_section::kSounds, text)) {
        return std::nullopt;
    }
    return match{Spelled(text), i + 1};
}

/// A word with a letter three times or more: as many of them as the lexicon's word has.
InlineReader::maybe_match InlineReader::MatchDrawl(size_t i) const {
    constexpr size_t kMostRuns = 4;
    const std::string lower = InLowerCase(tokens.Text(i));
    if (table.Has(script_section::kSounds, lower)) {
        return std::nullopt;
    }
    std::vector<std::pair<char, bool>> runs; ///< letters, and whether they are drawn out
    for (size_t at = 0; at < lower.size();) {
        const size_t end = std::min(lower.find_first_not_of(lower[at], at), lower.size());
        const bool isLong = end - at >= 3 && lower[at] >= 'a' && lower[at] <= 'z';
        if (isLong) {
            runs.emplace_back(lower[at], true);
        } else {
            for (size_t each = at; each < end; ++each) {
                runs.emplace_back(lower[each], false);
            }
        }
        at = end;
    }
    const auto numLong =
        static_cast<size_t>(std::ranges::count(runs, true, &std::pair<char, bool>::second));
    if (numLong == 0 || numLong > kMostRuns) {
        return std::nullopt;
    }
    const auto build = [&](size_t doubled) {
        std::string word;
        size_t run = 0;
        for (const auto& [letter, isLong] : runs) {
            word += letter;
            if (isLong && (doubled >> run++ & 1) != 0) {
                word += letter;
            }
        }
        return word;
    };
    const auto isUsuallyDoubled = [&](const auto& run) {
        return run.second && table.Has(script_section::kDoubled, std::string_view(&run.first, 1));
    };
    std::string spoken = build(std::ranges::any_of(runs, isUsuallyDoubled) ? 1 : 0);
    for (size_t doubled = 0; doubled < size_t{1} << numLong; ++doubled) {
        if (const std::string word = build(doubled); word.size() > 1 && IsKnown(word)) {
            spoken = word;
            break;
        }
    }
    if (spoken.size() == 1) {
        spoken = std::string(3, spoken[0]); // a letter alone would be said by its name
    }
    return match{spoken, i + 1, kDrawnOutWord};
}

} // namespace tessarin
