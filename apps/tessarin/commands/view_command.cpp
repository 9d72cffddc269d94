#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/match_report.h"
#include "apps/tessarin/options/text_options.h"
#include "apps/tessarin/page/view_page.h"
#include "apps/tessarin/pictures/mouth_sheet.h"
#include "apps/tessarin/pictures/png_image.h"
#include "apps/tessarin/readers/timings_reader.h"
#include "apps/tessarin/speech_search.h"
#include "apps/tessarin/writers/output_formats.h"

namespace {

struct view_options {
    recording_options recording;
    text_options text;
    std::string timings;
    std::string output;
    std::string sheet;
};

timed_result FindTimings(const view_options& options) {
    const recording_options& recording = options.recording;
    if (!options.text.IsGiven()) {
        const tessarin::model_owner model = LoadSoundModel({}, recording.data);
        return FindTimings(recording, *model, nullptr, SearchForSounds());
    }
    const tessarin::model_owner model = LoadModel(recording.data);
    const EngineLanguage language(recording.data);
    const SpokenText text = ReadText(options.text, language);
    timed_result result = FindTimings(
        recording, *model, &text, SearchForText(text, language.GetTranscriber(), recording.data));
    if (const std::string mismatch = DescribeMismatch(result); !mismatch.empty()) {
        std::fprintf(stderr, "tessarin: %s\n", mismatch.c_str());
    }
    return result;
}

/// What is shown, for the sheet and for the page.
struct shown_result {
    timed_result result;
    std::string json;
};

shown_result Find(const view_options& options) {
    shown_result shown;
    shown.result = FindTimings(options);
    shown.json = WriteJson(shown.result);
    return shown;
}

shown_result ReadKnown(const view_options& options) {
    shown_result shown;
    shown.json = ReadWholeFile(options.timings);
    RequireShowableJson(options.timings, shown.json);
    if (!options.sheet.empty()) {
        shown.result = ReadTimings(options.timings, false);
        shown.result.frames = ReadShownFrames(options.timings, shown.json);
    }
    return shown;
}

void RunView(const view_options& options) {
    const std::string& path = options.recording.audio;
    if (!std::filesystem::exists(path)) {
        throw Failure(kExitFailed, DescribeCode(path, tessarin::kFileNotFound));
    }
    // A sheet alone needs no samples; a page reads them before the long search.
    const bool hasPage = options.sheet.empty() || !options.output.empty();
    page_audio audio;
    if (hasPage) {
        audio = ReadPageAudio(path, ChannelNumber(options.recording.channel));
    }
    const shown_result shown = options.timings.empty() ? Find(options) : ReadKnown(options);
    if (!options.sheet.empty()) {
        WriteOutput(options.sheet, WritePng(DrawMouthSheet(shown.result)));
    }
    if (hasPage) {
        const std::string title = std::filesystem::path(path).filename().string();
        WriteOutput(options.output.empty() ? "-" : options.output,
                    MakeViewPage(title, shown.json, audio));
    }
    RequireFound(shown.result);
}

} // namespace

void AddViewCommand(CLI::App& app) {
    auto options = std::make_shared<view_options>();
    CLI::App* command = app.add_subcommand(
        "view", "Make a page that plays a recording, with a moving mouth and all that was found");
    AddListeningOptions(*command, &options->recording);
    AddTextOptions(*command, &options->text);
    AddLexiconOptions(*command, &options->recording.data);
    CLI::Option* timings = command->add_option(
        "--timings", options->timings,
        "JSON of align, recognize or animate to show; without it, the recording is aligned with "
        "the text, or recognized if no text is given");
    timings->option_text("FILE");
    // What was found already is shown as it is.
    for (const char* other :
         {"--text",        "--text-file",    "--encoding",  "--literal",    "--text-format",
          "--speaker",     "--script-table", "--cue-times", "--lexicon",    "--words",
          "--model",       "--from",         "--to",        "--gate",       "--rules",
          "--fps",         "--smooth",       "--slope",     "--max-shapes", "--gain",
          "--common-keys", "--quantize"}) {
        timings->excludes(other);
    }
    command
        ->add_option("-o,--output", options->output,
                     "Page to write [-, standard output; none when there is a sheet]")
        ->option_text("FILE");
    command
        ->add_option("--sheet", options->sheet,
                     "PNG file to write: a contact sheet of the mouth, every third frame, drawn, "
                     "with its time, phoneme and word")
        ->option_text("FILE");
    command->callback([options] { RunView(*options); });
}
