#include "text/script/script_table.h"

#include <algorithm>
#include <cassert>
#include <iterator>

#include "text/script/built_in_script.h"

namespace tessarin {

namespace {

struct section_form {
    std::string_view name;
    size_t numFields; ///< that an entry needs after its key
};

/// In the order of script_section.
constexpr section_form kSections[] = {{"words", 1},
                                      {"cardinals", 1},
                                      {"scales", 1},
                                      {"ordinals", 1},
                                      {"ordinal-endings", 0},
                                      {"plurals", 1},
                                      {"fractions", 2},
                                      {"fixed", 1},
                                      {"currencies", 1},
                                      {"amounts", 1},
                                      {"units", 1},
                                      {"unit-prefixes", 1},
                                      {"symbols", 1},
                                      {"silent", 0},
                                      {"abbreviations", 1},
                                      {"neighbours", 2},
                                      {"months", 1},
                                      {"month-numbers", 1},
                                      {"days", 1},
                                      {"day-halves", 0},
                                      {"letters", 0},
                                      {"acronyms", 0},
                                      {"roman", 0},
                                      {"regnal", 0},
                                      {"digit-contexts", 0},
                                      {"pair-contexts", 0},
                                      {"year-contexts", 0},
                                      {"hours", 0},
                                      {"sounds", 0},
                                      {"domains", 0},
                                      {"headings", 0},
                                      {"transitions", 0},
                                      {"stage", 0},
                                      {"labels", 0},
                                      {"directions", 0},
                                      {"not-directions", 0},
                                      {"tags", 0},
                                      {"eras", 0},
                                      {"numbered", 0},
                                      {"title-page", 0},
                                      {"tiers", 0},
                                      {"sound-tiers", 0},
                                      {"year-words", 0},
                                      {"over-contexts", 0},
                                      {"doubled", 0},
                                      {"articles", 0},
                                      {"drawn", 1},
                                      {"stutters", 1}};
static_assert(std::size(kSections) == static_cast<size_t>(script_section::kCount));

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

script_table_error ScriptTable::Add(std::string_view text) {
    auto all = sections;
    const section_form* section = nullptr;
    for (size_t number = 1; !text.empty(); ++number) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.empty() || (line.starts_with('#') && !line.starts_with("#\t"))) {
            continue;
        }
        if (line.size() > 2 && line.starts_with('[') && line.ends_with(']')) {
            section =
                std::ranges::find(kSections, line.substr(1, line.size() - 2), &section_form::name);
            if (section == std::end(kSections)) {
                return {number, "there is no section of this name"};
            }
            continue;
        }
        std::vector<std::string> parts = SplitAtTabs(line);
        if (section == nullptr) {
            return {number, "an entry stands before the first section"};
        }
        if (parts.empty() || parts.front().size() > kLongestKey) {
            return {number, "a key has 1 to 32 bytes"};
        }
        if (parts.size() <= section->numFields) {
            return {number, section->numFields == 1
                                ? "an entry of this section has a field after its key, and a tab "
                                  "between them"
                                : "an entry of this section has two fields after its key, and tabs "
                                  "between them"};
        }
        all[static_cast<size_t>(section - kSections)][parts.front()] = {parts.begin() + 1,
                                                                        parts.end()};
    }
    sections = std::move(all);
    return {0, ""};
}

const ScriptTable::fields* ScriptTable::Find(script_section section, std::string_view key) const {
    const section_entries& entries = Entries(section);
    const auto entry = key.size() <= kLongestKey ? entries.find(key) : entries.end();
    return entry != entries.end() ? &entry->second : nullptr;
}

const ScriptTable::fields* ScriptTable::FindAnyCase(script_section section,
                                                    std::string_view key) const {
    const fields* const exact = Find(section, key);
    return exact != nullptr || key.size() > kLongestKey || std::ranges::none_of(key, IsUpper)
               ? exact
               : Find(section, InLowerCase(key));
}

std::string_view ScriptTable::Get(script_section section, std::string_view key) const {
    const fields* const found = FindAnyCase(section, key);
    return found != nullptr && !found->empty() ? std::string_view(found->front())
                                               : std::string_view();
}

const ScriptTable& BuiltInEnglishScript() {
    static const ScriptTable table = [] {
        ScriptTable made;
        [[maybe_unused]] const script_table_error error = made.Add(kBuiltInScripts.english);
        assert(error.line == 0);
        return made;
    }();
    return table;
}

} // namespace tessarin
