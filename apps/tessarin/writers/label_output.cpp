#include <algorithm>
#include <cstdio>

#include "apps/tessarin/writers/output_formats.h"
#include "apps/tessarin/writers/phoneme_symbols.h"

namespace {

/// A label ends with its line, and its columns with tabs.
std::string LabelLine(int32_t startMs, int32_t endMs, std::string label) {
    std::ranges::replace_if(
        label, [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
    char times[64];
    std::snprintf(times, sizeof(times), "%.3f\t%.3f\t", static_cast<double>(startMs) / 1000.0,
                  static_cast<double>(endMs) / 1000.0);
    return times + label + "\n";
}

} // namespace

std::string WriteWordLabels(const timed_result& result) {
    std::string lines;
    for (const timed_span& word : result.words) {
        lines += LabelLine(word.startMs, word.endMs, word.text);
    }
    return lines;
}

std::string WritePhonemeLabels(const timed_result& result, uint32_t alphabet) {
    std::string lines;
    for (const timed_phoneme& phoneme : result.phonemes) {
        if (phoneme.label != "x") {
            lines += LabelLine(phoneme.startMs, phoneme.endMs, SymbolOf(phoneme.label, alphabet));
        }
    }
    return lines;
}
