#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "apps/tessarin/writers/output_formats.h"

namespace {

struct row {
    int32_t startMs;
    int32_t endMs;
    const char* type;
    std::string text;
    std::string details; // score, text offset and text length
};

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
             "\t" + std::to_string(span.textOffset) + "\t" + std::to_string(span.textLength)});
    }
}

} // namespace

std::string WriteTsv(const timed_result& result) {
    std::vector<row> rows;
    AddSpans(result.words, &rows);
    AddSpans(result.events, &rows);
    for (const timed_phoneme& phoneme : result.phonemes) {
        char score[32];
        std::snprintf(score, sizeof(score), "%.2f\t\t", static_cast<double>(phoneme.score));
        rows.push_back({phoneme.startMs, phoneme.endMs, "phoneme", phoneme.label, score});
    }
    // A span stands before the phoneme at which it starts.
    std::stable_sort(rows.begin(), rows.end(),
                     [](const row& a, const row& b) { return a.startMs < b.startMs; });
    std::string table = "start_ms\tend_ms\ttype\ttext\tscore\ttext_offset\ttext_length\n";
    for (const row& r : rows) {
        table += std::to_string(r.startMs) + "\t" + std::to_string(r.endMs) + "\t" + r.type + "\t" +
                 r.text + "\t" + r.details + "\n";
    }
    return table;
}
