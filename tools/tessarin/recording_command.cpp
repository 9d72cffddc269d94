#include "tools/tessarin/recording_command.h"

#include "tools/tessarin/failure.h"
#include "tools/tessarin/file_io.h"
#include "tools/tessarin/output_formats.h"
#include "tools/tessarin/progress_bar.h"
#include "tools/tessarin/timed_result.h"

namespace {

results_handle MakeResults() {
    tessarin::ISyncResultsCollection* results = nullptr;
    const int32_t code = CreateSyncResultsCollection(tessarin::kPostProcessScores, &results);
    if (code != tessarin::kNoError) {
        throw EngineFailure("results", code);
    }
    return results_handle(results);
}

articulator_handle MakeArticulator(const recording_options& options) {
    tessarin::IPhnMixtureArticulator* made = nullptr;
    const int32_t code = CreatePhonemeArticulator(&made, 0);
    if (code != tessarin::kNoError) {
        throw EngineFailure("articulator", code);
    }
    articulator_handle articulator(made);
    if (!options.rules.empty()) {
        const std::string rules = ReadWholeFile(options.rules);
        RequireSize(options.rules, rules);
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

int ChannelNumber(const std::string& channel) {
    return channel == "mix" ? 0 : std::stoi(channel);
}

} // namespace

void AddRecordingOptions(CLI::App& command, recording_options* options) {
    command.add_option("AUDIO", options->audio, "Recording: WAV, FLAC, Ogg, AIFF, MP3, Sphere ...")
        ->required()
        ->option_text(" ");
    command.add_option("--model", options->data.model, "Acoustic model [the project's own]")
        ->option_text("FILE");
    AddDataFolderOption(command, &options->data);
    command.add_option("--rules", options->rules, "Articulation rules [built in]")
        ->option_text("FILE");
    command.add_option("--channel", options->channel, "Channel to listen to, from 1, or mix [1]")
        ->check(CLI::Range(1, 1024) | CLI::IsMember({"mix"}))
        ->option_text("N|mix");
    command.add_option("--fps", options->fps, "Frames a second of the mouth track [30]")
        ->check(CLI::Range(1.0, 1000.0))
        ->option_text("N");
    command.add_option("--format", options->format, "json or tsv [json]")
        ->check(CLI::IsMember({"json", "tsv"}))
        ->option_text("FORMAT");
    command.add_option("-o,--output", options->output, "File to write [-, standard output]")
        ->option_text("FILE");
    command.add_flag("-q,--quiet", options->quiet, "No progress bar");
}

void AnimateRecording(const recording_options& options, tessarin::CAccousticHMM& model,
                      const SpokenText* text, const recording_search& search) {
    CatchInterrupts();
    const articulator_handle articulator = MakeArticulator(options);
    const results_handle results = MakeResults();
    ProgressBar progress(options.quiet);
    opened_recording recording =
        OpenRecording(options.audio, ChannelNumber(options.channel), model);

    timed_result result;
    result.audio = options.audio;
    result.durationMs = recording.durationMs;
    result.code = search(recording, model, progress, *results);
    if (result.code != tessarin::kNoError && result.code != tessarin::kRecognitionFailed) {
        throw EngineFailure(options.audio, result.code);
    }
    result.message = GetVisemixErrorMessage(result.code);
    const int32_t generated = articulator->GenerateArticulations(results.get(), nullptr);
    if (generated != tessarin::kNoError) {
        throw EngineFailure("--fps", generated);
    }
    CollectMarkers(*results, text, &result);
    CollectFrames(*articulator, &result);
    WriteOutput(options.output, options.format == "tsv" ? WriteTsv(result) : WriteJson(result));
    if (result.code != tessarin::kNoError) {
        throw EngineFailure(options.audio, result.code);
    }
}
