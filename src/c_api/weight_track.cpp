#include "c_api/weight_track.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <mutex>
#include <string_view>
#include <utility>

#include "articulation/rule_text.h"
#include "model/phoneme_alphabet.h"
#include "mouth/frame_shaping.h"
#include "mouth/loudness.h"
#include "mouth/natural_rules.h"
#include "mouth/voice_level.h"

namespace tessarin {

namespace {

constexpr uint32_t kEngineFlags =
    TESSARIN_TRACK_SMOOTH | TESSARIN_TRACK_COMMON_KEYS | TESSARIN_TRACK_EXCESS_LEVEL;
constexpr uint32_t kKnownFlags = kEngineFlags | TESSARIN_TRACK_CURVES | TESSARIN_TRACK_PLAIN;
/// The sizes that the options have had: they ended with the rules, and then with the gains.
constexpr uint32_t kFirstSize = offsetof(tessarin_track_options, gains);
constexpr uint32_t kSecondSize = offsetof(tessarin_track_options, strengths);
constexpr float kMinFrameRate = 1.0f;
constexpr float kMaxFrameRate = 1000.0f;
constexpr float kUsualSlope = 0.25f; // as the articulator's

/// What the caller knows of the options; the rest has its defaults.
error_code ReadOptions(const tessarin_track_options* given, tessarin_track_options& out) {
    out = {};
    if (given == nullptr) {
        return kNoError;
    }
    if (given->size != kFirstSize && given->size != kSecondSize && given->size != sizeof out) {
        return kInvalidArgument;
    }
    std::memcpy(&out, given, given->size);
    const bool hasGains = out.gain_count == 0 || out.gains != nullptr;
    const bool hasStrengths = out.strength_count == 0 || out.strengths != nullptr;
    const bool isKnown = (out.flags & ~kKnownFlags) == 0;
    return isKnown && hasGains && hasStrengths ? kNoError : kInvalidArgument;
}

bool AreInRange(const tessarin_track_options& options) {
    // Comparisons that hold for no NaN.
    const bool hasRate = options.frame_rate >= kMinFrameRate && options.frame_rate <= kMaxFrameRate;
    return (hasRate || options.frame_rate == 0.0f) && options.slope >= 0.0f &&
           options.slope <= 1.0f && options.max_weights >= 0 && options.max_weights <= 10;
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

/// The rule text that is asked for; empty where the articulator's own is.
error_code FindRules(const tessarin_track_options& options, std::string_view& out) {
    if (options.rules == nullptr || options.rules_length == 0) {
        const bool isPlain = (options.flags & TESSARIN_TRACK_PLAIN) != 0;
        out = isPlain ? std::string_view() : kNaturalRules.text;
        return kNoError;
    }
    if (options.rules_length < 0) {
        return kInvalidArgument;
    }
    out = {options.rules, static_cast<size_t>(options.rules_length)};
    return kNoError;
}

error_code SetUp(const tessarin_track_options& options, std::string_view rules,
                 IPhnMixtureArticulator& articulator) {
    if (!AreInRange(options)) {
        return kOutOfRange;
    }
    error_code code =
        articulator.LoadArticulatorRules(rules.data(), static_cast<int32_t>(rules.size()));
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

CSyncMarker MarkerOf(const tessarin_phoneme& phoneme, float score) {
    CSyncMarker marker{};
    marker.type = kPhonemeMarker;
    marker.score = score;
    marker.start = phoneme.start_ms;
    marker.end = phoneme.end_ms;
    std::memcpy(marker.label, phoneme.label, sizeof phoneme.label);
    return marker;
}

/// Has the articulator make frames of levels against the voice, and shapes them.
error_code Articulate(const tessarin_result& result, const tessarin_track_options& options,
                      std::string_view rules, IPhnMixtureArticulator& articulator) {
    articulator_rules read;
    error_code code = ReadRuleText(rules, read);
    frame_shaping shaping;
    if (code == kNoError) {
        code = ReadStrength({options.strengths, options.strength_count}, shaping.strength);
    }
    results_owner markers;
    if (code == kNoError) {
        code = CreateSyncResultsCollection(0, Out(markers));
    }
    if (code != kNoError) {
        return code;
    }
    const LoudnessCurve loudness(result.loudness);
    const VoiceLevels voice(result.phonemes, loudness);
    for (size_t i = 0; i < result.phonemes.size(); ++i) {
        markers->add_marker(MarkerOf(result.phonemes[i], 100.0f * voice.GetLevels()[i]));
    }
    code = articulator.GenerateArticulations(markers.get(), nullptr);
    if (code != kNoError) {
        return code;
    }
    std::vector<articulation> frames(articulator.GetArticulationsBegin(),
                                     articulator.GetArticulationsEnd());
    shaping.closed = read.closed;
    shaping.frame_rate = options.frame_rate > 0.0f ? options.frame_rate : read.frame_rate;
    shaping.usual_db = voice.GetUsualDb();
    if ((options.flags & TESSARIN_TRACK_SMOOTH) != 0 && !read.no_smoothing) {
        shaping.slope = options.slope > 0.0f ? options.slope : kUsualSlope;
    }
    shaping.max_weights = options.max_weights > 0 ? options.max_weights : shaping.max_weights;
    ShapeFrames(result.phonemes, loudness, shaping, frames);
    for (const articulation& frame : frames) {
        articulator.AddArticulation(frame, &frame == &frames.front());
    }
    return kNoError;
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
    track->articulator.reset(made);
    std::string_view rules;
    if (code == kNoError) {
        code = FindRules(options, rules);
    }
    if (code == kNoError) {
        code = SetUp(options, rules, *made);
    }
    if (code != kNoError) {
        return code;
    }
    if ((options.flags & TESSARIN_TRACK_PLAIN) != 0) {
        const std::lock_guard guard(result.lock);
        code = made->GenerateArticulations(result.markers.get(), nullptr);
    } else {
        code = Articulate(result, options, rules, *made);
    }
    if (code != kNoError) {
        return code;
    }
    const articulation* const end = made->GetArticulationsEnd();
    for (const articulation* each = made->GetArticulationsBegin(); each != end; ++each) {
        track->frames.push_back(FrameOf(*each));
    }
    if ((options.flags & TESSARIN_TRACK_CURVES) != 0) {
        code = made->GenerateEnvelopes();
        if (code != kNoError) {
            return code;
        }
        CopyCurves(*made, *track);
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
        made->add_marker(MarkerOf(each, each.score));
    }
    result->phonemes.assign(phonemes.begin(), phonemes.end());
    out = std::move(result);
    return kNoError;
}

} // namespace tessarin
