#include "text/script/script_reader.h"

#include <algorithm>

namespace tessarin {

namespace {

/// A mark that divides the text at a time, as transcribers know it.
void AddCut(int32_t ms, uint32_t offset, ScriptReading& out) {
    out.AddText(" <cut " + std::to_string(ms) + ">", {offset, 0});
}

/// Divides the text before a subtitle: in the middle of a pause, or, where it is long, on both
/// sides of it, as others may speak between. Times of subtitles are not exact, so they keep a
/// distance.
void AddCuts(int32_t endMs, const script_region& next, ScriptReading& out) {
    constexpr int32_t kShortestPauseMs = 300;
    constexpr int32_t kLongPauseMs = 1000;
    constexpr int32_t kLongestDistanceMs = 500;
    const int32_t pauseMs = next.startMs - endMs;
    if (pauseMs >= kLongPauseMs) {
        const int32_t distanceMs = std::min(pauseMs / 4, kLongestDistanceMs);
        AddCut(endMs + distanceMs, next.start, out);
        AddCut(next.startMs - distanceMs, next.start, out);
    } else if (pauseMs >= kShortestPauseMs) {
        AddCut(endMs + pauseMs / 2, next.start, out);
    }
}

} // namespace

ScriptReading ReadScript(std::string_view text, const ScriptTable& table,
                         const script_options& options, const word_lookup& isKnown) {
    const script_layout layout = LayOutScript(text, options.format, table);
    const std::string wanted = SpeakerName(options.speaker);
    ScriptReading out;
    int32_t lastEndMs = 0;
    for (const script_region& region : layout.regions) {
        const std::string& speaker = layout.speakers[region.speaker];
        if (!wanted.empty() && speaker != wanted) {
            continue;
        }
        const script_place place{region.start, region.end - region.start};
        if (!region.isSpoken) {
            out.AddEvent({region.event, place});
            continue;
        }
        if (region.startMs >= 0) {
            if (options.hasCueTimes) {
                AddCuts(lastEndMs, region, out);
            }
            out.AddCue({place, region.startMs, region.endMs});
        }
        const ScriptTokens tokens = region.hasReferences
                                        ? ScriptTokens::OfReferences(text, region.start, region.end)
                                        : ScriptTokens(text, region.start, region.end);
        InlineReader(tokens, table, isKnown, out).Read();
        out.EndRegion();
        lastEndMs = std::max(lastEndMs, region.endMs);
    }
    return out;
}

} // namespace tessarin
