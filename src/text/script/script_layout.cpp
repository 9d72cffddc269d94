#include "text/script/script_layout.h"

#include <algorithm>

#include "text/script/letter_case.h"
#include "text/script/region_builder.h"
#include "text/script/script_table.h"

namespace tessarin {

namespace {

constexpr size_t kLongestName = 40;

bool IsBlank(char letter) {
    return letter == ' ' || letter == '\t';
}

bool IsLetter(char letter) {
    return IsUpper(letter) || IsLower(letter) || static_cast<unsigned char>(letter) >= 0x80;
}

bool IsDigit(char letter) {
    return letter >= '0' && letter <= '9';
}

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view FirstWord(std::string_view line) {
    return line.substr(0, line.find_first_of(" \t:"));
}

bool IsMarkOfName(char letter) {
    return letter == ' ' || letter == '.' || letter == '\'' || letter == '-' || letter == '#' ||
           letter == '&' || letter == '/';
}

/// The stretch at the beginning of a line that may be a name, without the blanks after it.
size_t NameLength(std::string_view line) {
    size_t length = 0;
    while (length < line.size() && length <= kLongestName &&
           (IsLetter(line[length]) || IsDigit(line[length]) || IsMarkOfName(line[length]))) {
        ++length;
    }
    while (length > 0 && IsBlank(line[length - 1])) {
        --length;
    }
    return length > kLongestName || length == 0 || !IsLetter(line[0]) ? 0 : length;
}

bool HasOnlyCapitals(std::string_view name) {
    return std::ranges::none_of(name, IsLower) && std::ranges::count_if(name, IsLetter) >= 2;
}

/// Whether each word of a name begins as names do.
bool IsCapitalisedName(std::string_view name) {
    constexpr int kMostWords = 4;
    int numWords = 0;
    for (size_t i = 0; i < name.size(); ++i) {
        const bool isStart = i == 0 || name[i - 1] == ' ';
        if (isStart && IsLower(name[i])) {
            return false;
        }
        numWords += isStart ? 1 : 0;
    }
    return numWords <= kMostWords;
}

bool IsLabel(std::string_view name, const ScriptTable& table) {
    std::string_view word = FirstWord(name);
    while (word.ends_with('.')) {
        word.remove_suffix(1);
    }
    return table.Has(script_section::kLabels, word) || table.Has(script_section::kLabels, name);
}

/// Skips remarks in parentheses or brackets, and blanks.
size_t SkipRemarks(std::string_view line, size_t at) {
    while (at < line.size()) {
        const char closing = line[at] == '(' ? ')' : line[at] == '[' ? ']' : '\0';
        const size_t close = closing != '\0' ? line.find(closing, at) : std::string_view::npos;
        if (close != std::string_view::npos) {
            at = close + 1;
        } else if (IsBlank(line[at])) {
            ++at;
        } else {
            break;
        }
    }
    return at;
}

struct name_before {
    size_t start;    ///< of the name
    size_t nameEnd;  ///< after it
    size_t speechAt; ///< after the mark that ends the name
};

/// NAME: or NAME (how): at the beginning of a line.
bool FindNameBeforeColon(std::string_view line, const ScriptTable& table, name_before& out) {
    size_t start = 0;
    while (start < line.size() &&
           (line[start] == '>' || line[start] == '-' || IsBlank(line[start]))) {
        ++start;
    }
    const std::string_view rest = line.substr(start);
    const size_t length = NameLength(rest);
    const size_t colon = length > 0 ? SkipRemarks(rest, length) : 0;
    if (colon == 0 || colon >= rest.size() || rest[colon] != ':' ||
        (colon + 1 < rest.size() && !IsBlank(rest[colon + 1]))) {
        return false;
    }
    const std::string_view name = rest.substr(0, length);
    const std::string_view speech = Trimmed(rest.substr(colon + 1));
    const bool isCapitals = HasOnlyCapitals(name);
    const bool isName = isCapitals || (IsCapitalisedName(name) && !speech.empty() &&
                                       !IsDigit(speech[0]) && speech[0] != '$');
    if (!isName || IsLabel(name, table)) {
        return false;
    }
    out = {start, start + length, start + colon + 1};
    return true;
}

/// NAME. and a sentence, as plays are printed.
bool FindNameBeforeStop(std::string_view line, const ScriptTable& table, name_before& out) {
    const size_t stop = line.find('.');
    if (stop == std::string_view::npos || stop < 3 || stop > kLongestName ||
        stop + 2 >= line.size() || !IsBlank(line[stop + 1])) {
        return false;
    }
    const std::string_view name = line.substr(0, stop);
    const std::string_view speech = Trimmed(line.substr(stop + 1));
    if (!HasOnlyCapitals(name) || NameLength(name) != name.size() || IsLabel(name, table) ||
        speech.size() < 2 || std::ranges::none_of(speech, IsLower)) {
        return false;
    }
    out = {0, stop, stop + 1};
    return true;
}

bool IsStageLine(std::string_view line, const ScriptTable& table) {
    std::string_view word = FirstWord(line);
    while (word.ends_with('.')) {
        word.remove_suffix(1);
    }
    if (word.empty() || !IsUpper(word[0]) || !table.Has(script_section::kStage, word)) {
        return false;
    }
    std::string_view rest = line.substr(word.size());
    const bool isAlone = std::ranges::none_of(rest, IsLetter);
    for (; !rest.empty(); rest.remove_prefix(1)) {
        if (rest.size() >= 3 && IsUpper(rest[0]) && IsUpper(rest[1]) && IsUpper(rest[2])) {
            return true;
        }
    }
    return isAlone;
}

/// One run over the lines.
class PlainLayout {
public:
    PlainLayout(std::string_view wholeText, size_t limit, const ScriptTable& words,
                script_layout& layout)
        : text(wholeText), end(limit), table(words), out(layout), regions(layout) {}

