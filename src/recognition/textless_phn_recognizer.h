#pragma once

#include "recognition/acc_phn_viterbi.h"
#include "tessarin/textless_recognizer.h"

namespace tessarin {

/// The phoneme recognizer for audio without a text.
class CTextlessPhnRecognizer : public ITextlessPhnRecognizer, public CAccPhnViterbi {
public:
    ~CTextlessPhnRecognizer() override = default;

    error_code RecognizePhonemes(IObservationStream* stream, CAccousticHMM* model,
                                 ProgressSink* progress, ISyncResultsCollection* results) override;
    /// FreeViterbiLM, which Viterbi hands over to where the model knows the language.
    virtual error_code ViterbiLM(const CAccousticHMM& model, IObservationStream& stream,
                                 ProgressSink* progress, TArray<uint32_t>& path,
                                 TArray<float>& energies);
    error_code Viterbi(const CAccousticHMM& model, IObservationStream& stream,
                       ProgressSink* progress, TArray<uint32_t>& path,
                       TArray<float>& energies) override;
};

} // namespace tessarin
