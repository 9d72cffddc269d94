#include <memory>
#include <string>

#include "tools/tessarin/commands.h"
#include "tools/tessarin/engine_data.h"
#include "tools/tessarin/failure.h"
#include "tools/tessarin/file_io.h"
#include "tools/tessarin/output_formats.h"
#include "tools/tessarin/progress_bar.h"
#include "tools/tessarin/recording.h"
#include "tools/tessarin/text_options.h"
#include "tools/tessarin/timed_result.h"

namespace {

struct align_options {
    std::string audio;
    text_options text;
    data_options data;
    std::string rules;
    std::string channel = "1";
    double fps = 0;
    int beam = 0;
    std::string format = "json";
    std::string output = "-";
    bool quiet = false;
};

int ChannelNumber(const std::string& channel) {
    return channel == "mix" ? 0 : std::stoi(channel);
}

results_handle MakeResults() {
    tessarin::ISyncResultsCollection* results = nullptr;
    const int32_t code = CreateSyncResultsCollection(tessarin::kPostProcessScores, &results);
    if (code != tessarin::kNoError) {
        throw EngineFailure("results", code);
    }
    return results_handle(results);
}

articulator_handle MakeArticulator(const align_options& options) {
    tessarin::IPhnMixtureArticulator* made = nullptr;
    const int32_t code = CreatePhonemeArticulator(&made, 0);
    if (code != tessarin::kNoError) {
        throw EngineFailure("articulator", code);
    }
    articulator_handle articulator(made);
    if (!options.rules.empty()) {
        const std::string rules = ReadWholeFile(options.rules);
        const int32_t loaded =
            articulator->LoadArticulatorRules(rules.data(), static_cast<int32_t>(rules.size()));
        if (loaded != tessarin::kNoError) {
            throw EngineFailure(options.rules, loaded);
        }
    }
    if (options.fps > 0) {
        articulator->SetFrameRate(static_cast<float>(options.fps));
    }
    return articulator;
}

/// Aligns and returns the engine's code; cancelling is a Failure.
int32_t RunAlignment(const align_options& options, opened_recording& recording,
                     tessarin::CAccousticHMM& model, const std::string& text,
                     tessarin::ISyncResultsCollection& results) {
    const transcriber_handle transcriber = LoadTranscriber(options.data);
    tessarin::ITextBasedPhnRecognizer* made = nullptr;
    CreateTextBasedRecognizer(&made);
    const recognizer_handle recognizer(made);
    if (!recognizer) {
        throw EngineFailure(options.audio, tessarin::kOutOfMemory);
    }
    if (options.beam > 0) {
        recognizer->SetBeamWidth(options.beam);
    }
    ProgressBar progress(options.quiet);
    const int32_t code = recognizer->RecognizePhonemes(
        recording.observations.get(), &model, text.c_str(), transcriber.get(), &progress, &results);
    recording.observations.reset(); // it may hold on to the progress bar
    if (code != tessarin::kNoError && code != tessarin::kRecognitionFailed) {
        throw EngineFailure(options.audio, code);
    }
    return code;
}

void RunAlign(const align_options& options) {
    const std::optional<std::string> text = ReadText(options.text);
    if (!text) {
        throw Failure(kExitUsage, "align: the text that is said is missing; give it with --text or "
                                  "--text-file");
    }
    CatchInterrupts();
    const articulator_handle articulator = MakeArticulator(options);
    const model_handle model = LoadModel(options.data);
    opened_recording recording =
        OpenRecording(options.audio, ChannelNumber(options.channel), *model);
    const results_handle results = MakeResults();

    timed_result result;
    result.audio = options.audio;
    result.durationMs = recording.durationMs;
    result.code = RunAlignment(options, recording, *model, *text, *results);
    result.message = GetVisemixErrorMessage(result.code);
    const int32_t generated = articulator->GenerateArticulations(results.get(), nullptr);
    if (generated != tessarin::kNoError) {
        throw EngineFailure("--fps", generated);
    }
    CollectMarkers(*results, &result);
    CollectFrames(*articulator, &result);
    WriteOutput(options.output, options.format == "tsv" ? WriteTsv(result) : WriteJson(result));
    if (result.code != tessarin::kNoError) {
        throw EngineFailure(options.audio, result.code);
    }
}

} // namespace

void AddAlignCommand(CLI::App& app) {
    auto options = std::make_shared<align_options>();
    CLI::App* command = app.add_subcommand(
        "align", "Find when each phoneme and word of a text was spoken, and the mouth shapes");
    command->add_option("AUDIO", options->audio, "Recording: WAV, FLAC, Ogg, AIFF, MP3, Sphere ...")
        ->required();
    AddTextOptions(*command, &options->text);
    AddDataOptions(*command, &options->data, true);
    command->add_option("--rules", options->rules, "Articulation rules [built in]");
    command->add_option("--channel", options->channel, "Channel to listen to, from 1, or mix [1]")
        ->check(CLI::Range(1, 1024) | CLI::IsMember({"mix"}));
    command->add_option("--fps", options->fps, "Frames a second of the mouth track [30]")
        ->check(CLI::Range(1.0, 1000.0));
    command
        ->add_option("--beam", options->beam,
                     "Width of the search in states, 500 to 8000 [2000]; raise it when the search "
                     "loses the text")
        ->check(CLI::Range(500, 8000));
    command->add_option("--format", options->format, "json or tsv [json]")
        ->check(CLI::IsMember({"json", "tsv"}));
    command->add_option("-o,--output", options->output, "File to write [-, standard output]");
    command->add_flag("-q,--quiet", options->quiet, "No progress bar");
    command->callback([options] { RunAlign(*options); });
}
