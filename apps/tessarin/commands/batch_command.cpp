#include <cstdio>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "apps/tessarin/batch/batch_options.h"
#include "apps/tessarin/batch/batch_report.h"
#include "apps/tessarin/batch/batch_run.h"
#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/progress_bar.h"

namespace {

/// The options that change results, as they were given: a result that was made with others is not
/// what is asked for now.
std::string FingerprintOf(const CLI::App& command) {
    static const std::set<std::string> kOthers = {"out",    "jobs",  "shard", "only",
                                                  "resume", "merge", "quiet", "help"};
    std::string all;
    for (const CLI::Option* option : command.get_options()) {
        const std::string name = option->get_name(false, true);
        const bool isOther =
            option->get_positional() ||
            (!option->get_lnames().empty() && kOthers.contains(option->get_lnames().front()));
        if (option->count() > 0 && !isOther) {
            all += name;
            for (const std::string& value : option->results()) {
                all += '\0' + value;
            }
            all += '\n';
        }
    }
    return all;
}

void Merge(const batch_options& options) {
    std::vector<std::string> missing;
    const std::string out =
        options.outputFolder.empty() ? options.merged.front() : options.outputFolder;
    const size_t failed = MergeReports(options.merged, out, &missing);
    for (const std::string& shard : missing) {
        std::fprintf(stderr, "tessarin: there is no report of shard %s\n", shard.c_str());
    }
    if (failed > 0 || !missing.empty()) {
        throw Failure(kExitSomeFailed, out + ": " + std::to_string(failed) +
                                           " recordings failed, and " +
                                           std::to_string(missing.size()) + " shards are missing");
    }
}

void Run(const batch_options& options) {
    if (!options.merged.empty()) {
        Merge(options);
        return;
    }
    if (options.input.empty() || options.outputFolder.empty()) {
        throw Failure(kExitUsage, "batch: give a list or a folder of recordings, and with --out "
                                  "the folder for what is made of them");
    }
    const batch_outcome outcome = RunBatch(options);
    if (WasInterrupted()) {
        throw Failure(kExitCancelled, std::to_string(outcome.open) +
                                          " recordings are left; --resume goes on with them");
    }
    if (outcome.failed > 0) {
        throw Failure(kExitSomeFailed, std::to_string(outcome.failed) + " of " +
                                           std::to_string(outcome.total) +
                                           " recordings failed; the report in " +
                                           options.outputFolder + " gives the reasons");
    }
}

} // namespace

void AddBatchCommand(CLI::App& app) {
    auto options = std::make_shared<batch_options>();
    CLI::App* command = app.add_subcommand(
        "batch", "Align or recognize many recordings, on all cores, with a report");
    command
        ->add_option("LIST|FOLDER", options->input,
                     "List (.csv, .tsv, .jsonl) with the columns audio and text, text_file, words, "
                     "speaker, options or name; or a folder of recordings with texts beside them")
        ->option_text(" ");
    command->add_option("--out", options->outputFolder, "Folder for outputs, journal and report")
        ->option_text("FOLDER");
    command
        ->add_option("--jobs", options->jobs, "Recordings that are worked on at a time [all cores]")
        ->check(CLI::Range(1, 1024))
        ->option_text("N");
    CLI::Option* resume = command->add_flag(
        "--resume", options->isResumed,
        "Go on where an earlier run was stopped: what is whole and would come out "
        "the same is not made again");
    command
        ->add_option("--only", options->only,
                     "Work again on some lines: the names in a file, or what the report says, such "
                     "as failed, poor, doubtful, words (that the lexicon lacks), clipped, flagged; "
                     "several with commas")
        ->excludes(resume)
        ->option_text("FILE|STATE");
    command
        ->add_option("--shard", options->shard,
                     "Work on one of several parts of the list, such as 2/8, independent of the "
                     "others")
        ->option_text("K/N");
    command
        ->add_option("--merge", options->merged,
                     "Join the reports of folders, or of the shards in one, into one report in "
                     "--out [the first of them]")
        ->expected(1, 1 << 20)
        ->option_text("FOLDER...");
    static const std::map<std::string, batch_pages> kPages = {{"none", batch_pages::kNone},
                                                              {"flagged", batch_pages::kFlagged},
                                                              {"all", batch_pages::kAll}};
    command
        ->add_option_function<std::string>(
            "--pages", [options](const std::string& which) { options->pages = kPages.at(which); },
            "Lines for which the page of view is written, too, which the report links: "
            "none, those to be looked at (flagged), or all [none]")
        ->check(CLI::IsMember({"none", "flagged", "all"}))
        ->option_text("WHICH");
    AddModelOptions(*command, &options->line.recording.data);
    AddLexiconOptions(*command, &options->line.recording.data);
    AddLineOptions(*command, &options->line);
    AddFormatOptions(*command, &options->line.recording.outputs);
    AddSoundSearchOptions(*command, &options->sounds);
    command->add_flag("-q,--quiet", options->line.recording.quiet, "Show no progress");
    command->callback([options, command] {
        options->fingerprint = FingerprintOf(*command);
        Run(*options);
    });
}
