#include <cstdio>
#include <memory>
#include <string>

#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/commands/sentence_command.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/match_report.h"
#include "apps/tessarin/options/text_options.h"
#include "apps/tessarin/speech_search.h"

namespace {

struct align_options {
    recording_options recording;
    text_options text;
    double leastScore = sentence_options{}.leastScore;
    bool areSentencesWanted = false;
    text_search_options search;
    bool isStrict = false;
};

/// One line on what does not fit; with --strict that is a failure.
void ReportMatch(const timed_result& result, bool isStrict) {
    const std::string mismatch = DescribeMismatch(result);
    const bool isGood = result.match && (result.match->verdict == "good" ||
                                         (result.match->verdict == "unknown" && mismatch.empty()));
    if (isStrict && !isGood) {
        throw Failure(kExitMismatch,
                      mismatch.empty() ? result.audio + ": does not fit the text" : mismatch);
    }
    if (!mismatch.empty()) {
        std::fprintf(stderr, "tessarin: %s\n", mismatch.c_str());
    }
}

void RunAlign(const align_options& options) {
    if (!options.text.IsGiven()) {
        throw Failure(kExitUsage, "align: the text is missing; give what is said with --text or "
                                  "--text-file, or use recognize, which needs none");
    }
    const tessarin::transcriber_owner transcriber = LoadTranscriber(options.recording.data);
    const SpokenText text = ReadText(options.text, options.recording.data, *transcriber);
    if (options.areSentencesWanted) {
        const ScriptOptions script(options.text, options.recording.data, *transcriber);
        FindSentences(options.recording, {options.search.beam, options.leastScore}, text,
                      script.GetFlat(), *transcriber);
        return;
    }
    const tessarin::model_owner model = LoadModel(options.recording.data);
    const timed_result result =
        AnimateRecording(options.recording, *model, &text,
                         SearchForText(text, *transcriber, options.recording.data, options.search));
    ReportMatch(result, options.isStrict);
}

} // namespace

void AddAlignCommand(CLI::App& app) {
    auto options = std::make_shared<align_options>();
    CLI::App* command = app.add_subcommand(
        "align", "Find when each phoneme and word of a text was spoken, and make the mouth shapes");
    AddRecordingOptions(*command, &options->recording);
    AddTextOptions(*command, &options->text);
    AddLexiconOptions(*command, &options->recording.data);
    AddTextSearchOptions(*command, &options->search);
    CLI::Option* sentences =
        command->add_flag("--sentences", options->areSentencesWanted,
                          "Find which sentences of the text were said, in the order of the text, "
                          "in a recording that may contain other speech");
    command
        ->add_option("--least-score", options->leastScore,
                     "Score that a sentence must reach to be found; one that was not said seldom "
                     "reaches it [5.5]")
        ->check(CLI::Range(-100.0, 100.0))
        ->needs(sentences)
        ->option_text("SCORE");
    CLI::Option* match = command->get_option("--match")->excludes(sentences);
    command->get_option("--retry")->excludes(sentences);
    command
        ->add_flag("--strict", options->isStrict,
                   "End with exit code 4 when text and recording do not fit well")
        ->excludes(sentences);
    command->callback([options, match] {
        if (options->isStrict && options->search.match == tessarin::kMatchExact) {
            throw Failure(kExitUsage, match->get_name() + " exact does not look for what --strict "
                                                          "asks");
        }
        RunAlign(*options);
    });
}
