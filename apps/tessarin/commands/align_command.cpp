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
        throw Failure(kExitUsage, "align: the text is missing; give what is said with --text or "
                                  "--text-file, or use recognize, which needs none");
    }
    const tessarin::transcriber_owner transcriber = LoadTranscriber(options.recording.data);
    const SpokenText text = ReadText(options.text, options.recording.data, *transcriber);
    if (options.areSentencesWanted) {
        const ScriptOptions script(options.text, options.recording.data, *transcriber);
        FindSentences(options.recording, options.sentences, text, script.GetFlat(), *transcriber);
        return;
    }
    const tessarin::model_owner model = LoadModel(options.recording.data);
    AnimateRecording(options.recording, *model, &text,
                     SearchForText(text, *transcriber, options.sentences.beam, options.retry));
}

} // namespace

void AddAlignCommand(CLI::App& app) {
    auto options = std::make_shared<align_options>();
    CLI::App* command = app.add_subcommand(
        "align", "Find when each phoneme and word of a text was spoken, and make the mouth shapes");
    AddRecordingOptions(*command, &options->recording);
    AddTextOptions(*command, &options->text);
    AddLexiconOptions(*command, &options->recording.data);
    command
        ->add_option("--beam", options->sentences.beam,
                     "Width of the search in states, 500 to 8000 [2000]; raise it if the search "
                     "loses the text")
        ->check(CLI::Range(500, 8000))
        ->option_text("N");
    CLI::Option* sentences =
        command->add_flag("--sentences", options->areSentencesWanted,
                          "Find which sentences of the text were said, in the order of the text, "
                          "in a recording that may contain other speech");
    command
        ->add_option("--least-score", options->sentences.leastScore,
                     "Score that a sentence must reach to be found; one that was not said seldom "
                     "reaches it [5.5]")
        ->check(CLI::Range(-100.0, 100.0))
        ->needs(sentences)
        ->option_text("SCORE");
    command
        ->add_flag("--retry", options->retry,
                   "Slide the search window ahead where the search loses the text")
        ->excludes(sentences);
    command->callback([options] { RunAlign(*options); });
}
