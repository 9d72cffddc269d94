#include <memory>
#include <string>

#include "tools/tessarin/failure.h"
#include "tools/tessarin/file_io.h"
#include "tools/tessarin/recording_command.h"

namespace {

struct recognize_options {
    recording_options recording;
    std::string trigrams;
    bool counts = false;
    bool noTrigrams = false;
    std::string limits;
};

textless_recognizer_handle MakeRecognizer() {
    tessarin::ITextlessPhnRecognizer* recognizer = nullptr;
    CreateTextlessPhnRecognizer(&recognizer);
    if (recognizer == nullptr) {
        throw EngineFailure("recognizer", tessarin::kOutOfMemory);
    }
    return textless_recognizer_handle(recognizer);
}

void LoadConstraints(const recognize_options& options, tessarin::CAccousticHMM& model) {
    if (!options.noTrigrams) {
        const std::string path =
            DataPathOr(options.trigrams, options.recording.data, kTrigramsName);
        const uint8_t normalise = options.counts || options.trigrams.empty() ? 1 : 0;
        const int32_t code = LoadTrigramFileIntoHMM(&model, path.c_str(), normalise);
        if (code != tessarin::kNoError) {
            throw EngineFailure(path, code);
        }
    }
    if (!options.limits.empty()) {
        const int32_t code = LoadPhoneConstraintsFileIntoHMM(&model, options.limits.c_str(), 0);
        if (code != tessarin::kNoError) {
            throw EngineFailure(options.limits, code);
        }
    }
}

void RunRecognize(const recognize_options& options) {
    const model_handle model = LoadModel(options.recording.data);
    LoadConstraints(options, *model);
    const textless_recognizer_handle recognizer = MakeRecognizer();
    AnimateRecording(options.recording, *model, nullptr,
                     [&](opened_recording& recording, tessarin::CAccousticHMM& usedModel,
                         tessarin::ProgressSink& progress,
                         tessarin::ISyncResultsCollection& results) {
                         return recognizer->RecognizePhonemes(recording.observations.get(),
                                                              &usedModel, &progress, &results);
                     });
}

} // namespace

void AddRecognizeCommand(CLI::App& app) {
    auto options = std::make_shared<recognize_options>();
    CLI::App* command = app.add_subcommand(
        "recognize", "Hear phonemes without a text, and make the mouth shapes from them");
    AddRecordingOptions(*command, &options->recording);
    auto* trigrams = command->add_option("--trigrams", options->trigrams,
                                         "Statistics of phoneme sequences [the project's own]");
    command->add_flag("--counts", options->counts, "The numbers of --trigrams are counts")
        ->needs(trigrams);
    auto* noTrigrams =
        command->add_flag("--no-trigrams", options->noTrigrams, "Hear without statistics")
            ->excludes(trigrams);
    // Only the search with statistics knows limits.
    command
        ->add_option("--limits", options->limits,
                     "Longest times: lines of phonemes and milliseconds")
        ->excludes(noTrigrams);
    command->callback([options] { RunRecognize(*options); });
}
