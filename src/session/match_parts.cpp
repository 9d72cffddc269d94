#include "session/match_parts.h"

#include <algorithm>
#include <span>

#include "session/search_run.h"
#include "tessarin/match_aligner.h"

namespace tessarin {

namespace {

tessarin_span SpanAt(int32_t kind, int32_t startMs, int32_t endMs, SpanText::place place,
                     std::string spelling, tessarin_result& result) {
    return {kind,         startMs,      endMs,
            place.offset, place.length, Keep(std::move(spelling), result.texts)};
}

void AddWords(std::span<const match_word> words, const SpanText& text, tessarin_result& result) {
    uint32_t said = 0;
    for (const match_word& word : words) {
        const bool isSaid = word.is_said != 0;
        const auto index = isSaid ? said++ : static_cast<uint32_t>(result.unsaid.size());
        result.wordMatches.push_back({isSaid ? 1 : 0, index, word.confidence, word.margin});
        if (!isSaid) {
            const SpanText::place place =
                text.FindOriginal(static_cast<int32_t>(word.text_start),
                                  static_cast<int32_t>(word.text_end - word.text_start));
            result.unsaid.push_back(
                SpanAt(TESSARIN_WORD, -1, -1, place, text.GetOriginal(place), result));
        }
    }
}

void AddUnscripted(std::span<const match_stretch> stretches, int32_t fromMs, const SpanText& text,
                   tessarin_result& result) {
    for (const match_stretch& each : stretches) {
        const SpanText::place place = text.FindOriginal(static_cast<int32_t>(each.text_start), 0);
        result.events.push_back(SpanAt(TESSARIN_UNSCRIPTED, ShiftTime(each.start_ms, fromMs),
                                       ShiftTime(each.end_ms, fromMs), {place.offset, 0}, "",
                                       result));
    }
    if (!stretches.empty()) {
        std::ranges::stable_sort(result.events, {}, &tessarin_span::start_ms);
    }
}

} // namespace

void AddMatch(IMatchAligner& aligner, int32_t fromMs, const SpanText& text,
              tessarin_result& result) {
    uint32_t count = 0;
    const match_word* const words = aligner.GetWords(&count);
    if (count == 0) {
        return;
    }
    AddWords({words, count}, text, result);
    const match_stretch* const stretches = aligner.GetUnscripted(&count);
    AddUnscripted({stretches, count}, fromMs, text, result);
    const float* const confidences = aligner.GetPhonemeConfidences(&count);
    result.phonemeConfidences.assign(confidences, confidences + count);
    match_summary summary;
    aligner.GetSummary(&summary);
    result.match = {summary.verdict, summary.score, summary.is_loose, summary.unscripted_ms,
                    summary.margin,  summary.fit,   summary.duration, summary.spread};
}

} // namespace tessarin
