// How CPhonemeMixtureArticulator makes the frames of a result.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "articulation/frames_from_envelopes.h"
#include "articulation/phoneme_mixture_articulator.h"
#include "articulation/phoneme_track.h"
#include "base/guarded.h"
#include "base/trunc_sat.h"
#include "model/phoneme_alphabet.h"
#include "results/saturated.h"

namespace tessarin {
namespace {

struct time_range {
    int32_t startMs;
    int32_t endMs;
};

/// From the smallest to the largest time of any phoneme; without phonemes it ends before it begins.
time_range RangeOf(const phn_marker_list& phonemes) {
    time_range range = {1000000000, -100000000};
    for (const phn_marker& marker : phonemes) {
        range.startMs = std::min({range.startMs, marker.start, marker.end});
        range.endMs = std::max({range.endMs, marker.start, marker.end});
    }
    return range;
}

/// The frame in which a time lies, held far outside all frames that are made but safe to count
/// with.
int64_t FrameIndex(int32_t ms, float frameMs) {
    constexpr int64_t kBeyond = int64_t{1} << 40;
    const auto index = TruncSat<int64_t>(static_cast<float>(ms) / frameMs);
    return std::clamp(index, -kBeyond, kBeyond);
}

} // namespace

error_code CPhonemeMixtureArticulator::Generate(ISyncResultsCollection* results, void* reserved,
                                                int32_t startMs, int32_t endMs) {
    if (results == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] {
        app_sync_results sorted;
        ReadSyncResults(*results, {}, false, sorted);
        ApplyOffsets(sorted.phonemes);
        return GenerateArticulationFromSyncResults(sorted, reserved, startMs, endMs);
    });
}

void CPhonemeMixtureArticulator::ApplyOffsets(phn_marker_list& phonemes) {
    if (rules.rules.empty()) {
        return;
    }
    for (phn_marker& marker : phonemes) {
        // Kept: a phoneme without a rule gets one of zeros, which silences it for later runs too.
        const int32_t offsetMs = rules.rules[phoneme_label(marker.label)].offset;
        marker.moved = marker.moved || offsetMs != 0;
        const int64_t shiftMs = int64_t{offsetMs} + rules.global_offset;
        if (shiftMs != 0) {
            marker.set_start(Saturated(marker.start + shiftMs));
            marker.set_end(Saturated(marker.end + shiftMs));
        }
    }
}

error_code CPhonemeMixtureArticulator::GenerateArticulationFromSyncResults(
    app_sync_results& results, void* /*reserved*/, int32_t startMs, int32_t endMs) {
    if (rules.rules.empty()) {
        if (const error_code code = LoadArticulatorRules(nullptr, 0); code != kNoError) {
            return code;
        }
    }
    if (frameRateOverride > 0.0f) {
        rules.frame_rate = frameRateOverride;
    }
    articulations.clear();
    frameList.clear();

    bool smooth = (flags & kSmoothFrames) != 0 && !rules.no_smoothing;
    time_range range = {};
    if (startMs == -1 || endMs == -1) {
        range = RangeOf(results.phonemes);
        LeadIn(results.phonemes, range.startMs);
    } else {
        // A part of a result gets the frames that its neighbours reach, and is not smoothed.
        range.startMs =
            Saturated(std::max<int64_t>(startMs - 2 * int64_t{rules.largest_attack}, 0));
        range.endMs = Saturated(endMs + 2 * int64_t{rules.largest_release});
        smooth = false;
    }

    const float frameMs = FrameMs();
    if (!(frameMs > 0.0f) || !std::isfinite(frameMs)) {
        return kOutOfRange;
    }
    const int64_t first = FrameIndex(range.startMs, frameMs);
    const bool endsInside = std::fmod(static_cast<float>(range.endMs), frameMs) != 0.0f;
    const int64_t last = FrameIndex(range.endMs, frameMs) + (endsInside ? 1 : 0);
    if (last < first) {
        return kNoError;
    }
    constexpr int64_t kFarthest = std::numeric_limits<int32_t>::max();
    if (first < -kFarthest || last > kFarthest || last - first >= kMostFrames) {
        return kOutOfRange;
    }
    MixFrames(results.phonemes, first, last, smooth);
    if (smooth) {
        SmoothFrames(results);
        for (size_t i = 0; i < frameList.size(); ++i) {
            AppendFrame(frameList[i], first + static_cast<int64_t>(i));
        }
    }
    return kNoError;
}

/// A result that begins with a vowel would begin with the mouth open: a short silence before its
/// body lets the mouth open.
void CPhonemeMixtureArticulator::LeadIn(phn_marker_list& phonemes, int32_t rangeStartMs) const {
    constexpr float kLoud = 50.0f;
    const auto opening =
        std::find_if(phonemes.begin(), phonemes.end(),
                     [&](const phn_marker& marker) { return marker.end >= rangeStartMs; });
    if (opening == phonemes.end() || !is_vowel_label(opening->label) || !(opening->score > kLoud)) {
        return;
    }
    const articulator_rule* rule = rules.Find(phoneme_label(opening->label));
    if (rule == nullptr) {
        return;
    }
    const int64_t halfMs = (int64_t{opening->end} - opening->start) / 2;
    const int64_t leadMs = std::min<int64_t>(rule->attack / 3, halfMs);
    phn_marker_list lead;
    lead.emplace_back(rangeStartMs, Saturated(rangeStartMs + leadMs), "x", 100.0f);
    phonemes.replace_range(lead);
}

void CPhonemeMixtureArticulator::MixFrames(const phn_marker_list& phonemes, int64_t first,
                                           int64_t last, bool smooth) {
    const float frameMs = FrameMs();
    const mixture_settings settings = {rules.global_gain, static_cast<size_t>(maxContributions),
                                       smooth, (flags & kExcessLevel) != 0};
    phoneme_track track(phonemes, rules);
    phoneme_mixture mixture;
    for (int64_t frame = first; frame <= last; ++frame) {
        const auto centreMs =
            TruncSat<int32_t>(static_cast<float>(frame) * frameMs + frameMs / 2.0f);
        MixtureAt(centreMs, track.Around(centreMs), settings, m_contrib, mixture);
        std::swap(m_contrib, mixture);
        if (smooth) {
            frameList.push_back(m_contrib);
        } else {
            AppendFrame(m_contrib, frame);
        }
    }
}

void CPhonemeMixtureArticulator::AppendFrame(const phoneme_mixture& mixture, int64_t frame) {
    const float frameMs = FrameMs();
    const articulation record =
        MakeArticulation(mixture, TruncSat<int32_t>(static_cast<float>(frame) * frameMs),
                         TruncSat<int32_t>(static_cast<float>(frame + 1) * frameMs));
    if (record.count > 0) {
        articulations.push_back(record);
    }
}

} // namespace tessarin
