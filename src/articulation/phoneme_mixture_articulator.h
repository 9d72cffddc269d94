#pragma once

#include <cstdint>
#include <vector>

#include "articulation/app_sync_results.h"
#include "articulation/articulator_rule.h"
#include "articulation/markers/marker_lists.h"
#include "articulation/phoneme_mixture.h"
#include "tessarin/articulator.h"

namespace tessarin {

/// Mixes mouth shapes frame by frame: each phoneme shows as its rule says, begins to show ahead of
/// its time and lingers after it. The last stage of the road from a recording to a track.
class CPhonemeMixtureArticulator : public IPhnMixtureArticulator {
public:
    CPhonemeMixtureArticulator() = default;

    error_code LoadArticulatorRules(const char* text, int32_t length) override;
    void SetFrameRate(float rate) override;
    void SetEnvelopeSlope(float slope) override;
    error_code SetMaxContributions(int32_t count) override;
    error_code GenerateArticulations2(ISyncResultsCollection* results, void* reserved,
                                      int32_t startMs, int32_t endMs) override;
    error_code GenerateArticulations(ISyncResultsCollection* results, void* reserved) override;
    articulation* GetArticulationsBegin() override;
    articulation* GetArticulationsEnd() override;
    void AddArticulation(const articulation& frame, bool clearFirst) override;
    void DestroySelf() override;
    error_code SetFlags(uint32_t flags) override;
    error_code GenerateEnvelopes() override;
    articulation_envelope* GetEnvelopesBegin() override;
    articulation_envelope* GetEnvelopesEnd() override;
    articulation* Quanitze(int32_t startMs, int32_t endMs, int32_t maxCount) override;
    uint32_t GetFlags() override;
    void SetGain(const char* phonemes, float gain) override;

    /// Builds the envelopes of the frames, without keys between equal ones if `compress` is set.
    virtual error_code BuildEnvelopes(bool compress);
    /// Makes the frames of `results`, into which it may merge a lead-in.
    virtual error_code GenerateArticulationFromSyncResults(app_sync_results& results,
                                                           void* reserved, int32_t startMs,
                                                           int32_t endMs);
    /// The stages that smooth the mixtures of a run: each works on the list of all its frames.
    virtual void SmoothFrames(app_sync_results& results);
    virtual void EnforceClosures(app_sync_results& results, int32_t wanted);
    virtual void LimitEnvelopeSlopes(float slope);
    virtual void FramesFromEnvelopes();
    virtual void CompressEnvelope(phn_env_marker& envelope);

private:
    error_code Generate(ISyncResultsCollection* results, void* reserved, int32_t startMs,
                        int32_t endMs);
    void ApplyOffsets(phn_marker_list& phonemes);
    void LeadIn(phn_marker_list& phonemes, int32_t rangeStartMs) const;
    void MixFrames(const phn_marker_list& phonemes, int64_t first, int64_t last, bool smooth);
    void AppendFrame(const phoneme_mixture& mixture, int64_t frame);
    float FrameMs() const { return 1000.0f / rules.frame_rate; }

    articulator_rules rules;
    float frameRateOverride = 0.0f; ///< above 0 it replaces the rate of the rules
    int32_t maxContributions = 10;
    float envelopeSlope = 0.25f;
    /// The mixture of the frame before. Kept: it outlasts a run, so that a host that makes a track
    /// part by part sees no phoneme flicker at the seams.
    phoneme_mixture m_contrib;
    std::vector<articulation> articulations;
    articulation quantized = {};
    std::vector<articulation_envelope> envelopes;
    std::vector<envelope_point> envelopePoints; ///< the points of all envelopes
    std::vector<phoneme_mixture> frameList;
    uint32_t flags = 0;
};

} // namespace tessarin
