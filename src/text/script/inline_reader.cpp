#include "text/script/inline_reader.h"

#include <algorithm>
#include <utility>

namespace tessarin {

namespace {

bool IsPause(char32_t code) {
    return code == '.' || code == ',' || code == '?' || code == '!' || code == ';' || code == ':' ||
           code == '-' || code == kLongDash || code == kEnDash || code == kEllipsis;
}

bool IsQuoteSign(char32_t code) {
    return code == '"' || code == '\'';
}

} // namespace

void InlineReader::Read() {
    for (size_t i = 0; i < tokens.GetCount() && !dashesAreTurns; ++i) {
        dashesAreTurns =
            tokens.IsLineStart(i) && tokens.Is(i, '-') && tokens.IsWord(tokens.SkipBlank(i + 1));
    }
    for (size_t i = 0; i < tokens.GetCount();) {
        if (tokens.IsLineStart(i)) {
            StartLine(i);
        }
        i = Step(i);
    }
}

/// Looks ahead to the end of the line: capitals are not emphasis if the whole line has them.
void InlineReader::StartLine(size_t i) {
    hasLowerCase = false;
    isQuoteOpen = false;
    isSingleQuoteOpen = false;
    for (; i < tokens.GetCount() && tokens.At(i).kind != script_token_kind::kBreak; ++i) {
        hasLowerCase = hasLowerCase || (tokens.IsWord(i) && !tokens.IsAllCapitals(i));
    }
}

size_t InlineReader::Step(size_t i) {
    if (tokens.IsGap(i)) {
        return i + 1;
    }
    if (const size_t end = ReadMark(i); end > 0) {
        return end;
    }
    maybe_match found;
    if (tokens.IsWord(i)) {
        found = MatchWord(i);
    } else if (tokens.IsDigits(i)) {
        found = MatchNumber(i);
    } else {
        found = MatchSign(i);
    }
    if (!found) {
        return ReadPunctuation(i);
    }
    Say(*found, i);
    return found->end;
}

void InlineReader::Say(const match& found, size_t i) {
    if (!found.spoken.empty()) {
        const uint32_t stars = i < emphasisEnd ? kEmphasisedWord : 0;
        script_word word{found.spoken, PlaceOf(i, found.end), found.flags | stars};
        for (const std::string& other : found.others) {
            const bool isNew = !other.empty() && other != word.spoken &&
                               std::ranges::find(word.others, other) == word.others.end();
            if (isNew && word.others.size() + 1 < kMostReadings) {
                word.others.push_back(other);
            }
        }
        out.AddWord(std::move(word));
    }
}

void InlineReader::PassOn(std::string_view text, size_t i, size_t end) {
    out.AddText(text, PlaceOf(i, end));
    lastPausePlace = end;
}

/// Reads a pause, a quotation mark, or a symbol without a name. Several stops make one pause.
size_t InlineReader::ReadPunctuation(size_t i) {
    const char32_t code = tokens.At(i).code;
    size_t end = i + 1;
    if (IsQuoteSign(code)) {
        if (code == '"') {
            isQuoteOpen = !isQuoteOpen;
        } else {
            isSingleQuoteOpen = i == 0 || tokens.IsGap(i - 1);
        }
        return end;
    }
    if (!IsPause(code)) {
        if (code == '(' || code == ')' || code == '/') {
            PassOn(",", i, end);
        } else if (!table.Has(script_section::kSilent, tokens.Text(i)) && code != '"') {
            if (code > 0x7F && !(code >= 0xFE00 && code <= 0xFE0F)) {
                out.AddUnsaid(PlaceOf(i, end));
            }
        }
        return end;
    }
    while (tokens.At(end).kind == script_token_kind::kSymbol && tokens.At(end).code == code) {
        ++end;
    }
    const bool trailsOff = code == kEllipsis || (code == '.' && end > i + 1);
    const size_t next = tokens.SkipBlank(end);
    if (trailsOff) {
        PassOn(tokens.IsWord(next) && !tokens.IsCapitalised(next) ? "," : ".", i, end);
    } else if (code == kLongDash || code == kEnDash || code == '-') {
        PassOn("-", i, end);
    } else if (lastPausePlace != i) {
        PassOn(tokens.Text(i), i, end);
    }
    return end;
}

size_t InlineReader::ReadMark(size_t i) {
    if (tokens.At(i).kind != script_token_kind::kSymbol) {
        return 0;
    }
    switch (tokens.At(i).code) {
    case '(':
        return ReadParenthesis(i);
    case '[':
        return ReadBracket(i, bracket);
    case '{':
        return ReadBracket(i, brace);
    case '<':
        return ReadTag(i);
    case '*':
        return ReadStars(i);
    default:
        return 0;
    }
}

size_t InlineReader::AddEvent(script_event_kind kind, size_t first, size_t end) {
    out.AddEvent({kind, PlaceOf(first, end)});
    return end;
}

/// The token of the closing sign; 0 without one. Opening signs are asked for in the order of the
/// text, so no token is looked at twice, however many signs are opened.
size_t InlineReader::FindClosing(size_t i, closing_sign& sign) const {
    const size_t limit = std::min(tokens.GetCount(), i + sign.reach);
    size_t& at = sign.place;
    at = std::max(at, i + 1);
    while (at < limit && !tokens.Is(at, sign.code) &&
           !(sign.withinLine && tokens.At(at).kind == script_token_kind::kBreak)) {
        ++at;
    }
    return at < limit && tokens.Is(at, sign.code) ? at : 0;
}

bool InlineReader::IsSentenceStart(size_t i) const {
    while (i > 0) {
        const script_token& before = tokens.At(i - 1);
        if (before.kind == script_token_kind::kBreak) {
            return true;
        }
        if (before.kind == script_token_kind::kSymbol && before.code != ',' && before.code != ';' &&
            before.code != '"' && before.code != '\'') {
            return true;
        }
        if (before.kind != script_token_kind::kBlank && before.kind != script_token_kind::kSymbol) {
            return false;
        }
        --i;
    }
    return true;
}

bool InlineReader::IsSentenceEnd(size_t i) const {
    const size_t next = tokens.SkipBlank(i);
    return next >= tokens.GetCount() || tokens.At(next).kind == script_token_kind::kBreak;
}

/// Whether words within a sentence are a stage direction: because of their capitals, the ending
/// of the first word, or a list.
bool InlineReader::LooksLikeDirection(size_t first, size_t end) const {
    size_t word = first;
    while (word < end && !tokens.IsWord(word)) {
        ++word;
    }
    if (word == end) {
        return true;
    }
    const std::string lower = InLowerCase(tokens.Text(word));
    if (table.Has(script_section::kNotDirections, lower)) {
        return false;
    }
    if (tokens.IsAllCapitals(word) || table.Has(script_section::kDirections, lower)) {
        return true;
    }
    for (size_t length = 1; length <= 4 && length + 2 <= lower.size(); ++length) {
        if (table.Find(script_section::kDirections, "-" + lower.substr(lower.size() - length)) !=
            nullptr) {
            return true;
        }
    }
    return false;
}

size_t InlineReader::ReadParenthesis(size_t i) {
    const size_t close = FindClosing(i, parenthesis);
    if (close == 0 || (close == i + 2 && MatchDigitGroups(i + 1))) {
        return 0;
    }
    // A long remark between words is an aside of the speaker.
    constexpr size_t kLongestDirection = 14;
    const bool standsApart = IsSentenceStart(i) || IsSentenceEnd(close + 1);
    return standsApart || (close - i <= kLongestDirection && LooksLikeDirection(i + 1, close))
               ? AddEvent(script_event_kind::kDirection, i, close + 1)
               : 0;
}

size_t InlineReader::ReadBracket(size_t i, closing_sign& closing) {
    size_t close = FindClosing(i, closing);
    if (close == 0) {
        return 0;
    }
    close += tokens.Is(close + 1, closing.code) ? 1 : 0;
    return AddEvent(script_event_kind::kNote, i, close + 1);
}

/// Between stars stands an action, or one word that is stressed; twice two of them only stress.
size_t InlineReader::ReadStars(size_t i) {
    if (i < emphasisEnd || tokens.Is(i + 1, '*') || tokens.IsGap(i + 1)) {
        return i + 1;
    }
    const size_t close = FindClosing(i, star);
    if (close == 0 || tokens.IsGap(close - 1) || tokens.Is(close + 1, '*')) {
        return i + 1;
    }
    const bool isOneWord = close == i + 2;
    if (isOneWord && !(IsSentenceStart(i) && LooksLikeDirection(i + 1, close))) {
        emphasisEnd = close;
        return i + 1;
    }
    return AddEvent(script_event_kind::kAction, i, close + 1);
}

/// A tag that a transcriber knows is passed on, with the word that a <pron> is for; that of a voice
/// names the speaker; others are markup.
size_t InlineReader::ReadTag(size_t i) {
    const size_t name = tokens.Is(i + 1, '/') ? i + 2 : i + 1;
    if (!tokens.IsWord(name)) {
        return 0;
    }
    const size_t close = FindClosing(i, tagEnd);
    if (close == 0) {
        return 0;
    }
    const std::string lower = InLowerCase(tokens.Text(name));
    if (lower == "v" && tokens.IsBlank(name + 1)) {
        return AddEvent(script_event_kind::kSpeaker, i, close + 1);
    }
    if (!table.Has(script_section::kTags, lower) && !tokens.Text(i, close).starts_with("<auto-")) {
        return close + 1;
    }
    PassOn(std::string(" ").append(tokens.Text(i, close + 1)), i, close + 1);
    if (lower != "pron") {
        return close + 1;
    }
    const size_t word = tokens.IsGap(close + 1) ? close + 2 : close + 1;
    size_t end = word;
    while (!tokens.IsGap(end)) {
        ++end;
    }
    if (end > word) {
        out.AddWord({std::string(tokens.Text(word, end)), PlaceOf(word, end), 0});
    }
    return end;
}

} // namespace tessarin
