#include <memory>
#include <string>

#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/speech_search.h"

namespace {

struct recognize_options {
    recording_options recording;
    trigram_options trigrams;
    bool noTrigrams = false;
    std::string limits;
};

void LoadConstraints(const recognize_options& options, tessarin::CAccousticHMM& model) {
    if (!options.noTrigrams) {
        LoadTrigrams(options.trigrams, options.recording.data, model);
    }
    if (!options.limits.empty()) {
        const int32_t code = LoadPhoneConstraintsFileIntoHMM(&model, options.limits.c_str(), 0);
        if (code != tessarin::kNoError) {
            throw EngineFailure(options.limits, code);
        }
    }
}

void RunRecognize(const recognize_options& options) {
    const tessarin::model_owner model = LoadHearingModel(options.recording.data);
    LoadConstraints(options, *model);
    AnimateRecording(options.recording, *model, nullptr, SearchForSounds());
}

} // namespace

void AddRecognizeCommand(CLI::App& app) {
    auto options = std::make_shared<recognize_options>();
    CLI::App* command = app.add_subcommand(
        "recognize", "Find phonemes without a text, and make the mouth shapes from them");
    AddRecordingOptions(*command, &options->recording);
    auto* trigrams = command->add_option("--trigrams", options->trigrams.file,
                                         "Statistics of phoneme sequences [the project's own]");
    trigrams->option_text("FILE");
    command->add_flag("--counts", options->trigrams.counts, "The numbers in --trigrams are counts")
        ->needs(trigrams);
    auto* noTrigrams = command
                           ->add_flag("--no-trigrams", options->noTrigrams,
                                      "Search without statistics of phoneme sequences")
                           ->excludes(trigrams);
    command
        ->add_option("--adapt", options->recording.adapt,
                     "Fit the model to the voice first: on, off, or auto, which does so for voices "
                     "that it does not know [auto]")
        ->check(CLI::IsMember({"auto", "on", "off"}))
        ->option_text("auto|on|off");
    // Only the search with statistics knows limits.
    command
        ->add_option("--limits", options->limits,
                     "Longest durations: lines of phonemes and milliseconds")
        ->excludes(noTrigrams)
        ->option_text("FILE");
    command->callback([options] { RunRecognize(*options); });
}
