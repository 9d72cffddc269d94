#include <cstdio>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/console/captured_errors.h"
#include "apps/tessarin/console/cue_log.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/match_report.h"
#include "apps/tessarin/options/text_options.h"
#include "apps/tessarin/speech_search.h"
#include "apps/tessarin/writers/cue_output.h"

namespace {

/// Cues are in hundredths of a second.
constexpr double kCueRate = 100;

struct cues_options {
    recording_options recording;
    text_options text;
    cue_style style;
    cue_log_options log;
    std::string output = "-";
    std::string recognizer;
    double datFrameRate = 24;
    int threads = 0;
};

/// Reports how far a search has come to the log, and to the bar that it would else be shown by.
class LoggedProgress final : public tessarin::ProgressSink {
public:
    LoggedProgress(CueLog& to, tessarin::ProgressSink& next) : log(to), bar(next) {}

    void SetStatus(const char* text) override { bar.SetStatus(text); }
    bool OnProgress(uint32_t done, uint32_t total) override {
        if (total > 0) {
            log.Progress(0.99 * done / total); // the rest is for the mouth
        }
        return bar.OnProgress(done, total);
    }

private:
    CueLog& log;
    tessarin::ProgressSink& bar;
};

recording_search Logged(recording_search search, CueLog& log) {
    return [search = std::move(search),
            &log](opened_recording& recording, tessarin::CAccousticHMM& model,
                  tessarin::ProgressSink& progress, tessarin::ISyncResultsCollection& results,
                  match_report& report) {
        LoggedProgress logged(log, progress);
        return search(recording, model, logged, results, report);
    };
}

/// An empty dialog file says as little as none.
bool HasText(const text_options& text) {
    return text.IsGiven() &&
           ReadUtf8File(*text.file).find_first_not_of(" \t\r\n") != std::string::npos;
}

timed_result FindCues(const cues_options& options, CueLog& log) {
    const recording_options& recording = options.recording;
    if (!HasText(options.text)) {
        log.Say(log_level::info, "No text is given, so the phonemes are heard.");
        const tessarin::model_owner model = LoadSoundModel({}, recording.data);
        return FindTimings(recording, *model, nullptr, Logged(SearchForSounds(), log));
    }
    log.Say(log_level::info, "The recording is aligned with the text.");
    const tessarin::model_owner model = LoadModel(recording.data);
    const EngineLanguage language(recording.data);
    const SpokenText text = ReadText(options.text, language);
    const timed_result result =
        FindTimings(recording, *model, &text,
                    Logged(SearchForText(text, language.GetTranscriber(), recording.data), log));
    const std::string mismatch = DescribeMismatch(result);
    if (!mismatch.empty()) {
        log.Say(log_level::warning, mismatch);
    }
    if (result.code != tessarin::kNoError) {
        log.Say(log_level::warning,
                DescribeCode(recording.audio, result.code) + "; the cues end there");
    }
    return result;
}

void SayKept(CapturedErrors& errors, CueLog& log) {
    for (const std::string& line : errors.TakeLines()) {
        log.Say(log_level::warning, line);
    }
}

void MakeCues(const cues_options& options, CapturedErrors& errors, CueLog& log) {
    if (options.threads > 1) {
        log.Say(log_level::debug, "One thread is enough for the search.");
    }
    const timed_result result = FindCues(options, log);
    WriteOutput(options.output, WriteCues(result, options.style));
    SayKept(errors, log);
    log.Progress(1.0);
    log.Succeed();
}

void RunCues(cues_options options) {
    options.recording.quiet = options.log.isQuiet || options.log.isMachineReadable;
    options.recording.track.fps = options.style.format == "dat" ? options.datFrameRate : kCueRate;
    if (!options.log.isMachineReadable) {
        CueLog log(options.log, stderr);
        log.Start(options.recording.audio);
        const timed_result result = FindCues(options, log);
        WriteOutput(options.output, WriteCues(result, options.style));
        log.Succeed();
        return;
    }
    CapturedErrors errors;
    CueLog log(options.log, errors.GetStream());
    log.Start(options.recording.audio);
    try {
        log.Progress(0.0);
        MakeCues(options, errors, log);
    } catch (const Failure& failure) {
        SayKept(errors, log);
        log.Fail(failure.what());
        throw Failure(failure.exitCode, "");
    } catch (const std::exception& failure) {
        SayKept(errors, log);
        log.Fail(failure.what());
        throw Failure(kExitFailed, "");
    }
}

void AddLogOptions(CLI::App& command, cue_log_options* log) {
    static const std::map<std::string, log_level> kLevels = {
        {"trace", log_level::trace},     {"debug", log_level::debug}, {"info", log_level::info},
        {"warning", log_level::warning}, {"error", log_level::error}, {"fatal", log_level::fatal}};
    command.add_flag("-q,--quiet", log->isQuiet, "Say nothing but warnings and errors");
    command.add_flag("--machineReadable", log->isMachineReadable,
                     "Report start, progress, success, failure and messages as lines of JSON on "
                     "standard error");
    command
        .add_option("--consoleLevel", log->consoleLevel,
                    "Least level of the messages that are shown [error]")
        ->transform(CLI::CheckedTransformer(kLevels, CLI::ignore_case))
        ->option_text("LEVEL");
    command.add_option("--logFile", log->file, "File to write all messages to")
        ->option_text("FILE");
    command
        .add_option("--logLevel", log->fileLevel,
                    "Least level of the messages in that file [debug]")
        ->transform(CLI::CheckedTransformer(kLevels, CLI::ignore_case))
        ->option_text("LEVEL");
}

void AddCueOptions(CLI::App& command, cues_options* options) {
    command.add_option("-f,--exportFormat", options->style.format, "tsv, xml, json or dat [tsv]")
        ->check(CLI::IsMember({"tsv", "xml", "json", "dat"}))
        ->option_text("FORMAT");
    command.add_option("-o,--output", options->output, "File to write [-, standard output]")
        ->option_text("FILE");
    command
        .add_option("-d,--dialogFile", options->text.file,
                    "What is said, as text; it is used as far as it fits [the phonemes are heard]")
        ->option_text("FILE");
    command
        .add_option("-r,--recognizer", options->recognizer,
                    "Accepted for older calls: there is one way to hear")
        ->check(CLI::IsMember({"pocketSphinx", "phonetic"}))
        ->option_text("NAME");
    command
        .add_option("--extendedShapes", options->style.extended,
                    "Drawings that the character has beside A to F, of G, H and X; may be empty "
                    "[GHX]")
        ->check(CLI::Validator(
            [](const std::string& shapes) {
                return shapes.find_first_not_of("GHX") == std::string::npos
                           ? std::string()
                           : "give letters of G, H and X, not " + shapes;
            },
            ""))
        ->option_text("LETTERS");
    command
        .add_option("--datFrameRate", options->datFrameRate,
                    "Frames per second of the format dat [24]")
        ->check(CLI::Range(1.0, 1000.0))
        ->option_text("N");
    command.add_flag("--datUsePrestonBlair", options->style.hasPrestonBlairNames,
                     "Name the mouths as Preston Blair does: MBP, etc, E, AI, O, U, FV, L, rest");
    command
        .add_option("--threads", options->threads,
                    "Accepted for older calls: the search uses one thread")
        ->check(CLI::NonNegativeNumber)
        ->option_text("N");
}

} // namespace

void AddCuesCommand(CLI::App& app) {
    auto options = std::make_shared<cues_options>();
    CLI::App* command = app.add_subcommand(
        "cues", "Write mouth cues, with the options of the tool that pipelines call for them");
    command->set_version_flag("--version", "tessarin " TESSARIN_VERSION
                                           " (cues as of Rhubarb Lip Sync version 1.13.0)");
    command->add_option("AUDIO", options->recording.audio, "Recording: WAV, Ogg, FLAC, MP3 ...")
        ->required()
        ->option_text(" ");
    AddCueOptions(*command, options.get());
    AddLogOptions(*command, &options->log);
    AddDataFolderOption(*command, &options->recording.data);
    command->callback([options] {
        if (options->style.hasPrestonBlairNames && options->style.format != "dat") {
            options->style.hasPrestonBlairNames = false; // it is for that format alone
        }
        RunCues(*options);
    });
}
