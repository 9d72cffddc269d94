#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "apps/tessarin/writers/output_formats.h"
#include "apps/tessarin/writers/phoneme_symbols.h"

namespace {

struct row {
    int32_t startMs;
    int32_t endMs;
    const char* type;
    std::string text;
    std::string details; // score, text offset and text length
    float confidence = -1.0f;
    bool isSaid = true;
};

std::string ConfidenceCell(float confidence) {
    char text[32] = "";
    if (confidence >= 0.0f) {
        std::snprintf(text, sizeof(text), "%.3f", static_cast<double>(confidence));
    }
    return text;
}

/// A cell holds no tabs and no line ends.
std::string Cell(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
    return text;
}

void AddSpans(const std::vector<timed_span>& spans, std::vector<row>* rows) {
    for (const timed_span& span : spans) {
        rows->push_back(
            {span.startMs, span.endMs, SpanTypeName(span.type), Cell(span.text),
             "\t" + std::to_string(span.textOffset) + "\t" + std::to_string(span.textLength),
             span.confidence});
    }
}

/// Words without times stand after what is before them in the text.
void AddUnsaid(const timed_result& result, std::vector<row>* rows) {
    for (const timed_span& each : result.unsaid) {
        int32_t ms = 0;
        for (const timed_span& word : result.words) {
            ms = word.textOffset < each.textOffset ? std::max(ms, word.startMs) : ms;
        }
        rows->push_back(
            {ms, ms, "unsaid", Cell(each.text),
             "\t" + std::to_string(each.textOffset) + "\t" + std::to_string(each.textLength),
             each.confidence, false});
    }
}

} // namespace

std::string WriteTsv(const timed_result& result, uint32_t alphabet) {
    std::vector<row> rows;
    AddSpans(result.words, &rows);
    AddSpans(result.events, &rows);
    for (const timed_phoneme& phoneme : result.phonemes) {
        char score[32];
        std::snprintf(score, sizeof(score), "%.2f\t\t", static_cast<double>(phoneme.score));
        rows.push_back({phoneme.startMs, phoneme.endMs, "phoneme",
                        SymbolOf(phoneme.label, alphabet), score, phoneme.confidence});
    }
    AddUnsaid(result, &rows);
    // A span stands before the phoneme at which it starts.
    std::stable_sort(rows.begin(), rows.end(),
                     [](const row& a, const row& b) { return a.startMs < b.startMs; });
    std::string table = "start_ms\tend_ms\ttype\ttext\tscore\ttext_offset\ttext_length";
    table += result.match ? "\tconfidence\n" : "\n";
    for (const row& r : rows) {
        const std::string times =
            r.isSaid ? std::to_string(r.startMs) + "\t" + std::to_string(r.endMs) : "\t";
        table += times + "\t" + r.type + "\t" + r.text + "\t" + r.details +
                 (result.match ? "\t" + ConfidenceCell(r.confidence) : "") + "\n";
    }
    return table;
}
