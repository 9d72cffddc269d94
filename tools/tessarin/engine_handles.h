#pragma once

#include <memory>

#include "tessarin/tessarin.h"

/// Owners of what the library's factories give, each with its own way to free it.
template <auto Destroy> struct engine_deleter {
    template <class T> void operator()(T* object) const { Destroy(object); }
};

using model_handle = std::unique_ptr<tessarin::CAccousticHMM, engine_deleter<DestroyAccHMM>>;
using observation_stream_handle =
    std::unique_ptr<tessarin::IObservationStream, engine_deleter<DestroyObservationStream>>;
using results_handle =
    std::unique_ptr<tessarin::ISyncResultsCollection, engine_deleter<DestroySyncResultsCollection>>;
using recognizer_handle =
    std::unique_ptr<tessarin::ITextBasedPhnRecognizer, engine_deleter<DestroyTextBasedRecognizer>>;
using textless_recognizer_handle =
    std::unique_ptr<tessarin::ITextlessPhnRecognizer, engine_deleter<DestroyTextlessPhnRecognizer>>;
using realtime_recognizer_handle =
    std::unique_ptr<tessarin::IRealtimePhnRecognizer, engine_deleter<DestroyRealtimePhnRecognizer>>;
using articulator_handle =
    std::unique_ptr<tessarin::IPhnMixtureArticulator, engine_deleter<DestroyPhonemeArticulator>>;

using editor_handle =
    std::unique_ptr<tessarin::ILexiconEditor, engine_deleter<DestroyLexiconEditor>>;

/// Frees a transcriber, and then the editor that it looks its words up in, if it has one.
struct transcriber_deleter {
    editor_handle editor;

    void operator()(tessarin::IVisemixTranscriber* transcriber) {
        DestroyTranscriber(transcriber);
        editor.reset();
    }
};
using transcriber_handle = std::unique_ptr<tessarin::IVisemixTranscriber, transcriber_deleter>;
