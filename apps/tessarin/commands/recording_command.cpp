#include "apps/tessarin/commands/recording_command.h"

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/progress_bar.h"
#include "apps/tessarin/match_report.h"
#include "apps/tessarin/readers/recording_loudness.h"
#include "apps/tessarin/timed_result.h"

namespace {

tessarin::results_owner MakeResults() {
    tessarin::ISyncResultsCollection* results = nullptr;
    const int32_t code = CreateSyncResultsCollection(tessarin::kPostProcessScores, &results);
    if (code != tessarin::kNoError) {
        throw EngineFailure("results", code);
    }
    return tessarin::results_owner(results);
}

} // namespace

int ChannelNumber(const std::string& channel) {
    return channel == "mix" ? 0 : std::stoi(channel);
}

void AddListeningOptions(CLI::App& command, recording_options* options) {
    command.add_option("AUDIO", options->audio, "Recording: WAV, FLAC, Ogg, AIFF, MP3, Sphere ...")
        ->required()
        ->option_text(" ");
    AddModelOptions(command, &options->data);
    AddHearingOptions(command, options);
    command.add_flag("-q,--quiet", options->quiet, "Show no progress bar");
}

void AddModelOptions(CLI::App& command, data_options* options) {
    command.add_option("--model", options->model, "Acoustic model [the project's own]")
        ->option_text("FILE");
    AddDataFolderOption(command, options);
}

void AddHearingOptions(CLI::App& command, recording_options* options) {
    command.add_option("--channel", options->channel, "Channel to listen to, from 1, or mix [1]")
        ->check(CLI::Range(1, 1024) | CLI::IsMember({"mix"}))
        ->option_text("N|mix");
    AddStretchOptions(command, &options->stretch);
    AddGateOption(command, &options->gate);
    AddTrackOptions(command, &options->track);
}

void AddRecordingOptions(CLI::App& command, recording_options* options) {
    AddListeningOptions(command, options);
    AddOutputOptions(command, &options->outputs);
}

timed_result FindTimings(const recording_options& options, tessarin::CAccousticHMM& model,
                         const SpokenText* text, const recording_search& search) {
    CatchInterrupts();
    ProgressBar progress(options.quiet);
    return FindTimings(options, model, text, search, progress);
}

timed_result FindTimings(const recording_options& options, tessarin::CAccousticHMM& model,
                         const SpokenText* text, const recording_search& search,
                         tessarin::ProgressSink& progress) {
    const tessarin::results_owner results = MakeResults();
    opened_recording recording =
        OpenRecording(options.audio, ChannelNumber(options.channel), options.stretch, model);
    AddGate(options.gate, options.audio, *recording.observations);

    timed_result result;
    result.audio = options.audio;
    result.durationMs = recording.durationMs;
    match_report report;
    result.code = search(recording, model, progress, *results, report);
    if (result.code != tessarin::kNoError && result.code != tessarin::kRecognitionFailed) {
        throw EngineFailure(options.audio, result.code);
    }
    result.message = GetVisemixErrorMessage(result.code);
    ShiftMarkers(options.stretch.fromMs, *results);
    CollectMarkers(*results, text, &result);
    if (text != nullptr) {
        AddMatch(report, *text, options.stretch.fromMs, &result);
    }
    result.loudness = MeasureLoudness(options.audio, ChannelNumber(options.channel));
    MakeMouthTrack(options.track, &result);
    return result;
}

timed_result AnimateRecording(const recording_options& options, tessarin::CAccousticHMM& model,
                              const SpokenText* text, const recording_search& search) {
    const OutputPlan outputs(options.outputs);
    const timed_result result = FindTimings(options, model, text, search);
    outputs.Write(result);
    if (result.code != tessarin::kNoError) {
        throw EngineFailure(options.audio, result.code);
    }
    return result;
}
