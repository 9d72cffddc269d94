#include "text/lexicon/letter_to_sound_section.h"

#include "base/byte_writer.h"
#include "text/character_classes.h"
#include "text/pronunciation/decision_tree_file.h"
#include "text/pronunciation/grapheme_to_phone_rules.h"

namespace tessarin {
namespace {

void WriteText(const char* text, ByteWriter& file) {
    file.WriteString(text != nullptr ? text : "");
}

/// A language that has no such words gets empty ones.
void WriteWords(const char* const* words, size_t count, ByteWriter& file) {
    for (size_t number = 0; number < count; ++number) {
        WriteText(words != nullptr ? words[number] : nullptr, file);
    }
}

template <class Container> void WriteCount(const Container& container, ByteWriter& file) {
    file.WriteU16(static_cast<uint16_t>(container.size()));
}

void WriteSubstitutions(const CGraphemeToPhoneRules<char>& module, ByteWriter& file) {
    WriteCount(module.letter_substitutions, file);
    for (const auto& [letter, text] : module.letter_substitutions) {
        file.WriteU8(CodeOf(letter));
        WriteText(text, file);
    }
}

void WriteTree(const CGraphemeToPhoneRules<char>& module, ByteWriter& file) {
    WriteCount(module.tree_letters, file);
    for (const uint16_t letter : module.tree_letters) {
        file.WriteU16(letter);
    }
    WriteDecisionTree(*module.decision_tree, file);
}

void WriteRuleTables(const CGraphemeToPhoneRules<char>& module, ByteWriter& file) {
    WriteCount(module.rule_tables, file);
    for (const auto& [key, table] : module.rule_tables) {
        file.WriteU16(CodeOf(key));
        uint16_t numRows = 0;
        while (table[numRows].match != nullptr) {
            ++numRows;
        }
        file.WriteU16(numRows);
        for (const GraphemeRule* row = table; row->match != nullptr; ++row) {
            for (const char* text : {row->left, row->match, row->right, row->phonemes}) {
                WriteText(text, file);
            }
        }
    }
}

void WriteLetterClasses(const CGraphemeToPhoneRules<char>& module, ByteWriter& file) {
    WriteCount(module.letter_classes, file);
    for (const auto& [name, letters] : module.letter_classes) {
        file.WriteString(name);
        WriteCount(letters, file);
        for (const char letter : letters) {
            file.WriteU8(CodeOf(letter));
        }
    }
}

void WriteBody(const CGraphemeToPhoneRules<char>& module, ByteWriter& file) {
    const bool worksByTree = module.decision_tree != nullptr;
    file.WriteU16(
        static_cast<uint16_t>((module.flags & ~kWorksByTree) | (worksByTree ? kWorksByTree : 0)));
    WriteSubstitutions(module, file);
    if (worksByTree) {
        WriteTree(module, file);
    } else {
        WriteRuleTables(module, file);
    }
    WriteWords(module.cardinals, kNumUnits, file);
    WriteWords(module.tens, kNumTens, file);
    WriteWords(module.ordinals, kNumUnits, file);
    WriteWords(module.ordinal_tens, kNumTens, file);
    file.WriteU16(static_cast<uint16_t>(module.character_name_count));
    WriteWords(module.character_names, static_cast<size_t>(module.character_name_count), file);
    file.WriteU16(module.fold_table != nullptr ? 1 : 0);
    if (module.fold_table != nullptr) {
        file.WriteBytes({module.fold_table, kFoldTableSize});
    }
    WriteWords(module.symbol_words, kNumSymbolWords, file);
    file.WriteU8(CodeOf(module.thousands_separator));
    file.WriteU8(CodeOf(module.decimal_point));
    WriteWords(module.scale_words, kNumScaleWords, file);
    WriteLetterClasses(module, file);
}

} // namespace

// Kept: the section is of the latest version whatever version it was read from.
void CGraphemeToPhoneRules<char>::WriteLetterToSound(ByteWriter& file) const {
    file.WriteU32(kLetterToSoundMagic);
    file.WriteU16(static_cast<uint16_t>(kLetterToSoundVersion));
    const size_t sizePlace = file.Size();
    file.WriteU32(0);
    WriteBody(*this, file);
    file.PatchU32(sizePlace, static_cast<uint32_t>(file.Size() - sizePlace - sizeof(uint32_t)));
}

} // namespace tessarin
