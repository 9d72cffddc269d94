#include "recognition/acc_phn_viterbi.h"

#include "base/flog.h"
#include "features/spectral_stream.h"
#include "recognition/markers/marker_generation.h"

namespace tessarin {
namespace {

/// Only the spectral stream has work of its own to report.
void FollowStream(IObservationStream& stream, ProgressSink* progress) {
    if (auto* spectral = CSpectralStream::Find(&stream)) {
        spectral->SetProgressSink(progress);
    }
}

} // namespace

error_code CAccPhnViterbi::ViterbiOnGraph(const CAccousticHMM&, const state_rec* const*, uint32_t,
                                          const std::vector<uint32_t>&,
                                          const std::vector<uint32_t>&, IObservationStream&,
                                          ProgressSink*, TArray<uint32_t>&, TArray<float>&,
                                          double*) {
    return kNotAvailable;
}

error_code CAccPhnViterbi::Viterbi(const CAccousticHMM&, IObservationStream&, ProgressSink*,
                                   TArray<uint32_t>&, TArray<float>&) {
    return kNotAvailable;
}

error_code CAccPhnViterbi::GenerateAlignment(const CAccousticHMM& model, IObservationStream& stream,
                                             const state_rec* const* graph, uint32_t positions,
                                             const std::vector<uint32_t>& startStates,
                                             const std::vector<uint32_t>& endStates,
                                             ProgressSink* progress, bool stateMarkers,
                                             TArray<CSyncMarker>& results,
                                             TArray<float>& energies) {
    flog scope("CAccPhnViterbi::GenerateAlignment");
    if (stream.GetNumObservations() == 0) {
        return kNoError;
    }
    FollowStream(stream, progress);
    const uint32_t frames = stream.GetNumObservations();
    if (frames > INT32_MAX || energies.SetSize(static_cast<int32_t>(frames), 0) == 0) {
        return kOutOfMemory;
    }
    TArray<uint32_t> path;
    double score = 0.0;
    const error_code code = graph == nullptr || positions == 0
                                ? Viterbi(model, stream, progress, path, energies)
                                : ViterbiOnGraph(model, graph, positions, startStates, endStates,
                                                 stream, progress, path, energies, &score);
    // Kept: a search that failed otherwise leaves the sink on the stream, whose owner may go on
    // reading it.
    if (code != kNoError && code != kRecognitionFailed) {
        return code;
    }
    const error_code conversion =
        GenerateMarkers(path, model, stream, graph, energies, stateMarkers, true, results);
    FollowStream(stream, nullptr);
    return code == kNoError ? conversion : code;
}

} // namespace tessarin
