#include <algorithm>
#include <vector>

#include "text/script/inline_reader.h"
#include "text/script/letters.h"

namespace tessarin {

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

/// B22, PS5, H2O, R2-D2, v2.0: the letters are spelled, and the digits are read by themselves.
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
/// a sound, not by its name.
InlineReader::maybe_match InlineReader::MatchStutter(size_t i) const {
    const std::string_view text = tokens.Text(i);
    const size_t next = tokens.Is(i + 1, '-') ? i + 2 : 0;
    if (next == 0 || !tokens.IsWord(next) || text.size() > 2) {
        return std::nullopt;
    }
    const std::string start = InLowerCase(tokens.Text(next).substr(0, text.size()));
    const bool isSpelling = tokens.IsAllCapitals(next) && tokens.Text(next).size() <= text.size();
    const bool isName = tokens.IsCapitalised(next) && !IsSentenceStart(i); // on D-Day
    const std::string lower = InLowerCase(text);
    if (start != lower || isSpelling || isName || (IsVowel(text[0]) && lower != "y")) {
        return std::nullopt;
    }
    if (text.size() > 1) {
        return match{std::string(text), i + 1};
    }
    const std::string_view sound = table.Get(script_section::kStutters, lower);
    return match{sound.empty() ? lower + lower + lower : std::string(sound), i + 1};
}

/// Spells abbreviations in capitals; other words in capitals are stressed.
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
    const bool isPlural = !ending.empty() && stem.size() >= 2 && std::ranges::all_of(stem, IsUpper);
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

/// Abbreviations in small letters, such as smh, and the x between measures: 10 cm x 5 cm.
InlineReader::maybe_match InlineReader::MatchWithoutVowel(size_t i) const {
    const std::string_view text = tokens.Text(i);
    if (text == "x" && i > 0 && tokens.IsBlank(i - 1) && tokens.IsBlank(i + 1) &&
        tokens.IsDigits(i + 2)) {
        return match{std::string(table.Word("by")), i + 1};
    }
    const bool isMadeOfLetters =
        text.size() >= 2 && text.size() <= 5 &&
        std::ranges::all_of(text, [](char letter) { return IsLower(letter) && !IsVowel(letter); });
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
        const bool isLong = end - at >= 3 && IsLower(lower[at]);
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
    const std::string_view listed = table.Get(script_section::kDrawn, build(0));
    for (size_t doubled = 0; listed.empty() && doubled < size_t{1} << numLong; ++doubled) {
        if (const std::string word = build(doubled); word.size() > 1 && IsKnown(word)) {
            spoken = word;
            break;
        }
    }
    spoken = listed.empty() ? spoken : listed;
    if (spoken.size() == 1) {
        spoken = std::string(3, spoken[0]); // a letter alone would be said by its name
    }
    return match{spoken, i + 1, kDrawnOutWord};
}

} // namespace tessarin
