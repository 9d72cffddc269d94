#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "apps/tessarin/command_matcher.h"
#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/console/progress_bar.h"
#include "apps/tessarin/live_commands.h"
#include "apps/tessarin/options/engine_data.h"
#include "apps/tessarin/readers/recording_samples.h"

namespace {

using json = nlohmann::ordered_json;

constexpr double kLiveFloorDb = 35.0; // above the noise of a quiet room

struct commands_options {
    std::vector<std::string> files;
    std::vector<std::string> records;
    std::string load;
    std::string save;
    bool live = false;
    uint32_t rateHz = 16000;
    std::optional<double> floorDb;
    std::string channel = "1";
    data_options data;
    std::string format = "tsv";
    std::string output = "-";
    bool quiet = false;

    bool AreSampled() const { return !records.empty() || !load.empty(); }
    double FloorDb() const { return floorDb.value_or(live ? kLiveFloorDb : 0.0); }
};

/// Writes the rows that are found, each at once when they go to standard output.
class RowWriter {
public:
    RowWriter(const commands_options& commandOptions, const char* nameOfPlace,
              const char* nameOfScore)
        : options(commandOptions), placeName(nameOfPlace), scoreName(nameOfScore) {
        if (options.format == "tsv") {
            Put(std::string(placeName) + "\tcommand\t" + scoreName + "\n");
        }
    }

    void Write(const std::string& place, const command_match& match) {
        Put(options.format == "json" ? AsJson(place, match) : AsTsv(place, match));
    }

    /// To be called last.
    void Finish() const {
        if (options.output != "-") {
            WriteOutput(options.output, pending);
        }
    }

private:
    std::string AsTsv(const std::string& place, const command_match& match) const {
        if (match.name.empty()) {
            return place + "\t\t\n";
        }
        char score[32];
        std::snprintf(score, sizeof(score), "%.6g", match.score);
        return place + "\t" + match.name + "\t" + score + "\n";
    }

    std::string AsJson(const std::string& place, const command_match& match) const {
        json row{{placeName, place}, {"command", nullptr}, {scoreName, nullptr}};
        if (!match.name.empty()) {
            row["command"] = match.name;
            row[scoreName] = match.score;
        }
        return row.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
    }

    void Put(const std::string& text) {
        if (options.output == "-") {
            WriteOutput("-", text);
        } else {
            pending += text;
        }
    }

