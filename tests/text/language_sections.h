#pragma once

#include "support/byte_builder.h"
#include "text/pronunciation/grapheme_to_phone_rules.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin::test {

/// One rule of a section, such as {"", "A", "#", "EY"}.
using rule_texts = std::vector<std::string>;

/// Nodes of a decision tree as they stand in a section.
inline bytes Leaf(std::string_view text) {
    ByteBuilder node;
    if (text.size() > 2) {
        return node.U8(1).String(text).Take();
    }
    return node.Text(text).Bytes(bytes(2 - text.size())).Take();
}
inline bytes Branch(const bytes& child) {
    return child.empty() ? bytes{0} : ByteBuilder().U8(1).Bytes(child).Take();
}
inline bytes Question(char letter, int16_t offset, const bytes& yes, const bytes& no) {
    return ByteBuilder()
        .U16(0)
        .U16(static_cast<uint8_t>(letter))
        .U16(static_cast<uint16_t>(offset))
        .Bytes(Branch(yes))
        .Bytes(Branch(no))
        .Take();
}

/// A letter-to-sound section in its parts. Versions that have no such part leave it out.
struct language_section {
    int16_t version = 4;
    uint16_t flags = 0;
    std::vector<std::pair<char, std::string>> substitutions;
    std::string treeLetters;
    bytes tree;
    std::vector<std::pair<char, std::vector<rule_texts>>> tables;
    std::vector<std::string> characterNames = {"nul ", "wAHn "};
    bytes foldTable;
    std::vector<std::pair<std::string, std::string>> classes;

    bytes Body() const {
        ByteBuilder body;
        if (version >= 2) {
            body.U16(flags).U16(static_cast<uint16_t>(substitutions.size()));
            for (const auto& [letter, text] : substitutions) {
                body.U8(static_cast<uint8_t>(letter)).String(text);
            }
        }
        if ((flags & kWorksByTree) != 0) {
            body.U16(static_cast<uint16_t>(treeLetters.size()));
            for (const char letter : treeLetters) {
                body.U16(static_cast<uint8_t>(letter));
            }
            body.Bytes(tree);
        } else {
            AddTables(body);
        }
        AddWords(body, "c", 20);
        AddWords(body, "t", 8);
        AddWords(body, "o", 20);
        AddWords(body, "ot", 8);
        body.U16(static_cast<uint16_t>(characterNames.size()));
        for (const std::string& name : characterNames) {
            body.String(name);
        }
        body.U16(foldTable.empty() ? 0 : 1).Bytes(foldTable);
        AddWords(body, "s", 10);
        body.U8(',').U8('.');
        AddWords(body, "p", 10);
        if (version >= 4) {
            body.U16(static_cast<uint16_t>(classes.size()));
            for (const auto& [name, letters] : classes) {
                body.String(name).U16(static_cast<uint16_t>(letters.size())).Text(letters);
            }
        }
        return body.Take();
    }

    bytes Take() const {
        const bytes body = Body();
        return ByteBuilder()
            .Text(" STL")
            .U16(static_cast<uint16_t>(version))
            .U32(static_cast<uint32_t>(body.size()))
            .Bytes(body)
            .Take();
    }

private:
    static void AddWords(ByteBuilder& body, const std::string& prefix, int count) {
        for (int number = 0; number < count; ++number) {
            body.String(prefix + std::to_string(number));
        }
    }
    static void AddTable(ByteBuilder& body, const std::vector<rule_texts>& rows) {
        body.U16(static_cast<uint16_t>(rows.size()));
        for (const rule_texts& row : rows) {
            for (const std::string& text : row) {
                body.String(text);
            }
        }
    }
    void AddTables(ByteBuilder& body) const {
        if (version >= 3) {
            body.U16(static_cast<uint16_t>(tables.size()));
            for (const auto& [key, rows] : tables) {
                body.U16(static_cast<uint8_t>(key));
                AddTable(body, rows);
            }
            return;
        }
        for (char key = '@'; key <= 'Z'; ++key) {
            std::vector<rule_texts> rows;
            for (const auto& table : tables) {
                if (table.first == key) {
                    rows = table.second;
                }
            }
            AddTable(body, rows);
        }
    }
};

/// A language of few letters that has all that a section can hold for its engine.
inline language_section RuleLanguage() {
    language_section language;
    language.substitutions = {{'\xC4', "AE"}, {'Q', "KW"}};
    language.tables = {
        {'@', {}},
        {'A',
         {{"&vo&", "A", "", "AA"},
          {"", "A", " ", "AH"},
          {"", "A", "*co*E", "EY"},
          {"", "A", "", "AE"}}},
        {'E', {{"", "E", " ", ""}, {"", "E", "", "EH"}}},
        {'K', {{"", "K", "", "k"}}},
        {'T', {{"", "T", "%", "d"}, {"", "T", "", "?t T"}}},
    };
    language.foldTable.resize(256);
    for (size_t code = 0; code < 256; ++code) {
        language.foldTable[code] = static_cast<uint8_t>(code);
    }
    language.classes = {{"&co&", "KTW"}, {"&vo&", "AE"}};
    return language;
}

inline language_section TreeLanguage() {
    language_section language;
    language.flags = kWorksByTree;
    language.substitutions = {{'Q', "KW"}};
    language.treeLetters = "AKT";
    language.tree = Question(
        'K', 0, Leaf("k"),
        Question('A', 0, Question('-', -2, Leaf("AH"), Question('E', 3, Leaf("EYAHEY"), Leaf("_"))),
                 Question('T', 0, Leaf("t"), {})));
    return language;
}

} // namespace tessarin::test