    void Run(size_t start) {
        isPlay = LooksLikePlay(start);
        bool isAfterGap = true;
        for (size_t at = start; at < end;) {
            const script_line line = ReadScriptLine(text, at, end);
            AddLine(line, isAfterGap);
            isAfterGap = line.IsEmpty() || isHeading;
            at = line.next;
        }
        regions.EndSpeech();
    }

private:
    /// Two speakers in capitals before a stop, or a line that has someone enter.
    bool LooksLikePlay(size_t start) const {
        int numNames = 0;
        for (size_t at = start; at < end && numNames < 2;) {
            const script_line line = ReadScriptLine(text, at, end);
            name_before name{};
            numNames += FindNameBeforeStop(line.In(text), table, name) ? 1 : 0;
            numNames += IsStageLine(line.In(text), table) ? 1 : 0;
            at = line.next;
        }
        return numNames >= 2;
    }

    void AddLine(const script_line& line, bool isAfterGap) {
        const std::string_view content = line.In(text);
        isHeading = false;
        if (line.IsEmpty()) {
            regions.EndSpeech();
            speaker = 0;
            return;
        }
        name_before name{};
        if (content.starts_with("<v ")) { // the voice of a subtitle
            const std::string_view called = content.substr(3, content.find('>') - 3);
            regions.EndSpeech();
            speaker = FindOrAddSpeaker(called, out);
            regions.AddSpeech(line.start, line.end, speaker);
        } else if (IsSceneHeading(content, table) || IsTransition(content, table)) {
            isHeading = true;
            regions.AddEvent(script_event_kind::kHeading, line.start, line.end);
            speaker = 0;
        } else if (IsStageLine(content, table)) {
            regions.AddEvent(script_event_kind::kDirection, line.start, line.end);
        } else if (FindNameBeforeColon(content, table, name) ||
                   (isPlay && FindNameBeforeStop(content, table, name))) {
            const std::string_view called = content.substr(name.start, name.nameEnd - name.start);
            speaker = FindOrAddSpeaker(called, out);
            regions.AddEvent(script_event_kind::kSpeaker, line.start + name.start,
                             line.start + name.speechAt, speaker);
            regions.AddSpeech(line.start + name.speechAt, line.end, speaker);
        } else if (const size_t length = isAfterGap ? CueNameLength(content, table) : 0;
                   length > 0 && IsSpeechNext(line)) {
            speaker = FindOrAddSpeaker(content.substr(0, length), out);
            regions.AddEvent(script_event_kind::kSpeaker, line.start, line.end, speaker);
        } else {
            regions.AddSpeech(line.start, line.end, speaker);
        }
    }

