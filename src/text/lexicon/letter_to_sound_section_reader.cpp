#include "text/lexicon/letter_to_sound_section.h"

#include "base/byte_cursor.h"
#include "text/pronunciation/decision_tree_file.h"
#include "text/pronunciation/grapheme_to_phone_rules.h"

#include <algorithm>
#include <utility>

namespace tessarin {
namespace {

/// Reads the body of a section, which the module owns already. A failure shows in the cursor.
class section_reader {
public:
    section_reader(CGraphemeToPhoneRules<char>& emptyModule, int16_t fileVersion)
        : module(emptyModule), cursor(module.loaded_block), version(fileVersion) {}

    /// Reads all fields in the order of the file.
    bool Read();

private:
    const char* ReadText() { return cursor.ReadString().data(); }
    size_t ReadCount();
    const char* const* ReadWords(size_t count);
    void ReadSubstitutions();
    void ReadTree();
    void ReadRuleTables();
    void ReadRuleTable(char key);
    void ReadNumberWords();
    void ReadCharacterNames();
    void ReadFoldTable();
    void ReadLetterClasses();

    CGraphemeToPhoneRules<char>& module;
    ByteCursor cursor;
    int16_t version;
};

bool section_reader::Read() {
    if (version >= kFlagsVersion) {
        module.flags = cursor.ReadU16();
        ReadSubstitutions();
    }
    if ((module.flags & kWorksByTree) != 0) {
        ReadTree();
    } else {
        ReadRuleTables();
    }
    ReadNumberWords();
    ReadCharacterNames();
    ReadFoldTable();
    module.symbol_words = ReadWords(kNumSymbolWords);
    module.thousands_separator = static_cast<char>(cursor.ReadU8());
    module.decimal_point = static_cast<char>(cursor.ReadU8());
    module.scale_words = ReadWords(kNumScaleWords);
    if (version >= kLetterClassesVersion) {
        ReadLetterClasses();
    }
    return !cursor.Failed();
}

/// A signed number of records, each of which has a byte at least.
size_t section_reader::ReadCount() {
    const int16_t count = cursor.ReadI16();
    if (count < 0 || !cursor.Holds(static_cast<uint64_t>(count))) {
        cursor.Fail();
        return 0;
    }
    return static_cast<size_t>(count);
}

const char* const* section_reader::ReadWords(size_t count) {
    std::vector<const char*> words(count);
    for (const char*& word : words) {
        word = ReadText();
    }
    return module.owned_words.emplace_back(std::move(words)).data();
}

void section_reader::ReadSubstitutions() {
    for (uint16_t left = cursor.ReadU16(); left > 0 && !cursor.Failed(); --left) {
        const auto letter = static_cast<char>(cursor.ReadU8());
        const char* text = ReadText();
        if (text != nullptr) {
            module.letter_substitutions[letter] = text;
        }
    }
}

void section_reader::ReadTree() {
    for (uint16_t left = cursor.ReadU16(); left > 0 && !cursor.Failed(); --left) {
        module.tree_letters.insert(cursor.ReadU16());
    }
    tree_context context;
    module.decision_tree = ReadDecisionTree(cursor, context);
    module.left_context = context.left;
    module.right_context = context.right;
}

void section_reader::ReadRuleTables() {
    if (version < kKeyedTablesVersion) {
        for (int table = 0; table < kNumUnkeyedTables; ++table) {
            ReadRuleTable(static_cast<char>('@' + table));
        }
        return;
    }
    for (uint16_t left = cursor.ReadU16(); left > 0 && !cursor.Failed(); --left) {
        ReadRuleTable(static_cast<char>(cursor.ReadU16()));
    }
}

void section_reader::ReadRuleTable(char key) {
    std::vector<GraphemeRule> rows(ReadCount());
    for (GraphemeRule& row : rows) {
        row.left = ReadText();
        row.match = ReadText();
        row.right = ReadText();
        row.phonemes = ReadText();
    }
    rows.push_back({nullptr, nullptr, nullptr, nullptr});
    module.rule_tables[key] = module.owned_rules.emplace_back(std::move(rows)).data();
}

void section_reader::ReadNumberWords() {
    module.cardinals = ReadWords(kNumUnits);
    module.tens = ReadWords(kNumTens);
    module.ordinals = ReadWords(kNumUnits);
    module.ordinal_tens = ReadWords(kNumTens);
}

void section_reader::ReadCharacterNames() {
    const size_t count = ReadCount();
    module.character_names = ReadWords(count);
    module.character_name_count = static_cast<int16_t>(count);
}

void section_reader::ReadFoldTable() {
    if (cursor.ReadU16() != 0) {
        module.fold_table = cursor.ReadBytes(kFoldTableSize).data();
    }
}

void section_reader::ReadLetterClasses() {
    for (size_t left = ReadCount(); left > 0 && !cursor.Failed(); --left) {
        const std::string name(cursor.ReadString());
        const std::span<const uint8_t> letters = cursor.ReadBytes(ReadCount());
        module.letter_classes[name] = std::set<char>(letters.begin(), letters.end());
    }
}

/// Reads the frame of a section, and its body into the module. The cursor stands after the
/// section after a success.
error_code ReadSection(ByteCursor& cursor, CGraphemeToPhoneRules<char>& module) {
    const uint32_t magic = cursor.ReadU32();
    const int16_t version = cursor.ReadI16();
    if (cursor.Failed() || magic != kLetterToSoundMagic) {
        return kInvalidFile;
    }
    if (version > kLetterToSoundVersion) {
        return kNewerVersion;
    }
    const int32_t size = cursor.ReadI32();
    if (size < 1 || !cursor.Holds(static_cast<uint64_t>(size))) {
        return kInvalidFile;
    }
    const std::span<const uint8_t> body = cursor.ReadBytes(static_cast<size_t>(size));
    module.loaded_block.assign(body.begin(), body.end());
    module.section_version = version;
    return section_reader(module, version).Read() ? kNoError : kInvalidFile;
}

std::string_view MessageOf(error_code code) {
    switch (code) {
    case kNoError:
        return "";
    case kNewerVersion:
        return "Newer version of letter to sound file.";
    default:
        return "Invalid Letter To Sound file format.";
    }
}

} // namespace

error_code CGraphemeToPhoneRules<char>::LoadLetterToSound(const uint8_t** position,
                                                          uint32_t* remaining, char* message) {
    Clear();
    ByteCursor cursor(*position, *remaining);
    const error_code code = ReadSection(cursor, *this);
    if (code == kNoError) {
        cursor.MoveTo(position, remaining);
    }
    if (message != nullptr) {
        const std::string_view text = MessageOf(code);
        *std::ranges::copy(text, message).out = '\0';
    }
    return code;
}

void CGraphemeToPhoneRules<char>::Clear() {
    rule_tables.clear();
    decision_tree.reset();
    tree_letters.clear();
    left_context = 0;
    right_context = 0;
    cardinals = tens = ordinals = ordinal_tens = character_names = nullptr;
    character_name_count = 0;
    fold_table = nullptr;
    symbol_words = scale_words = nullptr;
    thousands_separator = decimal_point = '\0';
    flags = 0;
    section_version = 0;
    letter_substitutions.clear();
    letter_classes.clear();
    loaded_block.clear();
    owned_rules.clear();
    owned_words.clear();
}

} // namespace tessarin
