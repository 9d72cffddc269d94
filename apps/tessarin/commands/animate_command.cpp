#include <memory>
#include <string>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/options/mouth_track.h"
#include "apps/tessarin/readers/timings_reader.h"
#include "apps/tessarin/writers/outputs.h"

namespace {

struct animate_options {
    std::string timings;
    std::string alphabet = "auto";
    track_options track;
    output_options outputs;
};

void RunAnimate(const animate_options& options) {
    const OutputPlan outputs(options.outputs);
    timed_result result = ReadTimings(options.timings, options.alphabet == "sampa");
    result.message = GetVisemixErrorMessage(result.code);
    MakeMouthTrack(options.track, &result);
    outputs.Write(result);
}

} // namespace

void AddAnimateCommand(CLI::App& app) {
    auto options = std::make_shared<animate_options>();
    CLI::App* command = app.add_subcommand(
        "animate", "Make the mouth shapes from timings that you already have, without a recording");
    command
        ->add_option("TIMINGS", options->timings,
                     "JSON or TSV of this tool, a TextGrid, or lines with a phoneme and its "
                     "duration in ms; - is standard input")
        ->required()
        ->option_text(" ");
    command
        ->add_option(
            "--alphabet", options->alphabet,
            "How phonemes are written: auto (this tool's labels or ARPAbet) or sampa [auto]")
        ->check(CLI::IsMember({"auto", "sampa"}))
        ->option_text("NAME");
    AddTrackOptions(*command, &options->track);
    AddOutputOptions(*command, &options->outputs, "--output-alphabet");
    command->callback([options] { RunAnimate(*options); });
}
