#include "articulation/phoneme_mixture_articulator.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string_view>

#include "articulation/closures.h"
#include "articulation/default_rules.h"
#include "articulation/envelopes.h"
#include "articulation/frames_from_envelopes.h"
#include "articulation/quantize.h"
#include "articulation/rule_text.h"
#include "base/flog.h"
#include "base/guarded.h"

namespace tessarin {

error_code CPhonemeMixtureArticulator::LoadArticulatorRules(const char* text, int32_t length) {
    flog scope("CPhonemeMixtureArticulator::LoadArticulatorRules");
    return Guarded([&] {
        if (text == nullptr || length == 0) {
            return ReadRuleText(kDefaultRules, rules);
        }
        if (length < 0) {
            return kInvalidArgument;
        }
        return ReadRuleText({text, static_cast<size_t>(length)}, rules);
    });
}

void CPhonemeMixtureArticulator::SetFrameRate(float rate) {
    frameRateOverride = rate;
    if (rate > 0.0f) {
        rules.frame_rate = rate;
    }
}

void CPhonemeMixtureArticulator::SetEnvelopeSlope(float slope) {
    envelopeSlope = slope;
}

error_code CPhonemeMixtureArticulator::SetMaxContributions(int32_t count) {
    if (count < 1 || count > 10) {
        return kOutOfRange;
    }
    maxContributions = count;
    return kNoError;
}

error_code CPhonemeMixtureArticulator::SetFlags(uint32_t newFlags) {
    flags = newFlags;
    return kNoError;
}

uint32_t CPhonemeMixtureArticulator::GetFlags() {
    return flags;
}

void CPhonemeMixtureArticulator::SetGain(const char* phonemes, float gain) {
    if (phonemes == nullptr || *phonemes == '\0') {
        rules.global_gain = gain;
        return;
    }
    (void)Guarded([&] {
        for (const phoneme_label label : SplitLabels(phonemes)) {
            rules.rules[label].gain = gain;
        }
    });
}

error_code CPhonemeMixtureArticulator::GenerateArticulations2(ISyncResultsCollection* results,
                                                              void* reserved, int32_t startMs,
                                                              int32_t endMs) {
    flog scope("CPhonemeMixtureArticulator::GenerateArticulations2");
    return Generate(results, reserved, startMs, endMs);
}

error_code CPhonemeMixtureArticulator::GenerateArticulations(ISyncResultsCollection* results,
                                                             void* reserved) {
    flog scope("CPhonemeMixtureArticulator::GenerateArticulations");
    return Generate(results, reserved, -1, -1);
}

articulation* CPhonemeMixtureArticulator::GetArticulationsBegin() {
    return articulations.empty() ? nullptr : articulations.data();
}

articulation* CPhonemeMixtureArticulator::GetArticulationsEnd() {
    return articulations.empty() ? nullptr : articulations.data() + articulations.size();
}

void CPhonemeMixtureArticulator::AddArticulation(const articulation& frame, bool clearFirst) {
    articulation added = frame; // it may be one of those that are cleared
    added.count = std::clamp(added.count, 0, static_cast<int32_t>(std::size(added.entries)));
    if (clearFirst) {
        articulations.clear();
    }
    (void)Guarded([&] { articulations.push_back(added); });
}

articulation* CPhonemeMixtureArticulator::Quanitze(int32_t startMs, int32_t endMs,
                                                   int32_t maxCount) {
    flog scope("CPhonemeMixtureArticulator::Quanitze");
    articulation* result = nullptr;
    (void)Guarded([&] {
        const int32_t most = maxCount < 1 ? maxContributions : maxCount;
        if (const std::optional<articulation> record =
                Quantize(articulations, startMs, endMs, most)) {
            quantized = *record;
            result = &quantized;
        }
    });
    return result;
}

error_code CPhonemeMixtureArticulator::GenerateEnvelopes() {
    return BuildEnvelopes(true);
}

articulation_envelope* CPhonemeMixtureArticulator::GetEnvelopesBegin() {
    return envelopes.empty() ? nullptr : envelopes.data();
}

articulation_envelope* CPhonemeMixtureArticulator::GetEnvelopesEnd() {
    return envelopes.empty() ? nullptr : envelopes.data() + envelopes.size();
}

error_code CPhonemeMixtureArticulator::BuildEnvelopes(bool compress) {
    return Guarded([&] {
        envelopes.clear();
        envelopePoints.clear();
        const envelope_settings settings = {rules.frame_rate, compress,
                                            (flags & kCommonKeyTimes) != 0};
        std::vector<phn_env_marker> built;
        const error_code code = BuildPhonemeEnvelopes(articulations, settings, built);
        size_t numPoints = 0;
        for (const phn_env_marker& envelope : built) {
            numPoints += envelope.points.size();
        }
        envelopePoints.reserve(numPoints); // the records point into it
        envelopes.reserve(built.size());
        for (const phn_env_marker& envelope : built) {
            articulation_envelope record = {};
            phoneme_label(envelope.label).CopyTo(record.label);
            record.start = envelope.start;
            record.end = envelope.end;
            record.count = static_cast<int32_t>(envelope.points.size());
            record.points = envelopePoints.data() + envelopePoints.size();
            envelopePoints.insert(envelopePoints.end(), envelope.points.begin(),
                                  envelope.points.end());
            envelopes.push_back(record);
        }
        return code;
    });
}

void CPhonemeMixtureArticulator::SmoothFrames(app_sync_results& results) {
    EnforceClosures(results, 2);
    LimitEnvelopeSlopes(envelopeSlope);
}

/// Kept: frames count from the time 0 and the list from the first frame of the run, so that
/// closures of a result that begins late are looked for that much too late in the list.
void CPhonemeMixtureArticulator::EnforceClosures(app_sync_results& results, int32_t wanted) {
    ForceClosures(results.phonemes, rules.closed, FrameMs(), wanted, frameList);
}

void CPhonemeMixtureArticulator::LimitEnvelopeSlopes(float slope) {
    articulations.clear();
    for (size_t i = 0; i < frameList.size(); ++i) {
        AppendFrame(frameList[i], static_cast<int64_t>(i));
    }
    (void)BuildEnvelopes(false);
    for (const articulation_envelope& envelope : envelopes) {
        const phoneme_label label{std::string_view(envelope.label)};
        if (label != kSilence && !rules.closed.contains(label)) {
            LimitSlope({envelope.points, static_cast<size_t>(envelope.count)}, slope);
        }
    }
    FramesFromEnvelopes();
    envelopes.clear();
    envelopePoints.clear();
}

void CPhonemeMixtureArticulator::FramesFromEnvelopes() {
    articulations.clear();
    frameList = SampleEnvelopes(envelopes, FrameMs());
}

void CPhonemeMixtureArticulator::CompressEnvelope(phn_env_marker& envelope) {
    CompressPoints(envelope.points);
}

void CPhonemeMixtureArticulator::DestroySelf() {
    delete this;
}

} // namespace tessarin
