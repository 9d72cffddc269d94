#include <memory>
#include <optional>
#include <string>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/console/progress_bar.h"
#include "apps/tessarin/options/text_options.h"
#include "apps/tessarin/pictures/png_image.h"
#include "apps/tessarin/pictures/spectrogram_picture.h"
#include "apps/tessarin/readers/recording_samples.h"
#include "apps/tessarin/readers/timings_reader.h"
#include "apps/tessarin/speech_search.h"

namespace {

struct spectrogram_options {
    recording_options recording;
    text_options text;
    std::string timings;
    spectrogram_settings picture;
    std::string output;
};

timed_result Align(const spectrogram_options& options) {
    const tessarin::model_owner model = LoadModel(options.recording.data);
    const EngineLanguage language(options.recording.data);
    const SpokenText text = ReadText(options.text, language);
    return FindTimings(options.recording, *model, &text,
                       SearchForText(text, language.GetTranscriber(), options.recording.data));
}

std::optional<timed_result> FindBoundaries(const spectrogram_options& options) {
    if (options.text.IsGiven()) {
        return Align(options);
    }
    if (!options.timings.empty()) {
        return ReadTimings(options.timings, false);
    }
    return std::nullopt;
}

void RunSpectrogram(const spectrogram_options& options) {
    CatchInterrupts();
    const std::string& path = options.recording.audio;
    const data_source_handle source =
        LoadSamples(path, ChannelNumber(options.recording.channel), nullptr);
    const sample_range range = FindStretch(path, options.recording.stretch, *source);
    const std::optional<timed_result> timings = FindBoundaries(options);
    std::string png;
    {
        ProgressBar progress(options.recording.quiet);
        png = WritePng(DrawSpectrogram(*source, range, timings ? &*timings : nullptr,
                                       options.picture, progress));
    }
    WriteOutput(options.output, png);
    if (timings && timings->code != tessarin::kNoError) {
        throw EngineFailure(path, timings->code);
    }
}

} // namespace

void AddSpectrogramCommand(CLI::App& app) {
    auto options = std::make_shared<spectrogram_options>();
    CLI::App* command = app.add_subcommand(
        "spectrogram",
        "Draw the spectrum of a recording over time, with words and phonemes if known");
    recording_options& recording = options->recording;
    command
        ->add_option("AUDIO", recording.audio, "Recording: WAV, FLAC, Ogg, AIFF, MP3, Sphere ...")
        ->required()
        ->option_text(" ");
    command->add_option("-o,--output", options->output, "PNG file to write; - is standard output")
        ->required()
        ->option_text("FILE");
    AddTextOptions(*command, &options->text);
    command
        ->add_option("--timings", options->timings,
                     "Known boundaries, in place of a text: JSON, TSV, TextGrid ...")
        ->excludes("--text")
        ->excludes("--text-file")
        ->option_text("FILE");
    AddStretchOptions(*command, &recording.stretch);
    command->add_option("--channel", recording.channel, "Channel to draw, from 1, or mix [1]")
        ->check(CLI::Range(1, 1024) | CLI::IsMember({"mix"}))
        ->option_text("N|mix");
    command->add_option("--scale", options->picture.pixelsPerSecond, "Pixels per second [250]")
        ->check(CLI::Range(1.0, 10000.0))
        ->option_text("N");
    command->add_option("--top", options->picture.highestHz, "Highest frequency in Hz [8000]")
        ->check(CLI::Range(500.0, 32767.0))
        ->option_text("HZ");
    command
        ->add_option(
            "--window", options->picture.windowMs,
            "Length of the analysis window in ms [8]; 30 separates the harmonics of a voice")
        ->check(CLI::Range(2.0, 200.0))
        ->option_text("MS");
    command->add_option("--model", recording.data.model, "Acoustic model [the project's own]")
        ->option_text("FILE");
    AddLexiconOptions(*command, &recording.data);
    AddDataFolderOption(*command, &recording.data);
    command->add_flag("-q,--quiet", recording.quiet, "Show no progress bar");
    command->callback([options] { RunSpectrogram(*options); });
}
