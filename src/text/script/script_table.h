#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin {

/// What a language has in lists: its number words, units, abbreviations and the marks of its
/// scripts. Texts of sections in brackets and of lines whose fields are separated by tabs, the
/// first of which is the key; a line that begins with # is a comment.
class ScriptTable {
public:
    using fields = std::vector<std::string>; ///< those after the key

    /// Adds the entries of `text`, in place of those of the same key. Returns 0, or the number of
    /// the first line that is none, counted from 1; nothing is added then.
    size_t Add(std::string_view text);

    /// The fields of a key as it is written, or null.
    const fields* Find(std::string_view section, std::string_view key) const;
    /// Likewise, or of the key in lower case.
    const fields* FindAnyCase(std::string_view section, std::string_view key) const;
    bool Has(std::string_view section, std::string_view key) const {
        return FindAnyCase(section, key) != nullptr;
    }
    /// The first field of a key; empty when there is none.
    std::string_view Get(std::string_view section, std::string_view key) const;
    /// A word that the rules need by name.
    std::string_view Word(std::string_view name) const { return Get("words", name); }
    /// The keys of a section, in order.
    std::vector<std::string_view> Keys(std::string_view section) const;

private:
    using section_entries = std::map<std::string, fields, std::less<>>;
    std::map<std::string, section_entries, std::less<>> sections;
};

/// The table of data/en-us.script.
const ScriptTable& BuiltInEnglishScript();

/// ASCII letters in lower case; the others stay.
std::string InLowerCase(std::string_view text);

} // namespace tessarin
