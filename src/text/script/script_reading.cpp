#include "text/script/script_reading.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tessarin {

namespace {

/// A remark without letters, which a transcriber takes for a tag that says nothing.
constexpr std::string_view kEventMark = "[]";

/// A transcriber drops apostrophes there; the others may come from a user's table.
bool EndsAttribute(char letter) {
    return letter == '\'' || letter == '"' || letter == '<' || letter == '>';
}

/// The written word of a tag that says it in other words.
constexpr std::string_view kStandIn = "_";

} // namespace

std::string SaidAsOneWord(std::string_view words) {
    std::string text = "<pron say=\"";
    std::ranges::remove_copy_if(words, std::back_inserter(text), EndsAttribute);
    return text.append("\"> ").append(kStandIn);
}

ScriptReading::source ScriptReading::FindSource(size_t offset, size_t length) const {
    const size_t end = offset + std::max<size_t>(length, 1);
    auto at = std::ranges::upper_bound(parts, offset, {}, &part::end);
    if (at == parts.end() || at->start >= end) {
        const uint32_t edge =
            at != parts.begin() ? std::prev(at)->place.offset + std::prev(at)->place.length : 0;
        return {{edge, 0}, nullptr, nullptr};
    }
    source found{at->place, at->word != kNone ? &words[at->word] : nullptr,
                 at->event != kNone ? &events[at->event] : nullptr};
    for (++at; at != parts.end() && at->start < end; ++at) {
        const uint32_t last = at->place.offset + at->place.length;
        found.place.length = std::max(found.place.length, last - found.place.offset);
    }
    return found;
}

void ScriptReading::AddWord(script_word word) {
    if (!spoken.empty()) {
        spoken += ' ';
    }
    const part made{0, 0, word.place, static_cast<uint32_t>(words.size()), kNone};
    if (word.spoken.find(' ') == std::string::npos) {
        AddPart(word.spoken, made);
    } else {
        const std::string text = SaidAsOneWord(word.spoken);
        spoken.append(text, 0, text.size() - kStandIn.size());
        AddPart(kStandIn, made);
        spoken += ' ';
    }
    words.push_back(std::move(word));
}

void ScriptReading::AddText(std::string_view text, script_place place) {
    AddPart(text, {0, 0, place, kNone, kNone});
}

void ScriptReading::AddEvent(script_event event) {
    if (!spoken.empty()) {
        spoken += ' ';
    }
    AddPart(kEventMark, {0, 0, event.place, kNone, static_cast<uint32_t>(events.size())});
    events.push_back(event);
}

void ScriptReading::EndRegion() {
    if (!spoken.empty()) {
        spoken += '\n';
    }
}

void ScriptReading::AddPart(std::string_view text, part made) {
    made.start = static_cast<uint32_t>(spoken.size());
    spoken += text;
    made.end = static_cast<uint32_t>(spoken.size());
    parts.push_back(made);
}

} // namespace tessarin