    const commands_options& options;
    const char* placeName;
    const char* scoreName;
    std::string pending;
};

/// Entries of --record without a name are recordings to be recognized: the option takes all words
/// up to the next one.
void PartRecords(commands_options& options) {
    const auto isRecord = [](const std::string& word) {
        return word.find('=') != std::string::npos;
    };
    const auto recordings =
        std::stable_partition(options.records.begin(), options.records.end(), isRecord);
    options.files.insert(options.files.end(), recordings, options.records.end());
    options.records.erase(recordings, options.records.end());
}

void RequireUsable(const commands_options& options) {
    const auto refuse = [](const std::string& why) {
        throw Failure(kExitUsage, "commands: " + why);
    };
    if (!options.AreSampled() && options.files.empty()) {
        refuse("no commands; give a list of them, or samples with --record or --load");
    }
    for (const std::string& record : options.records) {
        if (record.front() == '=') {
            refuse("--record " + record + ": the name is missing");
        }
    }
    if (!options.save.empty() && !options.AreSampled()) {
        refuse("--save needs samples; give some with --record");
    }
    const size_t recordings = options.files.size() - (options.AreSampled() ? 0 : 1);
    if (options.live && recordings > 0) {
        refuse("--live listens to standard input, and takes no recordings");
    }
    if (!options.live && recordings == 0 && options.save.empty()) {
        refuse("nothing to recognize; give recordings, or --live");
    }
}

tessarin::flat::audio_owner OpenAudio(const commands_options& options, const std::string& path) {
    return FlatAudio(path, *LoadSamples(path, ChannelNumber(options.channel), nullptr));
}

void FillSamples(const commands_options& options, CommandMatcher& commands) {
    if (!options.load.empty()) {
        commands.LoadSamples(options.load);
    }
    for (const std::string& record : options.records) {
        const size_t equals = record.find('=');
        const std::string path = record.substr(equals + 1);
        commands.Record(record.substr(0, equals), path, *OpenAudio(options, path));
    }
    if (!options.save.empty()) {
        WriteOutput(options.save, commands.PackSamples());
    }
}

void FillTexts(const commands_options& options, CommandMatcher& commands) {
    const EngineLanguage language(options.data);
    commands.Add(ReadCommandList(options.files.front()), language.GetFlat(),
                 language.GetTranscriber());
}

void MatchRecordings(const commands_options& options, CommandMatcher& commands,
                     const tessarin_progress& progress, RowWriter& rows) {
    for (size_t i = options.AreSampled() ? 0 : 1; i < options.files.size(); ++i) {
        const std::string& path = options.files[i];
        rows.Write(path, commands.Match(path, *OpenAudio(options, path), progress));
        if (WasInterrupted()) {
            throw EngineFailure(path, tessarin::kUserCancelled);
        }
    }
}

/// Rows for what is heard on standard input; what is not a command is passed over.
void MatchLive(const commands_options& options, CommandMatcher& commands,
               const tessarin_progress& progress, RowWriter& rows) {
    FollowUtterances(commands, options.rateHz, [&](int64_t endMs) {
        const command_match found = commands.MatchHeard(progress);
        if (!found.name.empty()) {
            rows.Write(std::to_string(endMs), found);
        }
    });
}

void RunCommands(commands_options options) {
    PartRecords(options);
    RequireUsable(options);
    CatchInterrupts();
    const tessarin::flat::model_owner model = LoadFlatModel(options.data);
    CommandMatcher commands(*model, options.FloorDb());
    if (options.AreSampled()) {
        FillSamples(options, commands);
        if (!options.live && options.files.empty()) {
            return;
        }
    } else {
        FillTexts(options, commands);
    }
    RowWriter rows(options, options.live ? "end_ms" : "audio",
                   options.AreSampled() ? "distance" : "score");
    ProgressBar bar(options.quiet);
    const tessarin_progress progress = bar.GetFlat();
    if (options.live) {
        MatchLive(options, commands, progress, rows);
    } else {
        MatchRecordings(options, commands, progress, rows);
    }
    rows.Finish();
}

} // namespace

void AddCommandsCommand(CLI::App& app) {
    auto options = std::make_shared<commands_options>();
    CLI::App* command = app.add_subcommand(
        "commands", "Recognize which of a few commands was said, from their text or from samples");
    command
        ->add_option("FILES", options->files,
                     "A list of commands, unless there are samples: each line is a text, or a "
                     "name, = and phonemes. After it, the recordings to recognize")
        ->option_text("[COMMANDS.txt] [AUDIO...]");
    command->add_option("--record", options->records, "Samples of the command NAME")
        ->option_text("NAME=AUDIO...");
    command->add_option("--load", options->load, "Samples that --save wrote")->option_text("FILE");
    command->add_option("--save", options->save, "File to save all samples in")
        ->option_text("FILE");
    command->add_flag("--live", options->live,
                      "Listen to standard input, 16-bit mono samples, and report the command at "
                      "the end of each utterance");
    command->add_option("--rate", options->rateHz, "Sample rate of --live [16000]")
        ->check(CLI::Range(8000u, 65535u))
        ->option_text("HZ");
    command
        ->add_option("--floor", options->floorDb,
                     "Ignore what is not louder than this; 0 keeps everything [0; with --live, 35]")
        ->check(CLI::Range(0.0, 100.0))
        ->option_text("DB");
    command->add_option("--channel", options->channel, "Channel to listen to, from 1, or mix [1]")
        ->check(CLI::Range(1, 1024) | CLI::IsMember({"mix"}))
        ->option_text("N|mix");
    command->add_option("--model", options->data.model, "Acoustic model [the project's own]")
        ->option_text("FILE");
    AddLexiconOptions(*command, &options->data);
    AddDataFolderOption(*command, &options->data);
    command
        ->add_option("--format", options->format, "tsv, or json with one line per recording [tsv]")
        ->check(CLI::IsMember({"json", "tsv"}))
        ->option_text("FORMAT");
    command->add_option("-o,--output", options->output, "File to write [-, standard output]")
        ->option_text("FILE");
    command->add_flag("-q,--quiet", options->quiet, "Show no progress bar");
    command->callback([options] { RunCommands(*options); });
}
