#include "text/script/script_tokens.h"

#include <algorithm>
#include <utility>

#include "text/script/character_references.h"

namespace tessarin {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kApostrophe = U'\'';

bool IsBetween(char32_t code, char32_t first, char32_t last) {
    return code >= first && code <= last;
}

bool IsBlankCode(char32_t code) {
    return code == ' ' || code == '\t' || code == '\f' || code == '\v' || code == 0xA0 ||
           IsBetween(code, 0x2000, 0x200F) || code == 0x202F || code == 0x205F || code == 0x3000 ||
           code == 0xFEFF || code == 0x2060 || code == 0xAD;
}

bool IsBreakCode(char32_t code) {
    return code == '\n' || code == '\r' || code == 0x85 || code == 0x2028 || code == 0x2029;
}

/// The plain character for the quotes, apostrophes and dashes of typesetters.
char32_t PlainCode(char32_t code) {
    if (IsBetween(code, 0x2018, 0x201B) || code == 0x2032 || code == 0xB4) {
        return kApostrophe;
    }
    if (IsBetween(code, 0x201C, 0x201F) || code == 0x2033 || code == 0xAB || code == 0xBB) {
        return U'"';
    }
    if (IsBetween(code, 0x2010, 0x2011) || code == 0x2212) {
        return U'-';
    }
    if (code == 0x2014 || code == 0x2015) {
        return kLongDash;
    }
    return code;
}

} // namespace

char32_t NextCharacter(std::string_view text, size_t& at) {
    const auto byteAt = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t lead = byteAt(at++);
    if (lead < 0x80) {
        return lead;
    }
    const size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4 || at + more > text.size()) {
        return kReplacement;
    }
    char32_t code = lead & (0x3Fu >> more);
    for (size_t i = 0; i < more; ++i) {
        if ((byteAt(at + i) & 0xC0) != 0x80) {
            return kReplacement;
        }
        code = code << 6 | (byteAt(at + i) & 0x3Fu);
    }
    constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
    if (code < kLeast[more] || code > 0x10FFFF || IsBetween(code, 0xD800, 0xDFFF)) {
        return kReplacement;
    }
    at += more;
    return code;
}

void AppendUtf8(char32_t code, std::string& text) {
    const auto trail = [&](int shift) { text += static_cast<char>(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xC0 | code >> 6);
    } else if (code < 0x10000) {
        text += static_cast<char>(0xE0 | code >> 12);
        trail(6);
    } else {
        text += static_cast<char>(0xF0 | code >> 18);
        trail(12);
        trail(6);
    }
    if (code >= 0x80) {
        trail(0);
    }
}

bool IsScriptLetter(char32_t code) {
    if (code < 0xC0) {
        return IsBetween(code, 'A', 'Z') || IsBetween(code, 'a', 'z') || code == 0xAA ||
               code == 0xBA;
    }
    return code != 0xD7 && code != 0xF7 && !IsBetween(code, 0x2000, 0x2BFF) &&
           !IsBetween(code, 0x3000, 0x303F) && !IsBetween(code, 0xE000, 0xF8FF) &&
           !IsBetween(code, 0xFE00, 0xFE0F) && !IsBetween(code, 0xFFF0, 0xFFFF) && code != 0xFEFF &&
           code < 0x1F000;
}

bool IsAsciiDigit(char32_t code) {
    return IsBetween(code, '0', '9');
}

ScriptTokens::ScriptTokens(std::string_view whole, size_t start, size_t end) : text(whole) {
    Cut(start, std::min(end, text.size()));
    const auto last = static_cast<uint32_t>(end);
    tokens.push_back({script_token_kind::kEnd, 0, last, last});
}

ScriptTokens ScriptTokens::OfReferences(std::string_view whole, size_t start, size_t end) {
    auto decoded = std::make_shared<const decoded_text>(
        DecodeCharacterReferences(whole.substr(start, end - start)));
    ScriptTokens tokens(decoded->text, 0, decoded->text.size());
    tokens.decoded = std::move(decoded);
    tokens.decodedFrom = static_cast<uint32_t>(start);
    return tokens;
}

script_place ScriptTokens::PlaceOf(size_t first, size_t end) const {
    uint32_t from = At(first).start;
    uint32_t to = At(end - 1).end;
    if (decoded != nullptr) {
        from = decodedFrom + decoded->origins[from];
        to = decodedFrom + decoded->origins[to];
    }
    return {from, to - from};
}

void ScriptTokens::Cut(size_t start, size_t end) {
    const std::string_view part = text.substr(0, end);
    const auto peek = [&](size_t at) { return at < end ? PlainCode(NextCharacter(part, at)) : 0; };
    for (size_t at = start; at < end;) {
        const size_t first = at;
        const char32_t code = PlainCode(NextCharacter(part, at));
        script_token token{script_token_kind::kSymbol, code, static_cast<uint32_t>(first), 0};
        if (IsScriptLetter(code)) {
            token.kind = script_token_kind::kWord;
            for (size_t next = at; next < end;) {
                const char32_t more = PlainCode(NextCharacter(part, next));
                if (!IsScriptLetter(more) && !(more == kApostrophe && IsScriptLetter(peek(next)))) {
                    break;
                }
                at = next;
            }
        } else if (IsAsciiDigit(code)) {
            token.kind = script_token_kind::kDigits;
            while (at < end && IsAsciiDigit(static_cast<uint8_t>(part[at]))) {
                ++at;
            }
        } else if (IsBlankCode(code) || IsBreakCode(code)) {
            token.kind = IsBreakCode(code) ? script_token_kind::kBreak : script_token_kind::kBlank;
            for (size_t next = at; next < end; at = next) {
                const char32_t more = NextCharacter(part, next);
                if (!IsBlankCode(more) && !IsBreakCode(more)) {
                    break;
                }
                token.kind = IsBreakCode(more) ? script_token_kind::kBreak : token.kind;
            }
        }
        token.end = static_cast<uint32_t>(at);
        tokens.push_back(token);
    }
}

std::string_view ScriptTokens::Text(size_t i) const {
    return text.substr(At(i).start, At(i).end - At(i).start);
}

std::string_view ScriptTokens::Text(size_t first, size_t end) const {
    return text.substr(At(first).start, At(end).start - At(first).start);
}

bool ScriptTokens::IsCapitalised(size_t i) const {
    return IsWord(i) && Text(i)[0] >= 'A' && Text(i)[0] <= 'Z';
}

bool ScriptTokens::IsAllCapitals(size_t i) const {
    return IsCapitalised(i) && std::ranges::none_of(Text(i), [](char letter) {
               return (letter >= 'a' && letter <= 'z') ||
                      static_cast<unsigned char>(letter) >= 0x80;
           });
}

size_t ScriptTokens::WordBefore(size_t i, size_t reach) const {
    for (size_t steps = 0; i > 0 && steps <= reach; ++steps) {
        --i;
        if (IsWord(i)) {
            return i;
        }
        if (At(i).kind == script_token_kind::kBreak) {
            break;
        }
    }
    return GetCount();
}

} // namespace tessarin
