#include "text/script/inline_reader.h"

namespace tessarin {

namespace {

std::string_view OneOf(const ScriptTable::fields& names) {
    return names.front();
}

std::string_view SeveralOf(const ScriptTable::fields& names) {
    return names.size() > 1 ? names[1] : names.front();
}

} // namespace

/// Whether a number and its unit describe the next word: a $3M contract.
bool InlineReader::IsAdjective(size_t i, size_t end) const {
    const size_t word = tokens.WordBefore(i, 1);
    return word < tokens.GetCount() && table.Has(script_section::kArticles, tokens.Text(word)) &&
           tokens.IsBlank(end) && tokens.IsWord(end + 1) && tokens.Text(end + 1) != "x";
}

/// A stop after a unit belongs to the unit if the sentence goes on.
size_t InlineReader::SkipUnitStop(size_t i) const {
    const size_t next = tokens.SkipBlank(i + 1);
    const bool goesOn = (tokens.IsWord(next) && !tokens.IsCapitalised(next)) ||
                        tokens.IsDigits(next) || tokens.Is(next, ',');
    return tokens.Is(i, '.') && goesOn ? i + 1 : i;
}

/// A slash and a unit or a word after a number, as in $9/mo.
size_t InlineReader::AddPer(size_t end, std::string& spoken) const {
    if (!tokens.Is(end, '/') || !tokens.IsWord(end + 1)) {
        return end;
    }
    size_t unitEnd = end + 1;
    const ScriptTable::fields* const unit = FindUnit(end + 1, unitEnd, true);
    AddWords(table.Word("per"), spoken);
    AddWords(unit != nullptr ? OneOf(*unit) : tokens.Text(end + 1), spoken);
    return SkipUnitStop(unit != nullptr ? unitEnd : end + 2);
}

/// The unit at `from`, with or without a blank before it; `end` becomes the token after it.
const ScriptTable::fields* InlineReader::FindUnit(size_t from, size_t& end, bool isGlued) const {
    if (tokens.Is(from, 0xB0)) { // degrees, of a scale or not
        const size_t scale = tokens.SkipBlank(from + 1);
        if (tokens.IsWord(scale) && tokens.Text(scale).size() == 1) {
            const std::string key = "°" + InLowerCase(tokens.Text(scale));
            if (const ScriptTable::fields* const found = table.Find(script_section::kUnits, key)) {
                end = scale + 1;
                return found;
            }
        }
    }
    if (tokens.IsGap(from)) {
        return nullptr;
    }
    if (tokens.Is(from + 1, '/') && tokens.IsWord(from + 2)) {
        if (const ScriptTable::fields* const found =
                table.Find(script_section::kUnits, tokens.Text(from, from + 3))) {
            end = from + 3;
            return found;
        }
    }
    const std::string_view text = tokens.Text(from);
    const ScriptTable::fields* const found = text.size() > 1
                                                 ? table.FindAnyCase(script_section::kUnits, text)
                                                 : table.Find(script_section::kUnits, text);
    if (found == nullptr) {
        return nullptr;
    }
    const std::string_view rule = found->size() > 2 ? std::string_view((*found)[2]) : "";
    // After feet, inches are clear without their stop.
    const size_t before = from >= 5 ? tokens.WordBefore(from, 4) : tokens.GetCount();
    const bool isClear =
        before < tokens.GetCount() && before + 4 >= from &&
        table.Get(script_section::kUnits, tokens.Text(before)) == table.Word("foot");
    const bool hasStop = tokens.Is(from + 1, '.');
    if ((rule == "stop" && !hasStop && !isClear) || (rule == "never-spaced" && !isGlued)) {
        return nullptr;
    }
    end = rule == "stop" && hasStop && !IsSentenceEnd(from + 2) ? from + 2 : from + 1;
    return found;
}

/// A number with what it counts.
InlineReader::maybe_match InlineReader::MatchCounted(size_t i, const written_number& number) const {
    maybe_match unit = MatchUnit(i, number.end, number.IsOne());
    if (unit) {
        unit->spoken.insert(0, SayNumber(number) + " ");
    }
    return unit;
}

/// What the number from `i` up to `at` counts: a unit, a power of a unit, or a currency after it.
InlineReader::maybe_match InlineReader::MatchUnit(size_t i, size_t at, bool isOne) const {
    const bool isHyphened = tokens.Is(at, '-') && tokens.IsWord(at + 1);
    const bool isGlued = !tokens.IsBlank(at);
    at = isHyphened ? at + 1 : tokens.SkipBlank(at);
    if (isHyphened && tokens.Text(at).size() < 2) {
        return std::nullopt;
    }
    std::string prefix;
    if (const std::string_view power = table.Get(script_section::kUnitPrefixes, tokens.Text(at));
        !power.empty()) {
        const size_t unit = tokens.SkipBlank(tokens.Is(at + 1, '.') ? at + 2 : at + 1);
        if (table.Has(script_section::kUnits, tokens.Text(unit))) {
            prefix = power;
            at = unit;
        }
    }
    size_t end = at;
    const ScriptTable::fields* unit = FindUnit(at, end, isGlued);
    if (unit == nullptr &&
        (isGlued || tokens.At(at).kind == script_token_kind::kSymbol || tokens.IsAllCapitals(at))) {
        unit = table.FindAnyCase(script_section::kCurrencies, tokens.Text(at));
        end = at + 1;
    }
    if (unit == nullptr) {
        return std::nullopt;
    }
    // After hours that are written in the same way, m stands for minutes.
    const ScriptTable::fields* const minutes = table.Find(script_section::kUnits, "min");
    if (minutes != nullptr && tokens.Text(at) == "m" && isGlued && i >= 2 &&
        tokens.IsBlank(i - 1) && tokens.Text(i - 2) == "h") {
        unit = minutes;
    }
    for (const auto& [sign, word] :
         {std::pair{U'\u00B2', "square"}, std::pair{U'\u00B3', "cubic"}}) {
        if (tokens.Is(end, sign)) {
            prefix = table.Word(word);
            ++end;
        }
    }
    match found{prefix, end};
    AddWords(isOne || isHyphened || IsAdjective(i, end) ? OneOf(*unit) : SeveralOf(*unit),
             found.spoken);
    found.end = AddPer(SkipUnitStop(found.end), found.spoken);
    return found;
}

/// 6'2", 3' and 1/4".
InlineReader::maybe_match InlineReader::MatchFeetAndInches(const written_number& number) const {
    const size_t at = number.end;
    const bool isInches = tokens.Is(at, '"') && !isQuoteOpen;
    const bool isFeet = tokens.Is(at, '\'') && !tokens.IsWord(at + 1) && !isSingleQuoteOpen;
    if (!isInches && !isFeet) {
        return std::nullopt;
    }
    match found{SayNumber(number), at + 1};
    if (isFeet && tokens.NumDigits(at + 1) > 0 && tokens.NumDigits(at + 1) <= 2) {
        AddWords(table.Word("foot"), found.spoken);
        AddWords(numbers.Cardinal(tokens.Text(at + 1)), found.spoken);
        found.end = tokens.Is(at + 2, '"')                               ? at + 3
                    : tokens.Is(at + 2, '\'') && tokens.Is(at + 3, '\'') ? at + 4
                                                                         : at + 2;
    } else {
        AddWords(table.Word(isInches         ? "inch-mark"
                            : number.IsOne() ? "foot"
                                             : "foot-mark"),
                 found.spoken);
    }
    return found;
}

/// The word for a power of ten after an amount, as in $5M and $1.2 billion; `end` becomes the
/// token after it.
std::string_view InlineReader::FindScale(size_t& end) const {
    if (tokens.IsWord(end)) {
        const std::string_view power = table.Get(script_section::kAmounts, tokens.Text(end));
        const std::string_view scale = table.Get(script_section::kScales, power);
        end += scale.empty() ? 0 : 1;
        return scale;
    }
    if (!tokens.IsBlank(end) || !tokens.IsWord(end + 1)) {
        return "";
    }
    const std::string word = InLowerCase(tokens.Text(end + 1));
    for (const auto& [power, names] : table.Entries(script_section::kScales)) {
        if (word == names.front()) {
            end += 2;
            return names.front();
        }
    }
    return "";
}

/// An amount with two decimals: so many of the whole, and so many of its hundredths.
std::string InlineReader::SayHundredths(const written_number& number,
                                        const ScriptTable::fields& names) const {
    std::string spoken;
    if (number.whole != "0") {
        spoken = numbers.Cardinal(number.whole);
        AddWords(number.whole == "1" ? OneOf(names) : SeveralOf(names), spoken);
    }
    if (number.decimals != "00" || spoken.empty()) {
        AddWords(spoken.empty() ? "" : table.Word("and"), spoken);
        AddWords(numbers.Cardinal(number.decimals), spoken);
        AddWords(number.decimals == "01" ? names[2] : names[3], spoken);
    }
    return spoken;
}

/// Two fifty, and two dollars fifty.
std::vector<std::string> InlineReader::OtherHundredths(const written_number& number,
                                                       const ScriptTable::fields& names) const {
    if (number.whole == "0" || number.decimals == "00") {
        return {};
    }
    const std::string hundredths = number.decimals.starts_with('0')
                                       ? numbers.Digits(number.decimals)
                                       : numbers.Cardinal(number.decimals);
    const std::string whole = numbers.Cardinal(number.whole);
    std::string several = whole;
    AddWords(number.whole == "1" ? OneOf(names) : SeveralOf(names), several);
    std::string withCents = several;
    AddWords(numbers.Cardinal(number.decimals), several);
    AddWords(numbers.Cardinal(number.decimals), withCents);
    AddWords(number.decimals == "01" ? names[2] : names[3], withCents);
    return {whole + " " + hundredths, several, withCents};
}

/// A currency's sign before an amount, or before a range of them.
InlineReader::maybe_match InlineReader::MatchMoney(size_t i) const {
    const size_t first = tokens.SkipBlank(i + 1);
    const ScriptTable::fields* const names =
        table.Find(script_section::kCurrencies, tokens.Text(i));
    if (names == nullptr || !tokens.IsDigits(first)) {
        return std::nullopt;
    }
    const written_number number = ReadNumber(first);
    match found{SayNumber(number), number.end};
    const bool isRange = (tokens.Is(number.end, '-') || tokens.Is(number.end, kEnDash)) &&
                         tokens.IsDigits(number.end + 1);
    if (isRange) {
        const written_number upper = ReadNumber(number.end + 1);
        AddWords(table.Word("to"), found.spoken);
        AddWords(SayNumber(upper), found.spoken);
        found.end = upper.end;
    }
    const std::string_view scale = FindScale(found.end);
    const bool hasHundredths = number.decimals.size() == 2 && names->size() >= 4;
    if (scale.empty() && !isRange && hasHundredths) {
        found.spoken = SayHundredths(number, *names);
        found.others = OtherHundredths(number, *names);
    } else {
        const bool isOne = scale.empty() && !isRange && number.IsOne();
        AddWords(scale, found.spoken);
        AddWords(isOne || IsAdjective(i, found.end) ? OneOf(*names) : SeveralOf(*names),
                 found.spoken);
    }
    const size_t end = AddPer(found.end, found.spoken);
    if (end != found.end) {
        found.others.clear();
        found.end = end;
    }
    return found;
}

} // namespace tessarin
