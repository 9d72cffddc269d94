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

/// Why --strict does not take a match, or nothing.
std::string WhyNotGood(const timed_result& result, const std::string& mismatch) {
    if (!mismatch.empty() || (result.match && result.match->verdict == "good")) {
        return mismatch;
    }
    if (result.match && result.match->verdict == "unknown") {
        return result.audio + ": the fit cannot be judged, because the model has no calibration; "
                              "put its file, with the ending .calibration, beside the model, or "
                              "leave out --strict";
    }
    return result.audio + ": does not fit the text";
}

/// One line on what does not fit; with --strict that is a failure.
void ReportMatch(const timed_result& result, bool isStrict) {
    const std::string mismatch = DescribeMismatch(result);
    const std::string failure = isStrict ? WhyNotGood(result, mismatch) : "";
    if (!failure.empty()) {
        throw Failure(kExitMismatch, failure);
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
    const EngineLanguage language(options.recording.data);
    const SpokenText text = ReadText(options.text, language);
    if (options.areSentencesWanted) {
        const ScriptOptions script(options.text, language);
        FindSentences(options.recording, {options.search.beam, options.leastScore}, text,
                      script.GetFlat(), language.GetFlat());
        return;
    }
    const tessarin::model_owner model = LoadModel(options.recording.data);
    const timed_result result = AnimateRecording(
        options.recording, *model, &text,
        SearchForText(text, language.GetTranscriber(), options.recording.data, options.search));
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
        if (options->isStrict && options->search.match == "exact") {
            throw Failure(kExitUsage, match->get_name() + " exact does not look for what --strict "
                                                          "asks");
        }
        RunAlign(*options);
    });
}
