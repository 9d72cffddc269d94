#include "c_api/weight_track.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <mutex>
#include <string_view>
#include <utility>

#include "model/phoneme_alphabet.h"

namespace tessarin {

namespace {

constexpr uint32_t kEngineFlags =
    TESSARIN_TRACK_SMOOTH | TESSARIN_TRACK_COMMON_KEYS | TESSARIN_TRACK_EXCESS_LEVEL;
constexpr uint32_t kKnownFlags = kEngineFlags | TESSARIN_TRACK_CURVES;
/// The options of 0.1.0, which ended with the rules.
constexpr uint32_t kFirstSize = offsetof(tessarin_track_options, gains);
constexpr float kHighestFrameRate = 1000.0f;

/// What the caller knows of the options; the rest has its defaults.
error_code ReadOptions(const tessarin_track_options* given, tessarin_track_options& out) {
    out = {};
    if (given == nullptr) {
        return kNoError;
    }
    if (given->size != kFirstSize && given->size != sizeof out) {
        return kInvalidArgument;
    }
    std::memcpy(&out, given, given->size);
    const bool hasGains = out.gain_count == 0 || out.gains != nullptr;
    return (out.flags & ~kKnownFlags) == 0 && hasGains ? kNoError : kInvalidArgument;
}

bool AreInRange(const tessarin_track_options& options) {
    // Comparisons that hold for no NaN.
    return options.frame_rate >= 0.0f && options.frame_rate <= kHighestFrameRate &&
           options.slope >= 0.0f && options.slope <= 1.0f && options.max_weights >= 0 &&
           options.max_weights <= 10;
}

error_code SetGain(const tessarin_gain& gain, IPhnMixtureArticulator& articulator) {
    const char* const phonemes = gain.phonemes != nullptr ? gain.phonemes : "";
    std::vector<const phoneme_symbol*> symbols;
    if (!std::isfinite(gain.factor) || gain.factor < 0.0f) {
        return kOutOfRange;
    }
    if (!ParsePhonemeString(phonemes, symbols, nullptr)) {
        return kInvalidArgument;
    }
    articulator.SetGain(phonemes, gain.factor);
    return kNoError;
}

error_code SetUp(const tessarin_track_options& options, IPhnMixtureArticulator& articulator) {
    if (!AreInRange(options)) {
        return kOutOfRange;
    }
    const bool hasRules = options.rules != nullptr;
    error_code code =
        articulator.LoadArticulatorRules(options.rules, hasRules ? options.rules_length : 0);
    if (code != kNoError) {
        return code;
    }
    if (options.frame_rate > 0.0f) {
        articulator.SetFrameRate(options.frame_rate);
    }
    if (options.slope > 0.0f) {
        articulator.SetEnvelopeSlope(options.slope);
    }
    if (options.max_weights > 0) {
        articulator.SetMaxContributions(options.max_weights);
    }
    for (uint32_t i = 0; i < options.gain_count; ++i) {
        code = SetGain(options.gains[i], articulator);
        if (code != kNoError) {
            return code;
        }
    }
    return articulator.SetFlags(articulator.GetFlags() | (options.flags & kEngineFlags));
}

tessarin_frame FrameOf(const articulation& from) {
    tessarin_frame frame{from.start, from.end, from.count, {}};
    static_assert(sizeof frame.weights == sizeof from.entries);
    std::memcpy(frame.weights, from.entries, sizeof frame.weights);
    return frame;
}

void CopyCurves(IPhnMixtureArticulator& articulator, tessarin_track& track) {
    const articulation_envelope* const end = articulator.GetEnvelopesEnd();
    for (const articulation_envelope* each = articulator.GetEnvelopesBegin(); each != end; ++each) {
        std::vector<tessarin_key>& keys = track.keys.emplace_back();
        for (int32_t i = 0; i < each->count; ++i) {
            keys.push_back({each->points[i].t1, each->points[i].value});
        }
        tessarin_curve curve{
            {}, each->start, each->end, static_cast<uint32_t>(keys.size()), keys.data()};
        std::memcpy(curve.label, each->label, sizeof each->label);
        track.curves.push_back(curve); // keys stay in place when their list grows
    }
}

} // namespace

error_code MakeTrack(const tessarin_result& result, const tessarin_track_options* given,
                     std::unique_ptr<tessarin_track>& out) {
    tessarin_track_options options;
    error_code code = ReadOptions(given, options);
    if (code != kNoError) {
        return code;
    }
    auto track = std::make_unique<tessarin_track>();
    IPhnMixtureArticulator* made = nullptr;
    code = CreatePhonemeArticulator(&made, 0);
    if (code != kNoError) {
        return code;
    }
    track->articulator.reset(made);
    IPhnMixtureArticulator& articulator = *made;
    if (given != nullptr) {
        code = SetUp(options, articulator);
        if (code != kNoError) {
            return code;
        }
    }
    {
        const std::lock_guard guard(result.lock);
        code = articulator.GenerateArticulations(result.markers.get(), nullptr);
    }
    if (code != kNoError) {
        return code;
    }
    const articulation* const end = articulator.GetArticulationsEnd();
    for (const articulation* each = articulator.GetArticulationsBegin(); each != end; ++each) {
        track->frames.push_back(FrameOf(*each));
    }
    if ((options.flags & TESSARIN_TRACK_CURVES) != 0) {
        code = articulator.GenerateEnvelopes();
        if (code != kNoError) {
            return code;
        }
        CopyCurves(articulator, *track);
    }
    out = std::move(track);
    return kNoError;
}

error_code Quantize(const tessarin_track& track, int32_t fromMs, int32_t toMs, int32_t maxWeights,
                    tessarin_frame& out) {
    const std::lock_guard guard(track.lock);
    const articulation* const mixture = track.articulator->Quanitze(fromMs, toMs, maxWeights);
    if (mixture == nullptr) {
        return kOutOfRange;
    }
    out = FrameOf(*mixture);
    return kNoError;
}

error_code MakeResult(std::span<const tessarin_phoneme> phonemes,
                      std::unique_ptr<tessarin_result>& out) {
    auto result = std::make_unique<tessarin_result>();
    ISyncResultsCollection* made = nullptr;
    const error_code code = CreateSyncResultsCollection(0, &made);
    result->markers.reset(made);
    if (code != kNoError) {
        return code;
    }
    for (const tessarin_phoneme& each : phonemes) {
        const auto* const labelEnd = std::find(each.label, std::end(each.label), '\0');
        const std::string_view label(each.label, static_cast<size_t>(labelEnd - each.label));
        if (FindPhonemeSymbol(label) == nullptr || each.end_ms < each.start_ms) {
            return kInvalidArgument;
        }
        CSyncMarker marker{};
        marker.type = kPhonemeMarker;
        marker.score = each.score;
        marker.start = each.start_ms;
        marker.end = each.end_ms;
        std::memcpy(marker.label, label.data(), label.size());
        made->add_marker(marker);
    }
    result->phonemes.assign(phonemes.begin(), phonemes.end());
    out = std::move(result);
    return kNoError;
}

} // namespace tessarin
