#include "text/script/script_table.h"

#include <algorithm>

#include "text/script/built_in_script.h"

namespace tessarin {

namespace {

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
            section = &all[std::string(line.substr(1, line.size() - 2))];
            continue;
        }
        std::vector<std::string> parts = SplitAtTabs(line);
        if (section == nullptr || parts.empty()) {
            return number;
        }
        (*section)[parts.front()] = {parts.begin() + 1, parts.end()};
    }
    sections = std::move(all);
    return 0;
}

const ScriptTable::fields* ScriptTable::Find(std::string_view section, std::string_view key) const {
    const auto entries = sections.find(section);
    if (entries == sections.end()) {
        return nullptr;
    }
    const auto entry = entries->second.find(key);
    return entry != entries->second.end() ? &entry->second : nullptr;
}

const ScriptTable::fields* ScriptTable::FindAnyCase(std::string_view section,
                                                    std::string_view key) const {
    const fields* const exact = Find(section, key);
    return exact != nullptr ? exact : Find(section, InLowerCase(key));
}

std::string_view ScriptTable::Get(std::string_view section, std::string_view key) const {
    const fields* const found = FindAnyCase(section, key);
    return found != nullptr && !found->empty() ? std::string_view(found->front())
                                               : std::string_view();
}

std::vector<std::string_view> ScriptTable::Keys(std::string_view section) const {
    std::vector<std::string_view> keys;
    const auto entries = sections.find(section);
    if (entries != sections.end()) {
        for (const auto& [key, value] : entries->second) {
            keys.emplace_back(key);
        }
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
