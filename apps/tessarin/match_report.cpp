#include "apps/tessarin/match_report.h"

#include <algorithm>
#include <cstdio>

#include "apps/tessarin/readers/spoken_text.h"

namespace {

std::string Seconds(int64_t ms) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.1f s", static_cast<double>(ms) / 1000.0);
    return text;
}

const char* VerdictName(int32_t verdict) {
    switch (verdict) {
    case tessarin::kMatchGood:
        return "good";
    case tessarin::kMatchDoubtful:
        return "doubtful";
    case tessarin::kMatchPoor:
        return "poor";
    default:
        return "unknown";
    }
}

std::string CountOf(size_t unsaid, size_t words) {
    return std::to_string(unsaid) + " of " + std::to_string(words) +
           (words == 1 ? " word" : " words") + (unsaid == 1 ? " was" : " were") + " not heard";
}

/// Why a match is not good, or nothing. A good one may have a moment of other speech that is too
/// short to count.
std::string ReasonOf(const timed_result& result) {
    if (result.match->verdict == "good") {
        return "";
    }
    std::string reason;
    const auto add = [&](const std::string& part) {
        reason += (reason.empty() ? "" : "; ") + part;
    };
    if (!result.unsaid.empty()) {
        add(CountOf(result.unsaid.size(), result.words.size() + result.unsaid.size()));
    }
    if (result.match->unscriptedMs > 0) {
        add(Seconds(result.match->unscriptedMs) + " of other speech");
    }
    if (result.match->verdict == "poor") {
        add("this is hardly the text of the recording");
    } else if (reason.empty() && result.match->verdict == "doubtful") {
        add("the sounds fit the text badly");
    }
    return reason;
}

/// The place of words that were not said: the time at which the last word before them ended.
int32_t TimeBefore(const timed_result& result, int32_t textOffset) {
    int32_t ms = 0;
    for (const timed_span& word : result.words) {
        if (word.textOffset < textOffset) {
            ms = std::max(ms, word.endMs);
        }
    }
    return ms;
}

/// The first words of the first gap, as they are in the text.
std::string FirstUnsaid(const timed_result& result) {
    constexpr size_t kMostWords = 3;
    std::string text;
    for (size_t i = 0; i < std::min(result.unsaid.size(), kMostWords); ++i) {
        const timed_span& each = result.unsaid[i];
        const bool isSplit = i > 0 && std::ranges::any_of(result.words, [&](const auto& word) {
                                 return word.textOffset > result.unsaid[i - 1].textOffset &&
                                        word.textOffset < each.textOffset;
                             });
        if (isSplit) {
            break;
        }
        text += (i > 0 ? " " : "") + each.text;
    }
    return text;
}

timed_span UnsaidSpan(const tessarin::match_word& word, const SpokenText& text) {
    const auto start = static_cast<int32_t>(word.text_start);
    const auto length = static_cast<int32_t>(word.text_end - word.text_start);
    const SpokenText::place place = text.FindOriginal(start, length);
    timed_span span{tessarin::kWordMarker, text.GetUtf8(start, length), 0, 0, place.offset,
                    place.length};
    span.confidence = word.confidence;
    span.margin = word.margin;
    return span;
}

void AddUnscripted(const match_report& report, const SpokenText& text, int32_t fromMs,
                   timed_result* out) {
    for (const tessarin::match_stretch& each : report.unscripted) {
        const int32_t offset = text.FindOriginal(static_cast<int32_t>(each.text_start), 0).offset;
        out->events.push_back(
            {kUnscriptedSpan, "", each.start_ms + fromMs, each.end_ms + fromMs, offset, 0});
    }
    std::ranges::stable_sort(out->events, {}, &timed_span::startMs);
}

} // namespace

match_report ReadMatch(tessarin::IMatchAligner& aligner) {
    match_report report;
    uint32_t count = 0;
    const tessarin::match_word* const words = aligner.GetWords(&count);
    report.words.assign(words, words + count);
    const tessarin::match_stretch* const stretches = aligner.GetUnscripted(&count);
    report.unscripted.assign(stretches, stretches + count);
    const float* const phonemes = aligner.GetPhonemeConfidences(&count);
    report.phonemes.assign(phonemes, phonemes + count);
    aligner.GetSummary(&report.summary);
    report.isKnown = !report.words.empty();
    return report;
}

void AddMatch(const match_report& report, const SpokenText& text, int32_t fromMs,
              timed_result* out) {
    if (!report.isKnown) {
        return;
    }
    size_t said = 0;
    for (const tessarin::match_word& word : report.words) {
        if (word.is_said == 0) {
            out->unsaid.push_back(UnsaidSpan(word, text));
        } else if (said < out->words.size()) {
            out->words[said].confidence = word.confidence;
            out->words[said].margin = word.margin;
            ++said;
        }
    }
    for (size_t i = 0; i < std::min(out->phonemes.size(), report.phonemes.size()); ++i) {
        out->phonemes[i].confidence = report.phonemes[i];
    }
    if (!report.unscripted.empty()) {
        AddUnscripted(report, text, fromMs, out);
    }
    const tessarin::match_summary& summary = report.summary;
    out->match = timed_match{.verdict = VerdictName(summary.verdict),
                             .reason = "",
                             .score = summary.score,
                             .isLoose = summary.is_loose != 0,
                             .unscriptedMs = summary.unscripted_ms,
                             .margin = summary.margin,
                             .fit = summary.fit,
                             .duration = summary.duration,
                             .spread = summary.spread};
    out->match->reason = ReasonOf(*out);
}

std::string DescribeMismatch(const timed_result& result) {
    if (!result.match || result.match->reason.empty()) {
        return "";
    }
    std::string line;
    const auto add = [&](const std::string& part) { line += (line.empty() ? "" : "; ") + part; };
    if (!result.unsaid.empty()) {
        const timed_span& first = result.unsaid.front();
        add(CountOf(result.unsaid.size(), result.words.size() + result.unsaid.size()) +
            " (from \"" + FirstUnsaid(result) + "\" at " +
            Seconds(TimeBefore(result, first.textOffset)) + ")");
    }
    if (result.match->unscriptedMs > 0) {
        const auto first = std::ranges::find(result.events, kUnscriptedSpan, &timed_span::type);
        add(Seconds(result.match->unscriptedMs) + " of other speech at " + Seconds(first->startMs));
    }
    if (result.match->verdict == "poor") {
        add("this is hardly the text of the recording");
    } else if (line.empty()) {
        add(result.match->reason);
    }
    return result.audio + ": " + line;
}
