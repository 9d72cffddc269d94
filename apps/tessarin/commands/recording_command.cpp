#include "apps/tessarin/commands/recording_command.h"

#include <algorithm>

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

opened_recording OpenGated(const recording_options& options, tessarin::CAccousticHMM& model) {
    opened_recording recording =
        OpenRecording(options.audio, ChannelNumber(options.channel), options.stretch, model);
    AddGate(options.gate, options.audio, *recording.observations);
    return recording;
}

/// A copy of `model` that fits the voice, or null where that is not wanted or not worth while.
tessarin::model_owner AdaptToVoice(const recording_options& options, tessarin::CAccousticHMM& model,
                                   timed_result* result) {
    if (options.adapt == "off") {
        return {};
    }
    const opened_recording recording = OpenGated(options, model);
    float gain = 0.0f;
    tessarin::CAccousticHMM* made = nullptr;
    const int32_t code =
        CreateAdaptedAccHMM(&model, recording.observations.get(),
                            options.adapt == "on" ? 0.0f : tessarin::kKnownVoiceGain, &gain, &made);
    if (code != tessarin::kNoError) {
        throw EngineFailure(options.audio, code);
    }
    tessarin::model_owner adapted(made);
    if (adapted) {
        result->adaptationGain = gain;
    }
    return adapted;
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
    command.add_flag("--progress-lines", options->progressLines,
                     "Write progress as lines, such as \"progress 42\", in percent of the search "
                     "at hand, on standard error");
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

void AddAdaptOption(CLI::App& command, recording_options* options) {
    command
        .add_option(
            "--adapt", options->adapt,
            "Without a text, fit the model to the voice first: on, off, or auto, which does "
            "so for voices that it does not know [auto]")
        ->check(CLI::IsMember({"auto", "on", "off"}))
        ->option_text("auto|on|off");
}

void AddRecordingOptions(CLI::App& command, recording_options* options) {
    AddListeningOptions(command, options);
    AddOutputOptions(command, &options->outputs);
}

timed_result FindTimings(const recording_options& options, tessarin::CAccousticHMM& model,
                         const SpokenText* text, const recording_search& search) {
    CatchInterrupts();
    ProgressBar progress(options.quiet, options.progressLines);
    return FindTimings(options, model, text, search, progress);
}

timed_result FindTimings(const recording_options& options, tessarin::CAccousticHMM& model,
                         const SpokenText* text, const recording_search& search,
                         tessarin::ProgressSink& progress) {
    const tessarin::results_owner results = MakeResults();
    timed_result result;
    result.audio = options.audio;
    const tessarin::model_owner adapted =
        text == nullptr ? AdaptToVoice(options, model, &result) : tessarin::model_owner();
    tessarin::CAccousticHMM& used = adapted ? *adapted : model;
    opened_recording recording = OpenGated(options, used);
    result.durationMs = recording.durationMs;
    match_report report;
    result.code = search(recording, used, progress, *results, report);
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

void RequireFound(const timed_result& result) {
    if (result.code == tessarin::kNoError) {
        return;
    }
    constexpr float kSilentDb = -90.0f; // below the noise of any microphone
    const bool isSilent =
        !result.loudness.empty() &&
        std::ranges::all_of(result.loudness, [](float db) { return db < kSilentDb; });
    throw Failure(kExitFailed, DescribeCode(result.audio, result.code) +
                                   (isSilent ? "\n  it is silent from beginning to end; check the "
                                               "recording, or choose another --channel"
                                             : ""));
}

timed_result AnimateRecording(const recording_options& options, tessarin::CAccousticHMM& model,
                              const SpokenText* text, const recording_search& search) {
    const OutputPlan outputs(options.outputs);
    const timed_result result = FindTimings(options, model, text, search);
    outputs.Write(result);
    RequireFound(result);
    return result;
}
