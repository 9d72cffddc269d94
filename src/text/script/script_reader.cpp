#include "text/script/script_reader.h"

#include <algorithm>

namespace tessarin {

namespace {

/// A mark that divides the text at a time, as transcribers know it.
void AddCut(int32_t ms, uint32_t offset, ScriptReading& out) {
    out.AddText(" <cut " + std::to_string(ms) + ">", {offset, 0});
}

/// The pause between two subtitles divides them where it is wide enough to be one.
bool IsWidePause(const script_region& before, const script_region& after) {
    constexpr int32_t kWidePauseMs = 300;
    return before.endMs >= 0 && after.startMs - before.endMs >= kWidePauseMs;
}

} // namespace

ScriptReading ReadScript(std::string_view text, const ScriptTable& table,
                         const script_options& options, const word_lookup& isKnown) {
    const script_layout layout = LayOutScript(text, options.format, table);
    const std::string wanted = SpeakerName(options.speaker);
    ScriptReading out;
    const script_region* last = nullptr;
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
            if (options.hasCueTimes && last != nullptr && IsWidePause(*last, region)) {
                AddCut(last->endMs + (region.startMs - last->endMs) / 2, region.start, out);
            }
            out.AddCue({place, region.startMs, region.endMs});
        }
        const ScriptTokens tokens(text, region.start, region.end);
        InlineReader(tokens, table, isKnown, out).Read();
        out.EndRegion();
        last = &region;
    }
    return out;
}

} // namespace tessarin
