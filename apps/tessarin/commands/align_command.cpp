#include <memory>
#include <string>

#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/commands/sentence_command.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/options/text_options.h"
#include "apps/tessarin/speech_search.h"

namespace {

struct align_options {
    recording_options recording;
    text_options text;
    sentence_options sentences;
    bool areSentencesWanted = false;
    bool retry = false;
};

void RunAlign(const align_options& options) {
    if (!options.text.IsGiven()) {
        throw Failure(kExitUsage, "align: the text that is said is missing; give it with --text or "
                                  "--text-file, or use recognize, which needs none");
    }
    const tessarin::model_owner model = LoadModel(options.recording.data);
    const tessarin::transcriber_owner transcriber = LoadTranscriber(options.recording.data);
    const SpokenText text = ReadText(options.text, *transcriber);
    if (options.areSentencesWanted) {
        FindSentences(options.recording, options.sentences, *model, text, *transcriber);
        return;
    }
    AnimateRecording(options.recording, *model, &text,
                     SearchForText(text, *transcriber, options.sentences.beam, options.retry));
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
        ->add_option("--beam", options->sentences.beam,
                     "Width of the search in states, 500 to 8000 [2000]; raise it when the search "
                     "loses the text")
        ->check(CLI::Range(500, 8000))
        ->option_text("N");
    CLI::Option* sentences = command->add_flag(
        "--sentences", options->areSentencesWanted,
        "Find which sentences of the text were said, in the order of the text, in a recording that "
        "may hold other things too");
    command
        ->add_option(
            "--least-score", options->sentences.leastScore,
            "What a sentence must score to be found; what was not said seldom reaches it [5.5]")
        ->check(CLI::Range(-100.0, 100.0))
        ->needs(sentences)
        ->option_text("SCORE");
    command
        ->add_flag("--retry", options->retry,
                   "Slide the window of the search ahead where it loses the text")
        ->excludes(sentences);
    command->callback([options] { RunAlign(*options); });
}
