#include <algorithm>
#include <optional>

#include "text/script/letter_case.h"
#include "text/script/region_builder.h"
#include "text/script/script_layout.h"
#include "text/script/script_table.h"

namespace tessarin {

namespace {

constexpr std::string_view kArrow = "-->";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

/// Milliseconds of hh:mm:ss,mmm or mm:ss.mmm at the beginning of a text.
std::optional<int32_t> ReadClock(std::string_view text) {
    int64_t ms = 0;
    int64_t field = 0;
    size_t at = 0;
    size_t numFields = 0;
    for (; at < text.size() && at < 12; ++at) {
        if (text[at] >= '0' && text[at] <= '9') {
            field = field * 10 + (text[at] - '0');
        } else if (text[at] == ':' || text[at] == ',' || text[at] == '.') {
            ms = ms * 60 + field;
            field = 0;
            ++numFields;
            if (text[at] != ':') {
                ++at;
                break;
            }
        } else {
            return std::nullopt;
        }
    }
    int64_t thousandths = 0;
    size_t digits = 0;
    for (; digits < 3 && at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at, ++digits) {
        thousandths = thousandths * 10 + (text[at] - '0');
    }
    if (numFields < 2 || digits < 3) {
        return std::nullopt;
    }
    const int64_t all = ms * 1000 + thousandths;
    return all <= INT32_MAX ? std::optional(static_cast<int32_t>(all)) : std::nullopt;
}

struct time_range {
    int32_t startMs;
    int32_t endMs;
};

/// The times of a line of subtitles.
std::optional<time_range> ReadTimes(std::string_view line) {
    const size_t arrow = line.find(kArrow);
    if (arrow == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view after = line.substr(arrow + kArrow.size());
    after.remove_prefix(std::min(after.find_first_not_of(" \t"), after.size()));
    const std::optional<int32_t> start = ReadClock(line.substr(0, arrow));
    const std::optional<int32_t> end = ReadClock(after);
    return start && end ? std::optional<time_range>{{*start, *end}} : std::nullopt;
}

/// Screenplays: only what stands below a name is said.
class FountainLayout {
public:
    FountainLayout(std::string_view wholeText, const ScriptTable& words, script_layout& layout)
        : text(wholeText), table(words), out(layout), regions(layout) {}

    void Run() {
        bool isAfterGap = true;
        for (size_t at = SkipTitlePage(); at < text.size();) {
            if (text.substr(at).starts_with("/*")) {
                const size_t close = std::min(text.find("*/", at + 2), text.size() - 2);
                regions.AddEvent(script_event_kind::kNote, at, close + 2);
                at = close + 2;
                continue;
            }
            const script_line line = ReadScriptLine(text, at, text.size());
            AddLine(line, isAfterGap);
            isAfterGap = line.IsEmpty();
            at = line.next;
        }
        regions.EndSpeech();
    }

private:
    size_t SkipTitlePage() const {
        const size_t start = text.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0;
        const script_line first = ReadScriptLine(text, start, text.size());
        const std::string_view key = first.In(text).substr(0, first.In(text).find(':'));
        if (!table.Has(script_section::kTitlePage, key)) {
            return start;
        }
        size_t at = start;
        while (at < text.size()) {
            const script_line line = ReadScriptLine(text, at, text.size());
            at = line.next;
            if (line.IsEmpty()) {
                break;
            }
        }
        return at;
    }

    void AddLine(const script_line& line, bool isAfterGap) {
        const std::string_view content = line.In(text);
        if (line.IsEmpty()) {
            regions.EndSpeech();
            isDialogue = false;
            return;
        }
        if (isDialogue) {
            regions.AddSpeech(line.start, line.end, speaker);
            return;
        }
        // A name after @ need not be in capitals.
        const std::string_view name = content[0] == '@' ? content.substr(1, content.find('(') - 1)
                                      : isAfterGap
                                          ? content.substr(0, CueNameLength(content, table))
                                          : std::string_view();
        const bool isHeading = IsSceneHeading(content, table) || IsTransition(content, table) ||
                               content[0] == '#' || content[0] == '=' || content[0] == '>' ||
                               (content.size() > 1 && content[0] == '.' && content[1] != '.');
        if (isHeading) {
            regions.AddEvent(script_event_kind::kHeading, line.start, line.end);
        } else if (!SpeakerName(name).empty() && line.next < text.size() &&
                   !ReadScriptLine(text, line.next, text.size()).IsEmpty()) {
            speaker = FindOrAddSpeaker(name, out);
            regions.AddEvent(script_event_kind::kSpeaker, line.start, line.end, speaker);
            isDialogue = true;
        } else {
            regions.AddEvent(script_event_kind::kDirection, line.start, line.end);
        }
    }

    std::string_view text;
    const ScriptTable& table;
    script_layout& out;
    RegionBuilder regions;
    bool isDialogue = false;
    uint32_t speaker = 0;
};

/// Whether a name in capitals stands below a gap and above a line.
bool HasCue(std::string_view text, const ScriptTable& table) {
    bool isAfterGap = true;
    for (size_t at = 0; at < text.size();) {
        const script_line line = ReadScriptLine(text, at, text.size());
        const std::string_view content = line.In(text);
        if (isAfterGap && line.next < text.size() && !IsSceneHeading(content, table) &&
            CueNameLength(content, table) > 0) {
            const script_line next = ReadScriptLine(text, line.next, text.size());
            if (std::ranges::any_of(next.In(text), IsLower)) {
                return true;
            }
        }
        isAfterGap = line.IsEmpty();
        at = line.next;
    }
    return false;
}

} // namespace

script_format FindScriptFormat(std::string_view text, const ScriptTable& table) {
    constexpr size_t kFewLines = 12;
    const std::string_view body =
        text.starts_with(kUtf8Mark) ? text.substr(kUtf8Mark.size()) : text;
    if (body.starts_with("WEBVTT")) {
        return script_format::kWebVtt;
    }
    if (body.starts_with("File type = \"ooTextFile\"")) {
        return script_format::kTextGrid;
    }
    size_t at = 0;
    for (size_t i = 0; i < kFewLines && at < body.size(); ++i) {
        const script_line line = ReadScriptLine(body, at, body.size());
        if (ReadTimes(line.In(body))) {
            return script_format::kSubRip;
        }
        if (IsSceneHeading(line.In(body), table)) {
            return HasCue(body.substr(line.next), table) ? script_format::kFountain
                                                         : script_format::kPlain;
        }
        at = line.next;
    }
    return script_format::kPlain;
}

void LayOutFountain(std::string_view text, const ScriptTable& table, script_layout& out) {
    FountainLayout(text, table, out).Run();
}

void LayOutSubtitles(std::string_view text, const ScriptTable& table, script_layout& out) {
    for (size_t at = 0; at < text.size();) {
        const script_line line = ReadScriptLine(text, at, text.size());
        const std::optional<time_range> times = ReadTimes(line.In(text));
        at = line.next;
        if (!times) {
            continue;
        }
        size_t end = at;
        while (end < text.size()) {
            const script_line next = ReadScriptLine(text, end, text.size());
            if (next.IsEmpty()) {
                break;
            }
            end = next.next;
        }
        const size_t first = out.regions.size();
        LayOutPlain(text, at, end, table, out);
        for (size_t i = first; i < out.regions.size(); ++i) {
            out.regions[i].startMs = times->startMs;
            out.regions[i].endMs = times->endMs;
            out.regions[i].hasReferences = true;
        }
        at = end;
    }
}

} // namespace tessarin
