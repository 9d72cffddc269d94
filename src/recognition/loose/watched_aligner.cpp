#include "recognition/loose/watched_aligner.h"

#include <algorithm>

#include "base/guarded.h"
#include "base/timed_progress.h"
#include "model/accoustic_hmm.h"
#include "recognition/markers/amplitude_scale.h"
#include "recognition/markers/time_base.h"
#include "recognition/observation_source.h"
#include "results/concrete_sync_marker_collection.h"
#include "tessarin/observation_stream.h"

namespace tessarin {
namespace {

/// Scores the observations that pass through, for the search that comes after.
class CScoringStream final : public IObservationStream {
public:
    CScoringStream(IObservationStream& observations, state_scores& scored, TArray<float>& levels)
        : source(observations), scores(scored), energies(levels),
          total(observations.GetNumObservations()) {}

    uint32_t GetNumObservations() override { return total; }
    error_code GetObservation(float* features, float* energy) override {
        const error_code code = source.GetObservation(features, energy);
        const size_t index = scores.GetCount();
        if (code == kNoError && index < total) {
            scores.Add(features);
            if (index < static_cast<size_t>(energies.GetSize())) {
                energies[static_cast<int32_t>(index)] = *energy;
            }
        }
        return code;
    }
    void GetFrameGeometry(uint32_t* windowSize, uint32_t* overlap) override {
        source.GetFrameGeometry(windowSize, overlap);
    }
    float GetSampleRate() override { return source.GetSampleRate(); }
    void GetEnergyRange(float* minimum, float* maximum) override {
        source.GetEnergyRange(minimum, maximum);
    }
    void SetProcessingFlags(uint32_t flags) override { source.SetProcessingFlags(flags); }
    error_code GetBandEnergies(float* out, uint32_t* count) override {
        return source.GetBandEnergies(out, count);
    }
    error_code SetNoiseFloor(uint32_t kind, const float* bands, int32_t count) override {
        return source.SetNoiseFloor(kind, bands, count);
    }

    /// Reads on to the announced end.
    error_code ReadRest(int32_t featureCount) {
        std::vector<float> features(static_cast<size_t>(featureCount) + 3);
        while (scores.GetCount() < total) {
            float energy = 0.0f;
            if (const error_code code = GetObservation(features.data(), &energy);
                code != kNoError) {
                return code;
            }
        }
        return kNoError;
    }

private:
    IObservationStream& source;
    state_scores& scores;
    TArray<float>& energies;
    const uint32_t total;
};

amplitude_scale ScaleOf(IObservationStream& stream, const TArray<float>& energies) {
    float low = 0.0f;
    float high = 0.0f;
    stream.GetEnergyRange(&low, &high);
    return {low, high, {energies.begin(), static_cast<size_t>(energies.GetSize())}};
}

bool HasPath(error_code code) {
    return code == kNoError || code == kRecognitionFailed;
}

} // namespace

state_rec** CWatchedAligner::BuildStateGraph(const CAccousticHMM& model, quib_allocator& pool,
                                             CTxMarker* first, CTxMarker* end,
                                             std::vector<uint32_t>& startStates,
                                             std::vector<uint32_t>& endStates,
                                             uint32_t* stateCount) {
    regions.push_back({.tokens = {first, end}, .firstMarker = results.GetSize(), .match = {}});
    return CTextbasedPhnRecognizer::BuildStateGraph(model, pool, first, end, startStates, endStates,
                                                    stateCount);
}

error_code CWatchedAligner::Viterbi(const CAccousticHMM& model, const state_rec* const* graph,
                                    uint32_t positions, const std::vector<uint32_t>& startStates,
                                    const std::vector<uint32_t>& endStates,
                                    IObservationStream& stream, ProgressSink* progress,
                                    TArray<uint32_t>* path, TArray<float>& energies,
                                    double* score) {
    // The scoring stream is in front of one that may write more than the model scores.
    observation_source probe(stream, model.descriptor.numFeatures);
    if (const error_code code = probe.Open(nullptr); code != kNoError) {
        return code;
    }
    state_scores scores(model);
    CScoringStream scored(stream, scores, energies);
    const error_code code = CTextbasedPhnRecognizer::Viterbi(
        model, graph, positions, startStates, endStates, scored, progress, path, energies, score);
    if (!HasPath(code)) {
        return code;
    }
    if (const error_code read = scored.ReadRest(model.descriptor.numFeatures); read != kNoError) {
        return read;
    }
    watched_region& region = regions.back();
    region.code = code;
    const amplitude_scale amplitudes = ScaleOf(stream, energies);
    const region_input input{.model = model,
                             .graph = graph,
                             .positions = positions,
                             .tokens = region.tokens,
                             .scores = scores,
                             .amplitudes = amplitudes,
                             .periodMs = FramePeriodMs(stream),
                             .plainPath = {path->begin(), static_cast<size_t>(path->GetSize())}};
    if (!FitsLooseSearch(input)) {
        return code;
    }
    constexpr uint32_t kSteps = 1000;
    timed_progress timed(progress);
    const auto isCancelled = [&](double share) {
        return timed.Report(static_cast<uint32_t>(share * kSteps), kSteps, false);
    };
    if (!MatchRegion(input, isCancelled, region.match)) {
        return kUserCancelled;
    }
    region.isMatched = region.match.isFound;
    return code;
}

} // namespace tessarin
