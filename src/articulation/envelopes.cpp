#include "articulation/envelopes.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <utility>

#include "articulation/common_key_times.h"
#include "articulation/phoneme_label.h"
#include "base/text_copy.h"
#include "base/trunc_sat.h"
#include "results/saturated.h"

namespace tessarin {
namespace {

/// One pass over the frames, with the envelopes that are open at the frame it has come to.
class envelope_builder {
public:
    explicit envelope_builder(const envelope_settings& wanted)
        : settings(wanted), frameLengthMs(TruncSat<int32_t>(wanted.frame_rate)) {}

    error_code AddFrame(const articulation& frame);
    void FinishAll();
    std::vector<phn_env_marker> Take();

private:
    void CloseInside(phn_env_marker& envelope, int32_t endMs);
    void CloseAtTheEnd(phn_env_marker& envelope);
    void Keep(phoneme_label label, phn_env_marker&& envelope);

    envelope_settings settings;
    /// Length of the frame before; ahead of the first one the frame rate stands in for it.
    int32_t frameLengthMs;
    int32_t previousEndMs = 0;
    std::map<phoneme_label, phn_env_marker> open;
    std::vector<phn_env_marker> finished;
    envelopes_by_label finishedByLabel;
};

error_code envelope_builder::AddFrame(const articulation& frame) {
    for (const articulation_entry& entry : std::span(frame.entries, frame.count)) {
        const phoneme_label label(FieldText(entry.label));
        const auto [place, isNew] = open.try_emplace(label, frame.start, frame.end, label.Text());
        phn_env_marker& envelope = place->second;
        if (!isNew && envelope.points.empty()) {
            return kBrokenPath;
        }
        envelope.points.push_back({frame.start, frame.end, entry.weight});
        envelope.end = frame.end;
    }
    for (auto labelled = open.begin(); labelled != open.end();) {
        auto& [label, envelope] = *labelled;
        if (envelope.end == frame.end) {
            ++labelled;
            continue;
        }
        CloseInside(envelope, frame.end);
        Keep(label, std::move(envelope));
        labelled = open.erase(labelled);
    }
    previousEndMs = frame.end;
    frameLengthMs = Saturated(int64_t{frame.end} - frame.start);
    return kNoError;
}

/// The phoneme has left the mixture: its curve falls to 0 over the frame that ends at `endMs`.
void envelope_builder::CloseInside(phn_env_marker& envelope, int32_t endMs) {
    envelope.points.push_back({previousEndMs, endMs, 0.0f});
    envelope.end = endMs;
    const int32_t leadInMs =
        Saturated(std::max<int64_t>(int64_t{envelope.start} - frameLengthMs, 0));
    if (leadInMs < envelope.start) {
        envelope.points.insert(envelope.points.begin(), {leadInMs, envelope.start, 0.0f});
    }
    envelope.start = leadInMs;
    if (settings.compress) {
        CompressPoints(envelope.points);
    }
}

/// The curve ends with the frames, and falls to 0 over one more.
/// Kept: it may begin below 0 and is always compressed; tracks that were keyed from such curves
/// would move otherwise.
void envelope_builder::CloseAtTheEnd(phn_env_marker& envelope) {
    const int32_t endMs = Saturated(int64_t{previousEndMs} + frameLengthMs);
    envelope.points.push_back({previousEndMs, endMs, 0.0f});
    envelope.end = endMs;
    const int32_t leadInMs = Saturated(int64_t{envelope.start} - frameLengthMs);
    envelope.points.insert(envelope.points.begin(), {leadInMs, envelope.start, 0.0f});
    envelope.start = leadInMs;
    CompressPoints(envelope.points);
}

void envelope_builder::Keep(phoneme_label label, phn_env_marker&& envelope) {
    if (settings.common_key_times) {
        finishedByLabel[label].push_back(std::move(envelope));
    } else {
        finished.push_back(std::move(envelope));
    }
}

void envelope_builder::FinishAll() {
    for (auto& [label, envelope] : open) {
        CloseAtTheEnd(envelope);
        Keep(label, std::move(envelope));
    }
    open.clear();
}

std::vector<phn_env_marker> envelope_builder::Take() {
    if (settings.common_key_times) {
        finished = GiveCommonKeyTimes(std::move(finishedByLabel), settings.frame_rate);
    }
    std::stable_sort(finished.begin(), finished.end(),
                     [](const auto& a, const auto& b) { return a.start < b.start; });
    return std::move(finished);
}

} // namespace

error_code BuildPhonemeEnvelopes(std::span<const articulation> frames,
                                 const envelope_settings& settings,
                                 std::vector<phn_env_marker>& envelopes) {
    envelopes.clear();
    envelope_builder builder(settings);
    for (const articulation& frame : frames) {
        if (const error_code code = builder.AddFrame(frame); code != kNoError) {
            return code;
        }
    }
    builder.FinishAll();
    envelopes = builder.Take();
    return kNoError;
}

void CompressPoints(std::vector<envelope_point>& points) {
    if (points.size() < 3) {
        return;
    }
    // An erased point equals the one kept last, so that this is also the neighbour to compare with.
    auto kept = points.begin();
    for (auto point = std::next(points.begin()); std::next(point) != points.end(); ++point) {
        if (point->value != kept->value || point->value != std::next(point)->value) {
            *++kept = *point;
        }
    }
    *++kept = points.back();
    points.erase(std::next(kept), points.end());
}

} // namespace tessarin
