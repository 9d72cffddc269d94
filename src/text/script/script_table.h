#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "text/script/letter_case.h"

namespace tessarin {

/// The lists, by what they are for; data/en-us.script describes each.
enum class script_section : uint8_t {
    kWords,
    kCardinals,
    kScales,
    kOrdinals,
    kOrdinalEndings,
    kPlurals,
    kFractions,
    kFixed,
    kCurrencies,
    kAmounts,
    kUnits,
    kUnitPrefixes,
    kSymbols,
    kSilent,
    kAbbreviations,
    kNeighbours,
    kMonths,
    kMonthNumbers,
    kDays,
    kDayHalves,
    kLetters,
    kAcronyms,
    kRoman,
    kRegnal,
    kDigitContexts,
    kPairContexts,
    kYearContexts,
    kHours,
    kSounds,
    kDomains,
    kHeadings,
    kTransitions,
    kStage,
    kLabels,
    kDirections,
    kNotDirections,
    kTags,
    kEras,
    kNumbered,
    kTitlePage,
    kTiers,
    kSoundTiers,
    kYearWords,
    kOverContexts,
    kDoubled,
    kArticles,
    kDrawn,
    kStutters,
    kCount
};

/// Why a table does not read.
struct script_table_error {
    size_t line;        ///< counted from 1; 0 when there is nothing wrong
    const char* reason; ///< what is wrong with it
};

/// The lists of a language: its number words, units, abbreviations and the marks of its scripts.
/// The text of a table has sections in brackets and lines whose fields are separated by tabs, the
/// first of which is the key. A line that begins with # is a comment, unless # is the whole key.
class ScriptTable {
public:
    using fields = std::vector<std::string>; ///< those after the key

    /// Adds the entries of `text`, which replace those of the same key. After an error nothing is
    /// added. Every entry has as many fields as its section needs.
    script_table_error Add(std::string_view text);

    /// The fields of a key as it is written, or null.
    const fields* Find(script_section section, std::string_view key) const;
    /// Likewise, or of the key in lower case.
    const fields* FindAnyCase(script_section section, std::string_view key) const;
    bool Has(script_section section, std::string_view key) const {
        return FindAnyCase(section, key) != nullptr;
    }
    /// The first field of a key; empty when there is none.
    std::string_view Get(script_section section, std::string_view key) const;
    /// A word that the rules need by name.
    std::string_view Word(std::string_view name) const { return Get(script_section::kWords, name); }

    struct key_hash {
        using is_transparent = void;
        size_t operator()(std::string_view key) const { return std::hash<std::string_view>{}(key); }
    };
    using section_entries = std::unordered_map<std::string, fields, key_hash, std::equal_to<>>;
    /// A whole section, in no order.
    const section_entries& Entries(script_section section) const {
        return sections[static_cast<size_t>(section)];
    }

private:
    std::array<section_entries, static_cast<size_t>(script_section::kCount)> sections;
};

/// The table of data/en-us.script.
const ScriptTable& BuiltInEnglishScript();

} // namespace tessarin
