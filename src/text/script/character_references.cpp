#include "text/script/character_references.h"

#include <algorithm>
#include <charconv>

#include "text/script/script_tokens.h"

namespace tessarin {

namespace {

struct named_character {
    std::string_view name;
    char32_t code;
};

/// Those that the formats of subtitles define, and what editors write for typesetters' signs.
constexpr named_character kNames[] = {
    {"amp", '&'},      {"lt", '<'},       {"gt", '>'},       {"quot", '"'},     {"apos", '\''},
    {"nbsp", 0xA0},    {"lrm", 0x200E},   {"rlm", 0x200F},   {"shy", 0xAD},     {"hellip", 0x2026},
    {"mdash", 0x2014}, {"ndash", 0x2013}, {"lsquo", 0x2018}, {"rsquo", 0x2019}, {"ldquo", 0x201C},
    {"rdquo", 0x201D}, {"laquo", 0xAB},   {"raquo", 0xBB},   {"deg", 0xB0},     {"frac12", 0xBD},
    {"frac14", 0xBC},  {"frac34", 0xBE},  {"pound", 0xA3},   {"euro", 0x20AC},  {"cent", 0xA2},
    {"yen", 0xA5},     {"eacute", 0xE9},  {"times", 0xD7},
};

char32_t CodeOfNumber(std::string_view digits) {
    const bool isHex = digits.starts_with('x') || digits.starts_with('X');
    digits.remove_prefix(isHex ? 1 : 0);
    uint32_t code = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), code, isHex ? 16 : 10);
    const bool isCharacter = error == std::errc() && end == digits.data() + digits.size() &&
                             code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF);
    return isCharacter ? code : 0;
}

} // namespace

char32_t ReadCharacterReference(std::string_view text, size_t& at) {
    constexpr size_t kLongest = 10;
    if (at >= text.size() || text[at] != '&') {
        return 0;
    }
    const std::string_view rest = text.substr(at + 1, kLongest);
    const size_t end = rest.find(';');
    if (end == std::string_view::npos || end == 0) {
        return 0;
    }
    const std::string_view name = rest.substr(0, end);
    char32_t code = 0;
    if (name[0] == '#') {
        code = CodeOfNumber(name.substr(1));
    } else if (const auto* const found = std::ranges::find(kNames, name, &named_character::name);
               found != std::end(kNames)) {
        code = found->code;
    }
    at += code != 0 ? end + 2 : 0;
    return code;
}

decoded_text DecodeCharacterReferences(std::string_view text) {
    decoded_text decoded;
    decoded.text.reserve(text.size());
    for (size_t at = 0; at < text.size();) {
        const auto first = static_cast<uint32_t>(at);
        if (const char32_t code = ReadCharacterReference(text, at); code != 0) {
            AppendUtf8(code, decoded.text);
        } else {
            decoded.text += text[at++];
        }
        decoded.origins.resize(decoded.text.size(), first);
    }
    decoded.origins.push_back(static_cast<uint32_t>(text.size()));
    return decoded;
}

} // namespace tessarin
