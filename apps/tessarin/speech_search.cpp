#include "apps/tessarin/speech_search.h"

#include <memory>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/readers/spoken_text.h"

recording_search SearchForText(const SpokenText& text, tessarin::IVisemixTranscriber& transcriber,
                               int beam, bool retry) {
    tessarin::ITextBasedPhnRecognizer* made = nullptr;
    CreateTextBasedRecognizer(&made);
    if (made == nullptr) {
        throw EngineFailure("recognizer", tessarin::kOutOfMemory);
    }
    const std::shared_ptr<tessarin::ITextBasedPhnRecognizer> recognizer =
        tessarin::aligner_owner(made);
    if (beam > 0) {
        recognizer->SetBeamWidth(beam);
    }
    recognizer->SetOutputOptions(retry ? 1 : 0, 0);
    return [recognizer, &text, &transcriber](
               opened_recording& recording, tessarin::CAccousticHMM& model,
               tessarin::ProgressSink& progress, tessarin::ISyncResultsCollection& results) {
        return recognizer->RecognizePhonemes(recording.observations.get(), &model,
                                             text.GetLocal().c_str(), &transcriber, &progress,
                                             &results);
    };
}

recording_search SearchForSounds() {
    tessarin::ITextlessPhnRecognizer* made = nullptr;
    CreateTextlessPhnRecognizer(&made);
    if (made == nullptr) {
        throw EngineFailure("recognizer", tessarin::kOutOfMemory);
    }
    const std::shared_ptr<tessarin::ITextlessPhnRecognizer> recognizer =
        tessarin::free_recognizer_owner(made);
    return
        [recognizer](opened_recording& recording, tessarin::CAccousticHMM& model,
                     tessarin::ProgressSink& progress, tessarin::ISyncResultsCollection& results) {
            return recognizer->RecognizePhonemes(recording.observations.get(), &model, &progress,
                                                 &results);
        };
}

void LoadTrigrams(const trigram_options& options, const data_options& data,
                  tessarin::CAccousticHMM& model) {
    const std::string path = DataPathOr(options.file, data, kTrigramsName);
    const uint8_t normalise = options.counts || options.file.empty() ? 1 : 0;
    const int32_t code = LoadTrigramFileIntoHMM(&model, path.c_str(), normalise);
    if (code != tessarin::kNoError) {
        throw EngineFailure(path, code);
    }
}
