#include <algorithm>
#include <cstdio>

#include "apps/tessarin/writers/output_formats.h"
#include "apps/tessarin/writers/phoneme_symbols.h"

namespace {

struct interval {
    int32_t startMs;
    int32_t endMs;
    std::string text;
};

std::string Seconds(int64_t ms) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.3f", static_cast<double>(ms) / 1000.0);
    return text;
}

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c == '"' ? "\"\"" : std::string(1, c == '\n' || c == '\r' ? ' ' : c);
    }
    return quoted + "\"";
}

/// The intervals in time order with empty ones in their gaps, from 0 to `endMs`; neighbours that
/// are empty are one, and what would last no time is left out.
std::vector<interval> FillGaps(std::vector<interval> intervals, int32_t endMs) {
    std::ranges::stable_sort(intervals, {}, &interval::startMs);
    std::vector<interval> filled;
    int32_t reachedMs = 0;
    const auto add = [&](int32_t untilMs, const std::string& text) {
        if (untilMs <= reachedMs) {
            return;
        }
        if (text.empty() && !filled.empty() && filled.back().text.empty()) {
            filled.back().endMs = untilMs;
        } else {
            filled.push_back({reachedMs, untilMs, text});
        }
        reachedMs = untilMs;
    };
    for (const interval& each : intervals) {
        add(std::min(each.startMs, endMs), "");
        add(std::min(each.endMs, endMs), each.text);
    }
    add(endMs, "");
    return filled;
}

std::string Tier(int number, const char* name, const std::vector<interval>& intervals,
                 int32_t endMs) {
    std::string tier = "    item [" + std::to_string(number) + "]:\n";
    tier += "        class = \"IntervalTier\"\n        name = \"" + std::string(name) + "\"\n";
    tier += "        xmin = 0\n        xmax = " + Seconds(endMs) + "\n";
    tier += "        intervals: size = " + std::to_string(intervals.size()) + "\n";
    for (size_t i = 0; i < intervals.size(); ++i) {
        tier += "        intervals [" + std::to_string(i + 1) +
                "]:\n            xmin = " + Seconds(intervals[i].startMs) +
                "\n            xmax = " + Seconds(intervals[i].endMs) +
                "\n            text = " + Quoted(intervals[i].text) + "\n";
    }
    return tier;
}

} // namespace

std::string WriteTextGrid(const timed_result& result, uint32_t alphabet) {
    std::vector<interval> words;
    std::vector<interval> phones;
    std::vector<interval> confidences;
    auto endMs = static_cast<int32_t>(result.durationMs);
    for (const timed_span& word : result.words) {
        words.push_back({word.startMs, word.endMs, word.text});
        if (word.confidence >= 0.0f) {
            char text[32];
            std::snprintf(text, sizeof(text), "%.2f", static_cast<double>(word.confidence));
            confidences.push_back({word.startMs, word.endMs, text});
        }
        endMs = std::max(endMs, word.endMs);
    }
    for (const timed_phoneme& phoneme : result.phonemes) {
        phones.push_back({phoneme.startMs, phoneme.endMs,
                          phoneme.label == "x" ? "" : SymbolOf(phoneme.label, alphabet)});
        endMs = std::max(endMs, phoneme.endMs);
    }
    endMs = std::max(endMs, 1); // a tier without length cannot be read
    return "File type = \"ooTextFile\"\nObject class = \"TextGrid\"\n\nxmin = 0\nxmax = " +
           Seconds(endMs) + "\ntiers? <exists>\nsize = " + (confidences.empty() ? "2" : "3") +
           "\nitem []:\n" + Tier(1, "words", FillGaps(words, endMs), endMs) +
           Tier(2, "phones", FillGaps(phones, endMs), endMs) +
           (confidences.empty() ? "" : Tier(3, "confidence", FillGaps(confidences, endMs), endMs));
}
