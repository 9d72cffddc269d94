#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace tessarin {

/// One symbol of the phoneme alphabet. Pronunciations are written in these symbols with nothing
/// between them, and acoustic models are labelled with them.
struct phoneme_symbol {
    char label[3];        ///< one lower-case letter, or an upper-case letter and one more
    uint16_t duration_ms; ///< a usual length, for timelines made without audio
    bool is_vowel;        ///< what is_vowel_label answers
};

/// The forty symbols. The first one, `x`, is silence.
std::span<const phoneme_symbol> PhonemeAlphabet();

/// The symbol with this label, or null.
const phoneme_symbol* FindPhonemeSymbol(std::string_view label);

/// Whether the mouth opens for the phoneme: the vowels, and the glide `w`.
bool is_vowel_label(std::string_view label);

/// Whether the phoneme is a voiced, ringing sound whose length says more of its strength than its
/// level does.
bool is_sonorant_label(std::string_view label);

/// Splits a phoneme string, appending its symbols to `symbols`. White space and commas between
/// symbols are skipped. Returns false at a symbol that is not in the alphabet; those before it have
/// been appended. `*lastOffset`, which may be null, receives the offset of the symbol that was
/// examined last.
bool ParsePhonemeString(std::string_view text, std::vector<const phoneme_symbol*>& symbols,
                        size_t* lastOffset);

} // namespace tessarin
