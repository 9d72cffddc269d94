#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>

#include "apps/tessarin/writers/caption_breaks.h"
#include "apps/tessarin/writers/markup.h"
#include "apps/tessarin/writers/output_formats.h"

namespace {

using marks_by_place = std::map<int64_t, const timed_span*>;

bool IsDash(const std::string& mark) {
    return mark == "-" || mark == "\xE2\x80\x93" || mark == "\xE2\x80\x94";
}

/// Adds the marks right after a word that ends at `place`, or a dash between blanks.
void AddPunctuation(const marks_by_place& marks, int64_t place, caption_word* word) {
    auto mark = marks.find(place);
    for (; mark != marks.end(); mark = marks.find(place)) {
        word->punctuation += mark->second->text;
        place += mark->second->textLength;
    }
    const auto apart = marks.find(place + 1);
    if (apart != marks.end() && IsDash(apart->second->text)) {
        word->punctuation += " " + apart->second->text;
    }
}

/// Timings from elsewhere often have the marks within their words.
caption_word SplitWord(const timed_span& word) {
    const size_t letters = word.text.find_last_not_of(".,;:!?\")]") + 1;
    return {word.startMs, std::max(word.endMs, word.startMs), word.text.substr(0, letters),
            word.text.substr(letters)};
}

std::vector<caption_word> ReadWords(const timed_result& result) {
    marks_by_place marks;
    for (const timed_span& event : result.events) {
        if (event.type == tessarin::kPunctuationMarker && event.textLength > 0) {
            marks.emplace(event.textOffset, &event);
        }
    }
    std::vector<caption_word> words;
    for (const timed_span& word : result.words) {
        words.push_back(SplitWord(word));
        if (word.joint.empty()) {
            AddPunctuation(marks, int64_t{word.textOffset} + word.textLength, &words.back());
        } else {
            words.back().punctuation = word.joint;
            words.back().isHyphenated = true;
        }
    }
    return words;
}

struct caption_time {
    int32_t startMs;
    int32_t endMs;
};

/// A short caption stays until it can have been read, if nothing follows it before.
std::vector<caption_time> TimesOf(const std::vector<caption>& captions, int64_t durationMs) {
    std::vector<caption_time> times;
    for (size_t i = 0; i < captions.size(); ++i) {
        const int32_t startMs = captions[i].front().startMs;
        const int32_t endMs = captions[i].back().endMs;
        const int64_t roomMs =
            i + 1 < captions.size() ? captions[i + 1].front().startMs : durationMs;
        constexpr int64_t kLastMs = std::numeric_limits<int32_t>::max();
        const int64_t readMs = std::min({int64_t{startMs} + kShortestCaptionMs, roomMs, kLastMs});
        times.push_back({startMs, static_cast<int32_t>(std::max<int64_t>(endMs, readMs))});
    }
    return times;
}

std::string TimeOf(int32_t ms, char separator) {
    char text[32];
    std::snprintf(text, sizeof(text), "%02d:%02d:%02d%c%03d", ms / 3600000, ms / 60000 % 60,
                  ms / 1000 % 60, separator, ms % 1000);
    return text;
}

/// A cue ends with an empty line, so a word has no line ends.
std::string OnOneLine(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return text;
}

std::string TextOf(const caption_word& word) {
    return OnOneLine(word.word + word.punctuation);
}

std::string BlankAfter(const caption_word& word, const caption& line) {
    return &word == &line.back() || word.isHyphenated ? "" : " ";
}

} // namespace

std::string WriteWebVtt(const timed_result& result) {
    const std::vector<caption_word> words = ReadWords(result);
    const std::vector<caption> captions = BreakIntoCaptions(words, result.durationMs);
    const std::vector<caption_time> times = TimesOf(captions, result.durationMs);
    std::string text = "WEBVTT\n";
    for (size_t i = 0; i < captions.size(); ++i) {
        text += "\n" + TimeOf(times[i].startMs, '.') + " --> " + TimeOf(times[i].endMs, '.') + "\n";
        for (const caption_word& word : captions[i]) {
            text += &word == &captions[i].front() ? "" : "<" + TimeOf(word.startMs, '.') + ">";
            text += EscapeMarkup(TextOf(word)) + BlankAfter(word, captions[i]);
        }
        text += "\n";
    }
    return text;
}

std::string WriteSrt(const timed_result& result) {
    const std::vector<caption_word> words = ReadWords(result);
    const std::vector<caption> captions = BreakIntoCaptions(words, result.durationMs);
    const std::vector<caption_time> times = TimesOf(captions, result.durationMs);
    std::string text;
    for (size_t i = 0; i < captions.size(); ++i) {
        text += (i > 0 ? "\n" : "") + std::to_string(i + 1) + "\n" + TimeOf(times[i].startMs, ',') +
                " --> " + TimeOf(times[i].endMs, ',') + "\n";
        for (const caption_word& word : captions[i]) {
            text += TextOf(word) + BlankAfter(word, captions[i]);
        }
        text += "\n";
    }
    return text;
}
