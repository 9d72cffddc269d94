#include "recognition/loose/watched_aligner.h"

#include <algorithm>

#include "base/timed_progress.h"
#include "model/accoustic_hmm.h"
#include "recognition/loose/text_follower.h"
#include "recognition/loose/word_chain.h"
#include "recognition/markers/amplitude_scale.h"
#include "recognition/markers/time_base.h"
#include "recognition/observation_source.h"
#include "results/concrete_sync_marker_collection.h"
#include "tessarin/observation_stream.h"

namespace tessarin {
namespace {

/// Shows the observations that pass through to the search that leaves words out.
class CWatchedStream final : public IObservationStream {
public:
    CWatchedStream(IObservationStream& observations, text_follower& textFollower,
                   TArray<float>& levels)
        : source(observations), follower(textFollower), energies(levels),
          total(observations.GetNumObservations()) {}

    uint32_t GetNumObservations() override { return total; }
    error_code GetObservation(float* features, float* energy) override {
        const error_code code = source.GetObservation(features, energy);
        const size_t index = follower.GetCount();
        if (code == kNoError && index < total) {
            follower.Add(features);
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
    error_code ReadRest(int32_t featureCount, timed_progress& progress) {
        std::vector<float> features(static_cast<size_t>(featureCount) + 3);
        while (follower.GetCount() < total) {
            if (progress.Report(static_cast<uint32_t>(follower.GetCount()), total, false)) {
                return kUserCancelled;
            }
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
    text_follower& follower;
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
    const auto searchExactly = [&](IObservationStream& from) {
        return CTextbasedPhnRecognizer::Viterbi(model, graph, positions, startStates, endStates,
                                                from, progress, path, energies, score);
    };
    // The watched stream is in front of one that may write more than the model scores.
    observation_source probe(stream, model.descriptor.numFeatures);
    if (const error_code code = probe.Open(nullptr); code != kNoError) {
        return code;
    }
    watched_region& region = regions.back();
    const word_chain chain(model, graph, positions, region.tokens);
    const uint32_t total = stream.GetNumObservations();
    if (total == 0 || chain.IsTooLongFor(total)) {
        return searchExactly(stream);
    }
    text_follower follower(model, chain, total);
    CWatchedStream watched(stream, follower, energies);
    const error_code code = searchExactly(watched);
    if (!HasPath(code)) {
        return code;
    }
    timed_progress timed(progress);
    if (const error_code read = watched.ReadRest(model.descriptor.numFeatures, timed);
        read != kNoError) {
        return read;
    }
    // What is left is short beside what was reported, so the share that is done stays the same.
    if (!follower.Finish([&](double) { return timed.Report(total - 1, total, false); })) {
        return kUserCancelled;
    }
    const amplitude_scale amplitudes = ScaleOf(stream, energies);
    region.match = MatchRegion({.model = model,
                                .graph = graph,
                                .positions = positions,
                                .tokens = region.tokens,
                                .chain = chain,
                                .follower = follower,
                                .amplitudes = amplitudes,
                                .periodMs = FramePeriodMs(stream),
                                .plainPath = {path->begin(), static_cast<size_t>(path->GetSize())},
                                .stateMarkers = (results.get_flags() & kWriteStateMarkers) != 0});
    region.isMatched = region.match.isFound;
    return code;
}

/// A region without a graph is one of the results, too.
void CWatchedAligner::EndRegion(error_code code) {
    if (regions.size() == ended) {
        regions.push_back({.tokens = {}, .firstMarker = results.GetSize(), .match = {}});
    }
    regions.back().code = code;
    ended = regions.size();
}

} // namespace tessarin
