#include "text/script/script_table.h"

#include <algorithm>
#include <iterator>

#include "text/script/built_in_script.h"

namespace tessarin {

namespace {

/// In the order of script_section.
constexpr std::string_view kSectionNames[] = {
    "words",          "cardinals",     "scales",        "ordinals",      "ordinal-endings",
    "plurals",        "fractions",     "fixed",         "currencies",    "amounts",
    "units",          "unit-prefixes", "symbols",       "silent",        "abbreviations",
    "neighbours",     "months",        "month-numbers", "days",          "day-halves",
    "letters",        "acronyms",      "roman",         "regnal",        "digit-contexts",
    "pair-contexts",  "year-contexts", "hours",         "sounds",        "domains",
    "headings",       "transitions",   "stage",         "labels",        "directions",
    "not-directions", "tags",          "eras",          "numbered",      "title-page",
    "tiers",          "sound-tiers",   "year-words",    "over-contexts", "doubled",
    "articles",       "drawn",         "stutters",
};
static_assert(std::size(kSectionNames) == static_cast<size_t>(script_section::kCount));

constexpr size_t kLongestKey = 32;

std::vector<std::string> SplitAtTabs(std::string_view line) {
    std::vector<std::string> parts;
    while (true) {
        const size_t end = std::min(line.find('\t'), line.size());
        if (end > 0) {
            parts.emplace_back(line.substr(0, end));
        }
        if (end == line.size()) {
            return parts;
        }
        line.remove_prefix(end + 1);
    }
}

} // namespace

size_t ScriptTable::Add(std::string_view text) {
    auto all = sections;
    section_entries* section = nullptr;
    for (size_t number = 1; !text.empty(); ++number) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.empty() || line.starts_with("# ") || line == "#") {
            continue;
        }
        if (line.size() > 2 && line.starts_with('[') && line.ends_with(']')) {
            const auto* const name =
                std::ranges::find(kSectionNames, line.substr(1, line.size() - 2));
            if (name == std::end(kSectionNames)) {
                return number;
            }
            section = &all[static_cast<size_t>(name - kSectionNames)];
            continue;
        }
        std::vector<std::string> parts = SplitAtTabs(line);
        if (section == nullptr || parts.empty() || parts.front().size() > kLongestKey) {
            return number;
        }
        (*section)[parts.front()] = {parts.begin() + 1, parts.end()};
    }
    sections = std::move(all);
    return 0;
}

const ScriptTable::fields* ScriptTable::Find(script_section section, std::string_view key) const {
    const section_entries& entries = sections[static_cast<size_t>(section)];
    const auto entry = key.size() <= kLongestKey ? entries.find(key) : entries.end();
    return entry != entries.end() ? &entry->second : nullptr;
}

const ScriptTable::fields* ScriptTable::FindAnyCase(script_section section,
                                                    std::string_view key) const {
    const fields* const exact = Find(section, key);
    const auto isCapital = [](char letter) { return letter >= 'A' && letter <= 'Z'; };
    return exact != nullptr || key.size() > kLongestKey || std::ranges::none_of(key, isCapital)
               ? exact
               : Find(section, InLowerCase(key));
}

std::string_view ScriptTable::Get(script_section section, std::string_view key) const {
    const fields* const found = FindAnyCase(section, key);
    return found != nullptr && !found->empty() ? std::string_view(found->front())
                                               : std::string_view();
}

std::vector<std::string_view> ScriptTable::Keys(script_section section) const {
    std::vector<std::string_view> keys;
    for (const auto& [key, value] : sections[static_cast<size_t>(section)]) {
        keys.emplace_back(key);
    }
    return keys;
}

const ScriptTable& BuiltInEnglishScript() {
    static const ScriptTable table = [] {
        ScriptTable made;
        made.Add(kBuiltInScripts.english);
        return made;
    }();
    return table;
}

std::string InLowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return lower;
}

} // namespace tessarin
