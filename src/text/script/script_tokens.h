#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin {

struct decoded_text;

/// A stretch of a text in bytes.
struct script_place {
    uint32_t offset;
    uint32_t length;

    bool operator==(const script_place&) const = default;
};

enum class script_token_kind : uint8_t {
    kEnd,
    kWord,   ///< letters, and apostrophes between them
    kDigits, ///< 0 to 9
    kBlank,
    kBreak, ///< blanks with a line break
    kSymbol ///< one character of any other kind
};

/// A piece of a text. `code` is a symbol's character, a plain quote or dash for each of their
/// kinds; U+FFFD stands for a byte that is not UTF-8.
struct script_token {
    script_token_kind kind;
    char32_t code;
    uint32_t start; ///< in bytes of the text
    uint32_t end;
};

// Characters that each stand for all of their kind.
inline constexpr char32_t kLongDash = U'\u2014'; ///< not the plain one, which joins words
inline constexpr char32_t kEnDash = U'\u2013';   ///< between numbers, from one to the other
inline constexpr char32_t kEllipsis = U'\u2026';

/// A text cut into tokens without gaps. The text must outlive them; its bytes may be any.
class ScriptTokens {
public:
    /// The tokens of the stretch from `start` to `end`.
    ScriptTokens(std::string_view text, size_t start, size_t end);
    /// Likewise, of a stretch with character references, which are read as their characters.
    static ScriptTokens OfReferences(std::string_view text, size_t start, size_t end);

    size_t GetCount() const { return tokens.size() - 1; }
    /// Beyond the last, and before the first for `i` of -1, an end.
    const script_token& At(size_t i) const {
        return tokens[i < tokens.size() ? i : tokens.size() - 1];
    }

    bool IsWord(size_t i) const { return At(i).kind == script_token_kind::kWord; }
    bool IsDigits(size_t i) const { return At(i).kind == script_token_kind::kDigits; }
    bool IsBlank(size_t i) const { return At(i).kind == script_token_kind::kBlank; }
    /// Blanks, a line break or an end.
    bool IsGap(size_t i) const {
        const script_token_kind kind = At(i).kind;
        return kind == script_token_kind::kBlank || kind == script_token_kind::kBreak ||
               kind == script_token_kind::kEnd;
    }
    /// Whether a line begins with the token.
    bool IsLineStart(size_t i) const {
        return i == 0 || At(i - 1).kind == script_token_kind::kBreak;
    }
    bool Is(size_t i, char32_t symbol) const {
        return At(i).kind == script_token_kind::kSymbol && At(i).code == symbol;
    }
    /// The bytes of a token; nothing for an end.
    std::string_view Text(size_t i) const;
    /// Those of the tokens from `first` up to `end`.
    std::string_view Text(size_t first, size_t end) const;
    /// Where the tokens from `first` up to `end` stand in the text, references as they are written.
    script_place PlaceOf(size_t first, size_t end) const;
    /// How many digits a token has; 0 for any other.
    size_t NumDigits(size_t i) const { return IsDigits(i) ? At(i).end - At(i).start : 0; }

    /// A word begins with a capital, has nothing but capitals, or has no capital.
    bool IsCapitalised(size_t i) const;
    bool IsAllCapitals(size_t i) const;

    /// The last word before the token `i` in its line, with at most `reach` tokens between;
    /// GetCount without one.
    size_t WordBefore(size_t i, size_t reach = 3) const;
    /// The token after `i` that is not blank, in its line.
    size_t SkipBlank(size_t i) const { return IsBlank(i) ? i + 1 : i; }

private:
    void Cut(size_t start, size_t end);

    std::shared_ptr<const decoded_text> decoded; ///< null for a text without references
    uint32_t decodedFrom = 0;                    ///< where that begins in the text
    std::string_view text;                       ///< what is cut
    std::vector<script_token> tokens;            ///< the last is an end
};

/// The character at `text[at]`, where `at` moves on to the next; U+FFFD, of one byte, where the
/// bytes are not UTF-8.
char32_t NextCharacter(std::string_view text, size_t& at);
void AppendUtf8(char32_t code, std::string& text);

bool IsScriptLetter(char32_t code);
bool IsAsciiDigit(char32_t code);

} // namespace tessarin
