#include "recognition/textless_phn_recognizer.h"

#include "base/flog.h"
#include "base/guarded.h"
#include "model/accoustic_hmm.h"
#include "platform/floating_point.h"
#include "recognition/free/free_viterbi.h"
#include "results/concrete_sync_marker_collection.h"

namespace tessarin {

error_code CTextlessPhnRecognizer::RecognizePhonemes(IObservationStream* stream,
                                                     CAccousticHMM* model, ProgressSink* progress,
                                                     ISyncResultsCollection* results) {
    flog scope("CTextlessPhnRecognizer::RecognizePhonemes");
    MaskFloatUnderflow();
    return Guarded([&]() -> error_code {
        auto* markers = CConcreteSyncMarkerCollection::Find(results);
        if (markers == nullptr || stream == nullptr || model == nullptr) {
            return kInvalidArgument;
        }
        const bool stateMarkers = (markers->get_flags() & kWriteStateMarkers) != 0;
        TArray<float> energies;
        const error_code code = GenerateAlignment(*model, *stream, nullptr, 0, {}, {}, progress,
                                                  stateMarkers, *markers, energies);
        // Kept: scores are mapped after a failure too, so that what a host left there is mapped.
        markers->PostProcessMarkers();
        return code;
    });
}

error_code CTextlessPhnRecognizer::ViterbiLM(const CAccousticHMM& model, IObservationStream& stream,
                                             ProgressSink* progress, TArray<uint32_t>& path,
                                             TArray<float>& energies) {
    flog scope("CTextlessPhnRecognizer::ViterbiLM");
    return FreeViterbiLM(model, stream, progress, path, energies);
}

error_code CTextlessPhnRecognizer::Viterbi(const CAccousticHMM& model, IObservationStream& stream,
                                           ProgressSink* progress, TArray<uint32_t>& path,
                                           TArray<float>& energies) {
    flog scope("CTextlessPhnRecognizer::Viterbi");
    // Kept: some statistics are none; all three tables together make the language search.
    if (!model.trigrams.empty() && !model.bigrams.empty() && !model.unigrams.empty()) {
        return ViterbiLM(model, stream, progress, path, energies);
    }
    return FreeViterbi(model, stream, progress, path, energies);
}

} // namespace tessarin
