#include "recognition/textbased_phn_recognizer.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "base/flog.h"
#include "base/guarded.h"
#include "base/quib_allocator.h"
#include "base/trunc_sat.h"
#include "model/accoustic_hmm.h"
#include "platform/floating_point.h"
#include "recognition/aligner/dormant_region.h"
#include "recognition/aligner/limited_observation_stream.h"
#include "recognition/aligner/region_markers.h"
#include "recognition/aligner/sliding_viterbi.h"
#include "recognition/graph/forward_graph.h"
#include "recognition/graph/state_graph.h"
#include "recognition/markers/marker_generation.h"
#include "recognition/markers/time_base.h"
#include "recognition/sentences/sentence_viterbi.h"
#include "recognition/sentences/word_spans.h"
#include "recognition/trellis/trellis_viterbi.h"
#include "results/concrete_sync_marker_collection.h"

namespace tessarin {
namespace {

constexpr int32_t kMinBeamWidth = 500;
constexpr int32_t kMaxBeamWidth = 8000;
constexpr double kMaxLogBeam = -200.0;
constexpr int32_t kPoolBlockBytes = 32768;

/// A path or a graph below this is not worth a search.
constexpr uint32_t kMinStates = 4;
constexpr int64_t kMinFrames = 3;

bool FitsGraph(const CAccousticHMM& model) {
    return model.numModels <= kMaxGraphPhones && model.numStates <= kMaxGraphPhoneStates;
}

bool HasPath(error_code code) {
    return code == kNoError || code == kRecognitionFailed;
}

} // namespace

/// What the regions of one call share.
struct CTextbasedPhnRecognizer::alignment_run {
    limited_stream& stream;
    CAccousticHMM& model; // not const for its limits alone, which a search of sentences replaces
    IVisemixTranscriber& transcriber;
    const char* text; // may be null
    int64_t textLength;
    ProgressSink* progress;
    CConcreteSyncMarkerCollection& results;
};

/// The tokens and the time between two cuts.
struct CTextbasedPhnRecognizer::alignment_region {
    std::span<CTxMarker> markers;
    int32_t startFrame;
    int64_t frames; // negative when the cuts stand the wrong way round
    double periodMs;
};

error_code CTextbasedPhnRecognizer::RecognizePhonemes(IObservationStream* stream,
                                                      CAccousticHMM* model, const char* text,
                                                      IVisemixTranscriber* transcriber,
                                                      ProgressSink* progress,
                                                      ISyncResultsCollection* results) {
    flog scope("CTextbasedPhnRecognizer::RecognizePhonemes");
    MaskFloatUnderflow();
    return Guarded([&]() -> error_code {
        auto* markers = CConcreteSyncMarkerCollection::Find(results);
        if (markers == nullptr || transcriber == nullptr || stream == nullptr || model == nullptr) {
            return kInvalidArgument;
        }
        if (!FitsGraph(*model)) {
            return kOutOfRange;
        }
        int64_t textLength = 0;
        if (text != nullptr) {
            textLength = static_cast<int64_t>(std::strlen(text));
            (void)transcriber->Transcribe(text);
        }
        uint32_t count = 0;
        CTxMarker* first = transcriber->GetOutputMarkers(&count);
        limited_stream limited(*stream, model->descriptor.numFeatures);
        const alignment_run run{limited,    *model,   *transcriber, text,
                                textLength, progress, *markers};
        const error_code code =
            first != nullptr && count != 0 ? AlignRegions(run, first, first + count) : kNoError;
        markers->PostProcessMarkers();
        return code;
    });
}

error_code CTextbasedPhnRecognizer::AlignTranscription(IObservationStream* stream,
                                                       CAccousticHMM* model,
                                                       IVisemixTranscriber* transcriber,
                                                       ProgressSink* progress,
                                                       ISyncResultsCollection* results) {
    flog scope("CTextbasedPhnRecognizer::AlignTranscription");
    return RecognizePhonemes(stream, model, nullptr, transcriber, progress, results);
}

/// Kept: regions do not stop each other, whatever their code, and are read one after the other
/// without seeking: what one region leaves unread the next begins with.
error_code CTextbasedPhnRecognizer::AlignRegions(const alignment_run& run, CTxMarker* first,
                                                 CTxMarker* last) {
    error_code lastFailure = kNoError;
    CTxMarker* cut = nullptr;
    const auto align = [&](CTxMarker* endCut) {
        const error_code code = AlignRegion(run, cut, endCut, first, last);
        EndRegion(code);
        lastFailure = code != kNoError ? code : lastFailure;
    };
    for (CTxMarker* marker = first; marker != last; ++marker) {
        if (marker->kind == kCutToken) {
            align(marker);
            cut = marker;
        }
    }
    align(nullptr);
    return lastFailure;
}

error_code CTextbasedPhnRecognizer::AlignRegion(const alignment_run& run, CTxMarker* startCut,
                                                CTxMarker* endCut, CTxMarker* first,
                                                CTxMarker* last) {
    const uint32_t total = run.stream.Get().GetNumObservations();
    const double periodMs = FramePeriodMs(run.stream.Get());
    if (!(periodMs > 0.0)) {
        return kInvalidArgument;
    }
    const auto frameOf = [&](const CTxMarker& cut) {
        return TruncSat<int32_t>(cut.value / periodMs);
    };
    const int32_t startFrame = startCut != nullptr ? frameOf(*startCut) : 0;
    const int64_t endFrame = endCut != nullptr ? frameOf(*endCut) : int64_t{total};
    const alignment_region region{
        .markers = {startCut != nullptr ? startCut : first, endCut != nullptr ? endCut : last},
        .startFrame = startFrame,
        .frames = endFrame - startFrame,
        .periodMs = periodMs};
    // Kept: a region that ends before it begins has a limit that does not bind, and reads to the
    // end of the audio.
    run.stream.SetMaxObservations(static_cast<uint32_t>(region.frames));
    const error_code code = Guarded([&] { return SearchRegion(run, region); });
    run.stream.SetMaxObservations(total);
    return code;
}

error_code CTextbasedPhnRecognizer::SearchRegion(const alignment_run& run,
                                                 const alignment_region& region) {
    IObservationStream& stream = run.stream.Get();
    const bool sentenceMode = retryFlag == 1 && keepPhonemeMarkers == 0;
    quib_allocator pool(kPoolBlockBytes);
    std::vector<uint32_t> startStates;
    std::vector<uint32_t> endStates;
    uint32_t stateCount = 0;
    state_rec** graph = BuildStateGraph(run.model, pool, region.markers.data(),
                                        region.markers.data() + region.markers.size(), startStates,
                                        endStates, &stateCount);
    const uint32_t positions = stateCount / static_cast<uint32_t>(run.model.numStates);

    TArray<float> energies;
    const uint32_t frames = stream.GetNumObservations();
    if (frames > INT32_MAX || energies.SetSize(static_cast<int32_t>(frames), 0) == 0) {
        return kOutOfMemory;
    }
    TArray<CSyncMarker> phones(4);
    error_code code = kNoError;
    if (stateCount < kMinStates || region.frames < kMinFrames) {
        code = ReadDormantMarkerRegion(run.model, stream, graph, positions, region.periodMs, phones,
                                       energies);
    } else if (sentenceMode) {
        code = SearchSentences(run, region, graph, stateCount);
    } else {
        TArray<uint32_t> path;
        double score = 0.0;
        code = Viterbi(run.model, graph, positions, startStates, endStates, stream, run.progress,
                       &path, energies, &score);
        if (HasPath(code) && path.GetSize() >= kMinFrames) {
            const bool stateMarkers = (run.results.get_flags() & kWriteStateMarkers) != 0;
            (void)GenerateMarkers(path, run.model, stream, graph, energies, stateMarkers, true,
                                  phones);
        }
    }
    if (sentenceMode || !HasPath(code)) {
        return code;
    }
    const int32_t offsetMs = TruncSat<int32_t>(region.periodMs * region.startFrame);
    const error_code emitted = EmitRegionMarkers(run.results, phones, offsetMs, region.markers,
                                                 run.text, run.textLength, keepPhonemeMarkers != 0);
    return emitted != kNoError ? emitted : code;
}

/// `graph` turns into logarithms on the way.
error_code CTextbasedPhnRecognizer::SearchSentences(const alignment_run& run,
                                                    const alignment_region& region,
                                                    state_rec* const* graph, uint32_t stateCount) {
    if (!FitsSentenceSearch(run.model)) {
        return kOutOfRange;
    }
    const log_state_graph logGraph = log_state_graph::FromProbabilities(graph, stateCount);
    quib_allocator pool(kPoolBlockBytes);
    const forward_graph forward = forward_graph::FromLogGraph(logGraph, pool);
    const std::vector<word_span> spans =
        BuildWordSpans(region.markers, run.transcriber, forward, logGraph, run.model, durations);
    return Viterbi_pw(run.model, forward, spans, run.stream.Get(), run.progress,
                      static_cast<uint32_t>(region.startFrame),
                      static_cast<uint32_t>(region.startFrame + region.frames), run.results);
}

error_code CTextbasedPhnRecognizer::Viterbi_pw(const CAccousticHMM& model,
                                               const forward_graph& forward,
                                               const std::vector<word_span>& spans,
                                               IObservationStream& stream, ProgressSink* progress,
                                               uint32_t startFrame, uint32_t,
                                               ISyncResultsCollection& results) {
    flog scope("CTextbasedPhnRecognizer::Viterbi_pw");
    return SentenceViterbi(static_cast<uint16_t>(beamWidth), model, forward, spans, stream,
                           progress, static_cast<int32_t>(startFrame), results);
}

error_code CTextbasedPhnRecognizer::Viterbi(const CAccousticHMM& model,
                                            const state_rec* const* graph, uint32_t positions,
                                            const std::vector<uint32_t>& startStates,
                                            const std::vector<uint32_t>&,
                                            IObservationStream& stream, ProgressSink* progress,
                                            TArray<uint32_t>* path, TArray<float>& energies,
                                            double* score) {
    flog scope("CTextbasedPhnRecognizer::Viterbi");
    const sliding_viterbi_options options{static_cast<uint16_t>(beamWidth), retryFlag != 0};
    return SlidingViterbi(options, model, graph, positions, startStates, stream, progress, path,
                          energies, score);
}

error_code CTextbasedPhnRecognizer::ViterbiTrellis(const CAccousticHMM& model,
                                                   const log_state_graph& graph,
                                                   const std::vector<uint32_t>& startStates,
                                                   const std::vector<uint32_t>&,
                                                   IObservationStream& stream,
                                                   ProgressSink* progress, TArray<uint32_t>* path,
                                                   TArray<float>& energies, double* score) {
    flog scope("CTextbasedPhnRecognizer::Viterbi");
    const trellis_viterbi_options options{static_cast<uint16_t>(beamWidth), keptPerFrame,
                                          trellisMemory, logBeam, trellisFile};
    return TrellisViterbi(options, model, graph, startStates, stream, progress, path, energies,
                          score);
}

state_rec** CTextbasedPhnRecognizer::BuildStateGraph(
    const CAccousticHMM& model, quib_allocator& pool, CTxMarker* first, CTxMarker* end,
    std::vector<uint32_t>& startStates, std::vector<uint32_t>& endStates, uint32_t* stateCount) {
    state_graph_builder builder(model, pool);
    builder.AddMarkers({first, end}, gapSilence != 0, startStates, endStates);
    *stateCount = builder.StateCount();
    return builder.CopyGraph();
}

void CTextbasedPhnRecognizer::SetBeamWidth(int32_t width) {
    beamWidth = std::clamp(width, kMinBeamWidth, kMaxBeamWidth);
}

error_code CTextbasedPhnRecognizer::SetSearchOptions(uint16_t newBeamWidth,
                                                     uint16_t newKeptPerFrame,
                                                     uint32_t newTrellisMemory, double newLogBeam,
                                                     const char* newTrellisFile) {
    return Guarded([&]() -> error_code {
        error_code code = kNoError;
        if (newBeamWidth != 0) {
            SetBeamWidth(newBeamWidth);
        }
        // Kept: the comparison is with the argument, not with the width in force, so that a call
        // that leaves both at 0 is refused.
        keptPerFrame = newKeptPerFrame;
        if (newKeptPerFrame >= newBeamWidth) {
            keptPerFrame = newBeamWidth;
            code = kInvalidArgument;
        }
        if (newTrellisMemory != 0) {
            trellisMemory = newTrellisMemory;
        }
        if (newLogBeam != 0.0) {
            const bool inRange = newLogBeam <= kMaxLogBeam;
            logBeam = inRange ? newLogBeam : 0.0;
            code = inRange ? code : kInvalidArgument;
        }
        if (newTrellisFile != nullptr && *newTrellisFile != '\0') {
            trellisFile = newTrellisFile;
        }
        return code;
    });
}

uint8_t CTextbasedPhnRecognizer::SetOutputOptions(uint8_t retry, uint8_t wordsOnly) {
    retryFlag = retry;
    keepPhonemeMarkers = wordsOnly != 0 ? 0 : 1;
    return keepPhonemeMarkers;
}

} // namespace tessarin
