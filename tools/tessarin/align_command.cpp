#include <memory>
#include <string>

#include "tools/tessarin/failure.h"
#include "tools/tessarin/recording_command.h"
#include "tools/tessarin/speech_search.h"
#include "tools/tessarin/text_options.h"

namespace {

struct align_options {
    recording_options recording;
    text_options text;
    int beam = 0;
};

void RunAlign(const align_options& options) {
    if (!options.text.IsGiven()) {
        throw Failure(kExitUsage, "align: the text that is said is missing; give it with --text or "
                                  "--text-file, or use recognize, which needs none");
    }
    const model_handle model = LoadModel(options.recording.data);
    const transcriber_handle transcriber = LoadTranscriber(options.recording.data);
    const SpokenText text = ReadText(options.text, *transcriber);
    AnimateRecording(options.recording, *model, &text,
                     SearchForText(text, *transcriber, options.beam));
}

} // namespace

void AddAlignCommand(CLI::App& app) {
    auto options = std::make_shared<align_options>();
    CLI::App* command = app.add_subcommand(
        "align", "Find when each phoneme and word of a text was spoken, and the mouth shapes");
    AddRecordingOptions(*command, &options->recording);
    AddTextOptions(*command, &options->text);
    AddLexiconOptions(*command, &options->recording.data);
    command
        ->add_option("--beam", options->beam,
                     "Width of the search in states, 500 to 8000 [2000]; raise it when the search "
                     "loses the text")
        ->check(CLI::Range(500, 8000))
        ->option_text("N");
    command->callback([options] { RunAlign(*options); });
}
