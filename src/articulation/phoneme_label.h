#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tessarin {

/// A phoneme's text of at most three characters, packed so that labels compare like their texts at
/// the cost of a number. Longer texts are cut; no rule can name them, so they never sound.
class phoneme_label {
public:
    static constexpr size_t kMostCharacters = 3;

    constexpr phoneme_label() = default;
    constexpr explicit phoneme_label(std::string_view text) {
        for (size_t i = 0; i < kMostCharacters; ++i) {
            code = code << 8 | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0u);
        }
    }

    constexpr size_t Length() const {
        return (code & 0xFF0000u ? 1u : 0u) + (code & 0xFF00u ? 1u : 0u) + (code & 0xFFu ? 1u : 0u);
    }

    /// Writes the text, zero-terminated.
    constexpr void CopyTo(char (&field)[kMostCharacters + 1]) const {
        for (size_t i = 0; i < kMostCharacters; ++i) {
            field[i] = static_cast<char>(code >> 8 * (kMostCharacters - 1 - i) & 0xFFu);
        }
        field[kMostCharacters] = '\0';
    }

    std::string Text() const {
        char field[kMostCharacters + 1];
        CopyTo(field);
        return field;
    }

    friend constexpr auto operator<=>(const phoneme_label&, const phoneme_label&) = default;

private:
    uint32_t code = 0;
};

inline constexpr phoneme_label kSilence{"x"};

} // namespace tessarin
