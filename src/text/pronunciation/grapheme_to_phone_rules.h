#pragma once

#include "tessarin/error_codes.h"
#include "text/lexicon/trie.h"
#include "text/pronunciation/decision_tree.h"
#include "text/pronunciation/grapheme_rule.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin {

class ByteWriter;
class PronunciationBuilder;
class step_budget;

/// Words of numbers and symbols, as they are numbered in a language module.
enum symbol_word {
    kSilenceWord,
    kAndWord,
    kPointWord,
    kDollarWord,
    kDollarsWord,
    kCentWord,
    kCentsWord,
    kInfinityWord,
    kMinusWord,
    kMinusForOrdinalsWord,
};

/// Words of the powers of ten, likewise. The exact ones end a number; the others are followed by
/// the rest of it.
enum scale_word {
    kHundredWord,
    kHundredthWord,
    kThousandWord,
    kThousandthWord,
    kMillionWord,
    kMillionthWord,
    kBillionWord,
    kBillionthWord,
    kExactBillionthWord,
    kExactMillionthWord,
};

/// Room for any message of LoadLetterToSound.
inline constexpr size_t kLetterToSoundMessageSize = 39;

/// Bit of the module's flags: words go through the decision tree.
inline constexpr uint16_t kWorksByTree = 1;

template <class Char> class CGraphemeToPhoneRules;

/// The language module: all that a transcriber knows of its language apart from the lexicon.
/// Pronounces unknown words by context rules, or by a decision tree when it has one, and holds the
/// words for numbers and characters. Strings are loans from static data or from a loaded block, and
/// null where the language has none. Used by one thread at a time, since it keeps work buffers.
template <> class CGraphemeToPhoneRules<char> {
public:
    CGraphemeToPhoneRules() = default;
    CGraphemeToPhoneRules(const CGraphemeToPhoneRules&) = delete;
    CGraphemeToPhoneRules& operator=(const CGraphemeToPhoneRules&) = delete;
    virtual ~CGraphemeToPhoneRules() = default;

    /// Fills an empty module with the built-in English data.
    void LoadBuiltinEnglish();

    /// Replaces all but the suffixes by the letter-to-sound section at `*position`, which is moved
    /// past it, as `*remaining` is. Otherwise returns kInvalidFile or kNewerVersion; what was
    /// read so far stays, and is of no use. `message`, unless null, has room for
    /// kLetterToSoundMessageSize characters and gets the text of a failure.
    [[nodiscard]] error_code LoadLetterToSound(const uint8_t** position, uint32_t* remaining,
                                               char* message);

    /// Appends the section that LoadLetterToSound reads, in its latest version.
    void WriteLetterToSound(ByteWriter& file) const;

    /// Appends the phonemes of `padded`, a word in upper case with a blank before and after it,
    /// which are the word boundaries that patterns test.
    void ApplyRules(PronunciationBuilder& builder, const std::string& padded);

    /// The word with each character replaced that has a substitution. Valid until the next call,
    /// and no longer than `word`.
    std::string_view SubstituteLetters(std::string_view word);

    std::map<char, const GraphemeRule*> rule_tables;
    std::unique_ptr<t2p_decision_node> decision_tree;
    std::set<uint16_t> tree_letters;           ///< the letters that the tree pronounces
    int32_t left_context = 0;                  ///< smallest offset in the tree, at most 0
    int32_t right_context = 0;                 ///< largest offset in the tree, at least 0
    const char* const* cardinals = nullptr;    ///< 20: 0 to 19
    const char* const* tens = nullptr;         ///< 8: 20 to 90
    const char* const* ordinals = nullptr;     ///< 20: 0th to 19th
    const char* const* ordinal_tens = nullptr; ///< 8: 20th to 90th
    const char* const* character_names = nullptr;
    int16_t character_name_count = 0;
    const uint8_t* fold_table = nullptr;       ///< 256 bytes that the input goes through, or null
    const char* const* symbol_words = nullptr; ///< by symbol_word
    char thousands_separator = '\0';
    char decimal_point = '\0';
    const char* const* scale_words = nullptr; ///< by scale_word
    uint16_t flags = 0;
    int16_t section_version = 0; ///< of the section that was loaded
    std::map<char, const char*> letter_substitutions;
    std::map<std::string, std::set<char>> letter_classes; ///< by names such as `&xy&`
    trie<int, char> suffixes;                             ///< to their lengths

    // What a loaded module owns: the tables above are arrays in here, of strings in the block.
    std::vector<uint8_t> loaded_block;
    std::vector<std::vector<GraphemeRule>> owned_rules;
    std::vector<std::vector<const char*>> owned_words;

private:
    void Clear();
    size_t FindRule(const std::string& word, size_t index, const GraphemeRule* table,
                    step_budget& budget, PronunciationBuilder& builder) const;
    void ApplyTree(PronunciationBuilder& builder, std::string_view word);

    std::vector<uint16_t> paddedWord;
    std::string substitutedWord;
};

} // namespace tessarin