    bool IsSpeechNext(const script_line& line) const {
        if (line.next >= end) {
            return false;
        }
        const script_line next = ReadScriptLine(text, line.next, end);
        return !next.IsEmpty() && std::ranges::any_of(next.In(text), IsLower);
    }

    std::string_view text;
    size_t end;
    const ScriptTable& table;
    script_layout& out;
    RegionBuilder regions;
    bool isPlay = false;
    bool isHeading = false; ///< the last line
    uint32_t speaker = 0;
};

} // namespace

script_line ReadScriptLine(std::string_view text, size_t at, size_t limit) {
    const size_t end = std::min(text.find_first_of("\r\n", at), limit);
    script_line line{at, end, end};
    if (line.next < limit) {
        line.next += text[end] == '\r' && end + 1 < limit && text[end + 1] == '\n' ? 2 : 1;
    }
    while (line.start < line.end && IsBlank(text[line.start])) {
        ++line.start;
    }
    while (line.end > line.start && IsBlank(text[line.end - 1])) {
        --line.end;
    }
    return line;
}

bool IsSceneHeading(std::string_view line, const ScriptTable& table) {
    const std::string_view first = FirstWord(line);
    return line.size() > first.size() && HasOnlyCapitals(first) &&
           table.Has(script_section::kHeadings, first) && std::ranges::none_of(line, IsLower);
}

bool IsTransition(std::string_view line, const ScriptTable& table) {
    if (!HasOnlyCapitals(line) || line.size() > kLongestName) {
        return false;
    }
    const size_t lastBlank = line.rfind(' ');
    return lastBlank != std::string_view::npos &&
           table.Has(script_section::kTransitions, line.substr(lastBlank + 1));
}

size_t CueNameLength(std::string_view line, const ScriptTable& table) {
    constexpr int kMostWords = 5;
    const size_t length = NameLength(line);
    const std::string_view name = line.substr(0, length);
    size_t after = length > 0 ? SkipRemarks(line, length) : 0;
    after += after < line.size() && line[after] == '^' ? 1 : 0;
    const bool isName = length > 0 && after >= line.size() && HasOnlyCapitals(name) &&
                        !name.ends_with('.') && std::ranges::count(name, ' ') < kMostWords;
    return isName && !IsLabel(name, table) ? length : 0;
}

std::string SpeakerName(std::string_view name) {
    name = Trimmed(name);
    if (name.size() > kLongestName) {
        size_t end = kLongestName; // of whole characters
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) {
            --end;
        }
        name = name.substr(0, end);
    }
    return InUpperCase(name);
}

uint32_t FindOrAddSpeaker(std::string_view name, script_layout& out) {
    const std::string upper = SpeakerName(name);
    const auto [entry, isNew] =
        out.numbers.try_emplace(upper, static_cast<uint32_t>(out.speakers.size()));
    if (isNew) {
        out.speakers.push_back(upper);
    }
    return entry->second;
}

void LayOutPlain(std::string_view text, size_t start, size_t end, const ScriptTable& table,
                 script_layout& out) {
    PlainLayout(text, end, table, out).Run(start);
}

script_layout LayOutScript(std::string_view text, script_format format, const ScriptTable& table) {
    script_layout out;
    switch (format == script_format::kAuto ? FindScriptFormat(text, table) : format) {
    case script_format::kFountain:
        LayOutFountain(text, table, out);
        break;
    case script_format::kSubRip:
    case script_format::kWebVtt:
        LayOutSubtitles(text, table, out);
        break;
    case script_format::kTextGrid:
        LayOutTextGrid(text, table, out);
        break;
    default:
        LayOutPlain(text, 0, text.size(), table, out);
    }
    return out;
}

} // namespace tessarin
