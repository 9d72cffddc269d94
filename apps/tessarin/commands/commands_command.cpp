#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "apps/tessarin/command_matcher.h"
#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/console/progress_bar.h"
#include "apps/tessarin/live_commands.h"
#include "apps/tessarin/options/engine_data.h"
#include "apps/tessarin/readers/live_audio.h"
#include "apps/tessarin/readers/recording.h"

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

/// Live audio that has been kept.
class MemoryStream final : public tessarin::IQuibPCMStream {
public:
    explicit MemoryStream(const std::string& samples) : content(samples) {}

    void GetFormat(tessarin::PCMFormat* out) override { *out = {kLiveRateHz << 16, 16, 1}; }
    uint32_t GetSize() override { return static_cast<uint32_t>(content.size()); }
    int32_t Read(void* buffer, int32_t bytes) override {
        const size_t size = std::min(static_cast<size_t>(bytes), content.size() - place);
        std::memcpy(buffer, content.data() + place, size);
        place += size;
        return static_cast<int32_t>(size);
    }
    tessarin::error_code Start() override {
        place = 0;
        return tessarin::kNoError;
    }

private:
    const std::string& content;
    size_t place = 0;
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

int ChannelNumber(const std::string& channel) {
    return channel == "mix" ? 0 : std::stoi(channel);
}

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

void FillSamples(const commands_options& options, tessarin::CAccousticHMM& model,
                 SampledCommands& commands) {
    if (!options.load.empty()) {
        for (const command_sample& sample : ReadCommandSamples(options.load)) {
            commands.Load(sample, options.load);
        }
    }
    for (const std::string& record : options.records) {
        const size_t equals = record.find('=');
        const std::string name = record.substr(0, equals);
        const std::string path = record.substr(equals + 1);
        const opened_recording sample =
            OpenRecording(path, ChannelNumber(options.channel), {}, model);
        commands.Record(name, path, *sample.observations);
    }
    if (!options.save.empty()) {
        WriteCommandSamples(options.save, commands.Samples());
    }
}

void MatchRecordings(const commands_options& options, tessarin::CAccousticHMM& model,
                     RowWriter& rows, const std::vector<std::string>& recordings,
                     const std::function<command_match(tessarin::IObservationStream&)>& match) {
    for (const std::string& path : recordings) {
        const opened_recording recording =
            OpenRecording(path, ChannelNumber(options.channel), {}, model);
        rows.Write(path, match(*recording.observations));
        if (WasInterrupted()) {
            throw EngineFailure(path, tessarin::kUserCancelled);
        }
    }
}

/// Rows for what is heard on standard input; what is not a command is passed over.
void MatchLive(const commands_options& options, SampledCommands& listener, RowWriter& rows,
               const std::function<command_match(const live_utterance&)>& match) {
    FollowUtterances(listener, options.rateHz, [&](const live_utterance& utterance) {
        const command_match found = match(utterance);
        if (!found.name.empty()) {
            rows.Write(std::to_string(utterance.endMs), found);
        }
    });
}

void RunSampled(const commands_options& options, tessarin::CAccousticHMM& model) {
    SampledCommands commands(model, options.FloorDb());
    FillSamples(options, model, commands);
    if (!options.live && options.files.empty()) {
        return;
    }
    RowWriter rows(options, options.live ? "end_ms" : "audio", "distance");
    if (options.live) {
        MatchLive(options, commands, rows,
                  [&](const live_utterance&) { return commands.MatchHeard(); });
    } else {
        MatchRecordings(
            options, model, rows, options.files,
            [&](tessarin::IObservationStream& utterance) { return commands.Match(utterance); });
    }
    rows.Finish();
}

void RunListed(const commands_options& options, tessarin::CAccousticHMM& model) {
    TextCommands commands(model, options.FloorDb());
    const tessarin::transcriber_owner transcriber = LoadTranscriber(options.data);
    commands.Add(ReadCommandList(options.files.front()), *transcriber);
    RowWriter rows(options, options.live ? "end_ms" : "audio", "score");
    ProgressBar progress(options.quiet);
    const auto match = [&](tessarin::IObservationStream& utterance) {
        return commands.Match(utterance, &progress);
    };
    if (options.live) {
        SampledCommands listener(model, options.FloorDb());
        MatchLive(options, listener, rows, [&](const live_utterance& utterance) {
            MemoryStream audio(utterance.samples);
            tessarin::IObservationStream* stream = nullptr;
            const int32_t code = CreateObservationStreamFromQuibStream(&audio, &model, &stream);
            if (code != tessarin::kNoError) {
                throw EngineFailure("standard input", code);
            }
            const tessarin::observations_owner observations(stream);
            return match(*observations);
        });
    } else {
        MatchRecordings(options, model, rows, {options.files.begin() + 1, options.files.end()},
                        match);
    }
    rows.Finish();
}

void RunCommands(commands_options options) {
    PartRecords(options);
    RequireUsable(options);
    CatchInterrupts();
    const tessarin::model_owner model = LoadModel(options.data);
    if (options.AreSampled()) {
        RunSampled(options, *model);
    } else {
        RunListed(options, *model);
    }
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
