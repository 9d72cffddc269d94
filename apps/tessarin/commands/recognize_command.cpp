#include <memory>

#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/speech_search.h"

namespace {

struct recognize_options {
    recording_options recording;
    sound_search_options search;
};

void RunRecognize(const recognize_options& options) {
    const tessarin::model_owner model = LoadSoundModel(options.search, options.recording.data);
    AnimateRecording(options.recording, *model, nullptr, SearchForSounds());
}

} // namespace

void AddRecognizeCommand(CLI::App& app) {
    auto options = std::make_shared<recognize_options>();
    CLI::App* command = app.add_subcommand(
        "recognize", "Find phonemes without a text, and make the mouth shapes from them");
    AddRecordingOptions(*command, &options->recording);
    AddAdaptOption(*command, &options->recording);
    AddSoundSearchOptions(*command, &options->search);
    command->callback([options] { RunRecognize(*options); });
}
