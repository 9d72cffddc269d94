#pragma once

#include <memory>

#include "tessarin/tessarin.h"

/** @file
 * Owning pointers for what the factories give, each with its own way to free it. For callers in
 * C++; nothing here is part of the binary interface.
 */

namespace tessarin {

/// Frees an object by the function that belongs to its factory.
template <auto Destroy> struct destroyer {
    template <class T> void operator()(T* object) const { Destroy(object); }
};

/// Frees a counted object by letting go of it.
struct releaser {
    template <class T> void operator()(T* object) const { object->Release(); }
};

using model_owner = std::unique_ptr<CAccousticHMM, destroyer<DestroyAccHMM>>;
using editor_owner = std::unique_ptr<ILexiconEditor, destroyer<DestroyLexiconEditor>>;
using observations_owner = std::unique_ptr<IObservationStream, destroyer<DestroyObservationStream>>;
using results_owner =
    std::unique_ptr<ISyncResultsCollection, destroyer<DestroySyncResultsCollection>>;
using aligner_owner =
    std::unique_ptr<ITextBasedPhnRecognizer, destroyer<DestroyTextBasedRecognizer>>;
using free_recognizer_owner =
    std::unique_ptr<ITextlessPhnRecognizer, destroyer<DestroyTextlessPhnRecognizer>>;
using realtime_recognizer_owner =
    std::unique_ptr<IRealtimePhnRecognizer, destroyer<DestroyRealtimePhnRecognizer>>;
using articulator_owner =
    std::unique_ptr<IPhnMixtureArticulator, destroyer<DestroyPhonemeArticulator>>;

/// Frees a transcriber, and then the editor that it looks its words up in, if it has one.
struct transcriber_destroyer {
    editor_owner editor;

    void operator()(IVisemixTranscriber* transcriber) {
        DestroyTranscriber(transcriber);
        editor.reset();
    }
};
using transcriber_owner = std::unique_ptr<IVisemixTranscriber, transcriber_destroyer>;

} // namespace tessarin
