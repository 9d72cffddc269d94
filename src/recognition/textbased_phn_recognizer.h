#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "recognition/acc_phn_viterbi.h"
#include "recognition/graph/phone_durations.h"
#include "recognition/graph/state_rec.h"
#include "tessarin/text_based_recognizer.h"

namespace tessarin {

class CConcreteSyncMarkerCollection;
class forward_graph;
class limited_stream;
class log_state_graph;
class quib_allocator;
struct word_span;

/// The forced aligner: strings the models of the text's phones into one chain, finds the audio's
/// path through it, and turns the path into timed phonemes and words. Cuts in the text divide the
/// audio into regions that are aligned one after the other, each for itself.
class CTextbasedPhnRecognizer : public ITextBasedPhnRecognizer, public CAccPhnViterbi {
public:
    ~CTextbasedPhnRecognizer() override = default;

    error_code RecognizePhonemes(IObservationStream* stream, CAccousticHMM* model, const char* text,
                                 IVisemixTranscriber* transcriber, ProgressSink* progress,
                                 ISyncResultsCollection* results) override;
    error_code AlignTranscription(IObservationStream* stream, CAccousticHMM* model,
                                  IVisemixTranscriber* transcriber, ProgressSink* progress,
                                  ISyncResultsCollection* results) override;
    void SetBeamWidth(int32_t width) override;
    int32_t GetBeamWidth() override { return beamWidth; }
    error_code SetSearchOptions(uint16_t newBeamWidth, uint16_t newKeptPerFrame,
                                uint32_t newTrellisMemory, double newLogBeam,
                                const char* newTrellisFile) override;
    uint8_t SetOutputOptions(uint8_t retry, uint8_t wordsOnly) override;

    /// SentenceViterbi with this recognizer's width. `endFrame` is not used.
    virtual error_code Viterbi_pw(const CAccousticHMM& model, const forward_graph& forward,
                                  const std::vector<word_span>& spans, IObservationStream& stream,
                                  ProgressSink* progress, uint32_t startFrame, uint32_t endFrame,
                                  ISyncResultsCollection& results);

    using CAccPhnViterbi::Viterbi;
    /// SlidingViterbi with this recognizer's window. The chain ends in its last state, wherever
    /// `endStates` are.
    virtual error_code Viterbi(const CAccousticHMM& model, const state_rec* const* graph,
                               uint32_t positions, const std::vector<uint32_t>& startStates,
                               const std::vector<uint32_t>& endStates, IObservationStream& stream,
                               ProgressSink* progress, TArray<uint32_t>* path,
                               TArray<float>& energies, double* score);

    /// The search graph of the tokens from `first` up to `end`, whose positions it writes into
    /// them; `*stateCount` receives its size. The graph lives as long as `pool`. Throws
    /// std::bad_alloc.
    virtual state_rec** BuildStateGraph(const CAccousticHMM& model, quib_allocator& pool,
                                        CTxMarker* first, CTxMarker* end,
                                        std::vector<uint32_t>& startStates,
                                        std::vector<uint32_t>& endStates, uint32_t* stateCount);

    /// TrellisViterbi with this recognizer's options, for audio whose back-pointers do not fit in
    /// memory. The chain ends in its last state, wherever `endStates` are.
    virtual error_code ViterbiTrellis(const CAccousticHMM& model, const log_state_graph& graph,
                                      const std::vector<uint32_t>& startStates,
                                      const std::vector<uint32_t>& endStates,
                                      IObservationStream& stream, ProgressSink* progress,
                                      TArray<uint32_t>* path, TArray<float>& energies,
                                      double* score);

    uint16_t GetKeptPerFrame() const { return keptPerFrame; }
    double GetLogBeam() const { return logBeam; }

protected:
    /// Called after each region with its code.
    virtual void EndRegion(error_code) {}

private:
    struct alignment_run;
    struct alignment_region;

    error_code AlignRegions(const alignment_run& run, CTxMarker* first, CTxMarker* last);
    error_code AlignRegion(const alignment_run& run, CTxMarker* startCut, CTxMarker* endCut,
                           CTxMarker* first, CTxMarker* last);
    error_code SearchRegion(const alignment_run& run, const alignment_region& region);
    error_code SearchSentences(const alignment_run& run, const alignment_region& region,
                               state_rec* const* graph, uint32_t stateCount);

    phone_durations durations;
    std::string trellisFile;
    uint32_t trellisMemory = 500000000; // bytes
    double logBeam = 0.0;
    uint16_t keptPerFrame = 0;
    int32_t beamWidth = 2000; // states
    uint8_t retryFlag = 0;
    uint8_t keepPhonemeMarkers = 1;
    uint8_t gapSilence = 1; // an optional silence before each token with phonemes
};

} // namespace tessarin
