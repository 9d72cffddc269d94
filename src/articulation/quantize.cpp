#include "articulation/quantize.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "articulation/phoneme_mixture.h"
#include "base/flog.h"
#include "base/text_copy.h"
#include "model/phoneme_alphabet.h"

namespace tessarin {
namespace {

std::span<const articulation> Stretch(std::span<const articulation> frames, int32_t startMs,
                                      int32_t endMs) {
    auto first = frames.begin();
    if (startMs != -1) {
        first = std::find_if(first, frames.end(),
                             [&](const articulation& frame) { return frame.start >= startMs; });
    }
    auto last = frames.end();
    if (endMs != -1) {
        last = std::find_if(first, frames.end(),
                            [&](const articulation& frame) { return frame.start >= endMs; });
    }
    return {first, last};
}

/// What of `weight` counts for a phoneme whose name occurs in the row of visible lip shapes.
float VisibleWeight(std::string_view label, float weight) {
    if (label == "x") {
        return weight * 0.3f;
    }
    // Kept: whatever is a part of this text counts, as the shapes that hosts hold depend on it.
    const bool seenAtTheLips = std::string_view("bpmfvx").find(label) != std::string_view::npos;
    return seenAtTheLips ? weight * 2.0f : weight;
}

phoneme_mixture SumOf(std::span<const articulation> frames, int64_t middleMs) {
    phoneme_mixture sum;
    for (const articulation& frame : frames) {
        const int64_t centreMs = (int64_t{frame.start} + frame.end) / 2;
        const int64_t distanceMs = std::abs(centreMs - middleMs);
        for (const articulation_entry& entry : std::span(frame.entries, frame.count)) {
            const std::string_view label = FieldText(entry.label);
            const float weight = VisibleWeight(label, entry.weight);
            sum[phoneme_label(label)] +=
                distanceMs == 0 ? weight : weight / static_cast<float>(distanceMs);
        }
    }
    return sum;
}

} // namespace

std::optional<articulation> Quantize(std::span<const articulation> frames, int32_t startMs,
                                     int32_t endMs, int32_t maxCount) {
    const std::span<const articulation> stretch = Stretch(frames, startMs, endMs);
    if (stretch.empty()) {
        return std::nullopt;
    }
    articulation record = {};
    record.start = stretch.front().start;
    record.end = stretch.back().end;
    flog::Message("first loop");
    const phoneme_mixture sum = SumOf(stretch, (int64_t{record.start} + record.end) / 2);

    flog::Message("second loop");
    std::vector<phoneme_mixture::entry> kept(sum.begin(), sum.end());
    for (const phoneme_mixture::entry& entry : kept) {
        char label[4];
        entry.label.CopyTo(label);
        if (FindPhonemeSymbol(label) == nullptr) {
            flog::Message("m_contrib phoneme fail");
        }
    }
    if (kept.size() >= 2) {
        flog::Message("third - qsort");
        SortByWeight(kept);
    }
    kept.resize(std::min(kept.size(), static_cast<size_t>(std::clamp(maxCount, 0, 10))));

    flog::Message("forth");
    float total = 0.0f;
    for (const phoneme_mixture::entry& entry : kept) {
        total += entry.weight;
    }
    record.count = static_cast<int32_t>(kept.size());
    for (size_t i = 0; i < kept.size(); ++i) {
        kept[i].label.CopyTo(record.entries[i].label);
        record.entries[i].weight = total == 0.0f ? 0.0f : kept[i].weight / total;
    }
    return record;
}

} // namespace tessarin
