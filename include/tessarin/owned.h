#pragma once

#include <memory>

#include "tessarin/tessarin.h"
#include "tessarin/tessarin_c.h"

/** @file
 * Owning pointers for what the factories and the flat interface give, each with its own way to free
 * it, and a way to hand them to the functions that fill them. For callers in C++17 or later;
 * nothing here is part of the binary interface.
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
using match_aligner_owner = std::unique_ptr<IMatchAligner, destroyer<DestroyMatchAligner>>;
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

/// Owners of the objects of the flat interface.
namespace flat {
using model_owner = std::unique_ptr<tessarin_model, destroyer<tessarin_free_model>>;
using language_owner = std::unique_ptr<tessarin_language, destroyer<tessarin_free_language>>;
using audio_owner = std::unique_ptr<tessarin_audio, destroyer<tessarin_free_audio>>;
using script_owner = std::unique_ptr<tessarin_script, destroyer<tessarin_free_script>>;
using transcript_owner = std::unique_ptr<tessarin_transcript, destroyer<tessarin_free_transcript>>;
using result_owner = std::unique_ptr<tessarin_result, destroyer<tessarin_free_result>>;
using track_owner = std::unique_ptr<tessarin_track, destroyer<tessarin_free_track>>;
using shapes_owner = std::unique_ptr<tessarin_shapes, destroyer<tessarin_free_shapes>>;
using switches_owner = std::unique_ptr<tessarin_switches, destroyer<tessarin_free_switches>>;
using lexicon_owner = std::unique_ptr<tessarin_lexicon, destroyer<tessarin_free_lexicon>>;
using commands_owner = std::unique_ptr<tessarin_commands, destroyer<tessarin_free_commands>>;
using live_owner = std::unique_ptr<tessarin_live, destroyer<tessarin_free_live>>;
using sentence_search_owner =
    std::unique_ptr<tessarin_sentence_search, destroyer<tessarin_free_sentence_search>>;
} // namespace flat

/// Receives what a function writes through its last parameter, and hands it to `owner` at the end
/// of the full expression.
template <class Owner> class out_parameter {
public:
    explicit out_parameter(Owner& receiver) : owner(receiver) {}
    ~out_parameter() { owner.reset(made); }
    out_parameter(const out_parameter&) = delete;
    out_parameter& operator=(const out_parameter&) = delete;

    operator typename Owner::pointer *() { return &made; }

private:
    Owner& owner;
    typename Owner::pointer made = nullptr;
};

/// For the last argument of a factory: CreateX(..., Out(owner)).
template <class Owner> out_parameter<Owner> Out(Owner& owner) {
    return out_parameter<Owner>(owner);
}

} // namespace tessarin
