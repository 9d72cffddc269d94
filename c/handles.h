#pragma once

#include <memory>

#include "tessarin/tessarin.h"

namespace tessarin {

/// Owners of what the factories give, each with its own way to free it.
template <auto Destroy> struct destroyer {
    template <class T> void operator()(T* object) const { Destroy(object); }
};

using model_owner = std::unique_ptr<CAccousticHMM, destroyer<DestroyAccHMM>>;
using transcriber_owner = std::unique_ptr<IVisemixTranscriber, destroyer<DestroyTranscriber>>;
using editor_owner = std::unique_ptr<ILexiconEditor, destroyer<DestroyLexiconEditor>>;
using observations_owner = std::unique_ptr<IObservationStream, destroyer<DestroyObservationStream>>;
using results_owner =
    std::unique_ptr<ISyncResultsCollection, destroyer<DestroySyncResultsCollection>>;
using aligner_owner =
    std::unique_ptr<ITextBasedPhnRecognizer, destroyer<DestroyTextBasedRecognizer>>;
using free_recognizer_owner =
    std::unique_ptr<ITextlessPhnRecognizer, destroyer<DestroyTextlessPhnRecognizer>>;
using articulator_owner =
    std::unique_ptr<IPhnMixtureArticulator, destroyer<DestroyPhonemeArticulator>>;

} // namespace tessarin
