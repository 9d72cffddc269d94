#include <algorithm>
#include <cstdio>

#include "apps/tessarin/writers/markup.h"
#include "apps/tessarin/writers/output_formats.h"

namespace {

constexpr size_t kLongestCaption = 42; ///< characters of a line that is read at a glance
constexpr int32_t kPauseMs = 600;      ///< begins a new caption
constexpr int32_t kLongestCaptionMs = 6000;

struct caption_word {
    int32_t startMs;
    int32_t endMs;
    std::string text; ///< with the punctuation after it
    bool endsSentence = false;
};

using caption = std::vector<caption_word>;

bool EndsSentence(const std::string& punctuation) {
    return punctuation.find_first_of(".!?") != std::string::npos;
}

/// The words, each with the punctuation that stands right after it in the text.
std::vector<caption_word> ReadWords(const timed_result& result) {
    std::vector<caption_word> words;
    for (const timed_span& word : result.words) {
        caption_word entry{word.startMs, std::max(word.endMs, word.startMs), word.text};
        int32_t next = word.textOffset + word.textLength;
        for (const timed_span& event : result.events) {
            const bool isPunctuation = event.type == tessarin::kPunctuationMarker;
            if (isPunctuation && event.textLength > 0 && event.textOffset == next) {
                entry.text += event.text;
                entry.endsSentence = entry.endsSentence || EndsSentence(event.text);
                next += event.textLength;
            }
        }
        words.push_back(std::move(entry));
    }
    return words;
}

size_t LengthOf(const caption& words) {
    size_t length = 0;
    for (const caption_word& word : words) {
        length += word.text.size() + 1;
    }
    return length;
}

std::vector<caption> MakeCaptions(const timed_result& result) {
    std::vector<caption> captions;
    for (caption_word& word : ReadWords(result)) {
        const bool goesOn = !captions.empty() && !captions.back().back().endsSentence &&
                            word.startMs - captions.back().back().endMs < kPauseMs &&
                            word.endMs - captions.back().front().startMs <= kLongestCaptionMs &&
                            LengthOf(captions.back()) + word.text.size() <= kLongestCaption;
        if (!goesOn) {
            captions.emplace_back();
        }
        captions.back().push_back(std::move(word));
    }
    return captions;
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

} // namespace

std::string WriteWebVtt(const timed_result& result) {
    std::string text = "WEBVTT\n";
    for (const caption& words : MakeCaptions(result)) {
        text += "\n" + TimeOf(words.front().startMs, '.') + " --> " +
                TimeOf(words.back().endMs, '.') + "\n";
        for (const caption_word& word : words) {
            text += &word == &words.front() ? "" : " <" + TimeOf(word.startMs, '.') + ">";
            text += EscapeMarkup(OnOneLine(word.text));
        }
        text += "\n";
    }
    return text;
}

std::string WriteSrt(const timed_result& result) {
    std::string text;
    int number = 0;
    for (const caption& words : MakeCaptions(result)) {
        text += (number > 0 ? "\n" : "") + std::to_string(number + 1) + "\n" +
                TimeOf(words.front().startMs, ',') + " --> " + TimeOf(words.back().endMs, ',') +
                "\n";
        ++number;
        for (const caption_word& word : words) {
            text += (&word == &words.front() ? "" : " ") + OnOneLine(word.text);
        }
        text += "\n";
    }
    return text;
}
