#pragma once

#include "tessarin/speak_dict.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace tessarin {

/// Whether two words are the same but for the case of ASCII letters. Other bytes compare as they
/// are.
bool IsSameWord(std::string_view first, std::string_view second);

/// The word of an entry.
inline std::string_view WordOf(const CPronunciationRec& entry) {
    return {entry.word, entry.word_length};
}

/// Finds the first entry of a word: a hash table with open addressing. It is kept small, since the
/// time to load a lexicon is mostly the time to touch fresh memory.
class word_index {
public:
    static constexpr uint32_t kNone = 0xFFFFFFFF;

    /// Indexes `entries`, which must stay where they are for the lookups to come.
    void Build(std::span<const CPronunciationRec> newEntries);

    /// The number of the first entry whose word is `word`, or kNone.
    uint32_t Find(std::string_view word) const;

private:
    size_t FindSlot(std::string_view word, uint32_t hash) const;

    std::span<const CPronunciationRec> entries;
    std::vector<uint32_t> slots; ///< entry numbers plus 1, or 0; at most two thirds are taken
    std::vector<uint8_t> tags;   ///< for each slot some bits of its word's hash
};

} // namespace tessarin
