#include "text/pronunciation/grapheme_to_phone_rules.h"

#include "base/text_copy.h"
#include "text/character_classes.h"
#include "text/english_words.h"
#include "text/pronunciation/english_rules.h"
#include "text/pronunciation/pronunciation_builder.h"
#include "text/pronunciation/rule_matching.h"

#include <algorithm>
#include <cstdio>

namespace tessarin {
namespace {

/// Adds the pieces of a list that are separated by white space as one choice.
void AppendChoice(PronunciationBuilder& builder, std::string_view list) {
    const auto isSpace = [](char character) { return IsSpace(CodeOf(character)); };
    builder.BeginAlternatives();
    for (auto place = list.begin(); place != list.end();) {
        const auto start = std::find_if_not(place, list.end(), isSpace);
        place = std::find_if(start, list.end(), isSpace);
        if (start != place) {
            builder.AddAlternative({&*start, static_cast<size_t>(place - start)});
        }
    }
    builder.CommitAlternatives();
}

/// As much of a pattern as shows whether it is too long.
std::string_view ContextOf(const char* pattern) {
    return BoundedText(pattern, kMaxContextLength + 1);
}

/// Of a word whose letters are substituted: one more than a lexicon's word can have.
constexpr size_t kMostLetters = size_t{UINT16_MAX} + 1;

} // namespace

// Kept: only the built-in module has suffixes, so that `%` fits nothing in a module from a file;
// the rules of files are written for that.
void CGraphemeToPhoneRules<char>::LoadBuiltinEnglish() {
    for (const std::string_view suffix : {"ER", "E", "ES", "ED", "ING", "ELY"}) {
        suffixes.Insert(suffix.data(), static_cast<int>(suffix.size()));
    }
    for (const english_rule_table& table : kEnglishRuleTables) {
        rule_tables[table.key] = table.rows;
    }
    cardinals = kEnglishCardinals.data();
    tens = kEnglishTens.data();
    ordinals = kEnglishOrdinals.data();
    ordinal_tens = kEnglishOrdinalTens.data();
    character_names = kEnglishCharacterNames.data();
    character_name_count = static_cast<int16_t>(kEnglishCharacterNames.size());
    fold_table = kEnglishFoldTable.data();
    symbol_words = kEnglishSymbolWords.data();
    thousands_separator = ',';
    decimal_point = '.';
    scale_words = kEnglishScaleWords.data();
}

void CGraphemeToPhoneRules<char>::ApplyRules(PronunciationBuilder& builder,
                                             const std::string& padded) {
    if (decision_tree != nullptr) {
        ApplyTree(builder, std::string_view(padded).substr(1, padded.size() - 2));
        return;
    }
    step_budget budget(kStepsPerCharacter * padded.size());
    for (size_t index = 1; padded[index] != '\0';) {
        const auto table = rule_tables.find(padded[index]);
        if (table == rule_tables.end()) {
            ++index;
        } else {
            index = FindRule(padded, index, table->second, budget, builder);
        }
    }
}

/// Appends the phonemes of the first rule that fits at `index`. Returns the index after what it
/// consumes, or after the character when nothing is consumed.
size_t CGraphemeToPhoneRules<char>::FindRule(const std::string& word, size_t index,
                                             const GraphemeRule* table, step_budget& budget,
                                             PronunciationBuilder& builder) const {
    const auto start = static_cast<ptrdiff_t>(index);
    for (const GraphemeRule* rule = table; rule->match != nullptr; ++rule) {
        // A longer match does not fit. It is not read to its end again for each letter.
        const std::string_view match = BoundedText(rule->match, word.size());
        // The right side is mostly a letter or two and settles most rules; on the left a `:` may
        // walk through the whole word.
        if (word.compare(index, match.size(), match) != 0 ||
            !MatchRightContext(*this, ContextOf(rule->right), word, start + std::ssize(match),
                               budget) ||
            !MatchLeftContext(*this, ContextOf(rule->left), word, start - 1, budget)) {
            continue;
        }
        const std::string_view phonemes = BoundedText(rule->phonemes, kMaxPhonemesLength);
        if (phonemes.starts_with('?')) {
            AppendChoice(builder, phonemes.substr(1));
        } else {
            builder.AppendPhonemes(phonemes, false);
        }
        return index + std::max<size_t>(match.size(), 1);
    }
    std::fprintf(stderr, "Error: Can't find rule for: '%c' in \"%s\"\n", word[index], word.c_str());
    return index + 1;
}

/// Lays the word out with room on both sides for all that the tree may ask, then asks the tree
/// about each letter that it pronounces.
void CGraphemeToPhoneRules<char>::ApplyTree(PronunciationBuilder& builder, std::string_view word) {
    const std::string_view letters = SubstituteLetters(word);
    const auto before = static_cast<size_t>(-left_context);
    const auto after = static_cast<size_t>(right_context);
    paddedWord.assign(before + letters.size() + after, '-');
    std::transform(letters.begin(), letters.end(), paddedWord.begin() - left_context, CodeOf);
    for (size_t position = before; position < before + letters.size(); ++position) {
        if (tree_letters.contains(paddedWord[position])) {
            Evaluate(*decision_tree, builder, paddedWord, position);
        }
    }
}

std::string_view CGraphemeToPhoneRules<char>::SubstituteLetters(std::string_view word) {
    if (letter_substitutions.empty()) {
        return word;
    }
    substitutedWord.clear();
    for (const char letter : word) {
        const auto found = letter_substitutions.find(letter);
        if (substitutedWord.size() == kMostLetters) {
            break;
        }
        if (found == letter_substitutions.end()) {
            substitutedWord += letter;
        } else {
            const std::string_view letters = found->second;
            substitutedWord += letters.substr(0, kMostLetters - substitutedWord.size());
        }
    }
    return substitutedWord;
}

} // namespace tessarin
