#include "apps/tessarin/writers/outputs.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/writers/output_formats.h"

namespace {

/// Stands for the map of `--shapes` itself, whatever its set is called.
constexpr std::string_view kAnySet = "*";
constexpr std::string_view kNoSet;

} // namespace

struct output_format {
    std::string_view name;
    std::string_view ending; ///< of the files that are written so
    std::string_view set;    ///< of shapes
    std::string (*write)(const timed_result& result, const MouthShapes& shapes, int holdMs);
};

namespace {

template <std::string (*Write)(const timed_result&)>
std::string WithoutShapes(const timed_result& result, const MouthShapes& /*shapes*/,
                          int /*holdMs*/) {
    return Write(result);
}

std::string WithoutHold(const timed_result& result, const MouthShapes& shapes, int /*holdMs*/) {
    return WriteShapesCsv(result, shapes);
}

// Where several endings fit a file, the first decides: longer ones stand before those they end in.
constexpr std::array kFormats = {
    output_format{"visemes", ".visemes.csv", "visemes", WithoutHold},
    output_format{"arkit", ".arkit.csv", "arkit", WithoutHold},
    output_format{"vrm", ".vrm.csv", "vrm", WithoutHold},
    output_format{"shapes", ".shapes.csv", kAnySet, WithoutHold},
    output_format{"csv", ".csv", kNoSet, WithoutShapes<WriteCurvesCsv>},
    output_format{"switches-tsv", ".switches.tsv", "switches", WriteSwitchesTsv},
    output_format{"switches-json", ".switches.json", "switches", WriteSwitchesJson},
    output_format{"switches-xml", ".xml", "switches", WriteSwitchesXml},
    output_format{"moho", ".dat", "preston-blair", WriteMohoSwitches},
    output_format{"json", ".json", kNoSet, WithoutShapes<WriteJson>},
    output_format{"tsv", ".tsv", kNoSet, WithoutShapes<WriteTsv>},
    output_format{"textgrid", ".textgrid", kNoSet, WithoutShapes<WriteTextGrid>},
    output_format{"vtt", ".vtt", kNoSet, WithoutShapes<WriteWebVtt>},
    output_format{"srt", ".srt", kNoSet, WithoutShapes<WriteSrt>},
};

std::vector<std::string> FormatNames() {
    std::vector<std::string> names;
    for (const output_format& format : kFormats) {
        names.emplace_back(format.name);
    }
    return names;
}

const output_format& FindFormat(const std::string& name) {
    return *std::ranges::find(kFormats, name, &output_format::name);
}

const output_format& FormatOfFile(const std::string& file) {
    if (file == "-") {
        return FindFormat("json");
    }
    std::string lower = file;
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return std::tolower(c); });
    const auto* found = std::ranges::find_if(
        kFormats, [&](const output_format& format) { return lower.ends_with(format.ending); });
    if (found == kFormats.end()) {
        throw Failure(kExitUsage,
                      file + ": its extension does not select a format; name one with --format");
    }
    return *found;
}

std::vector<MouthShapes> ReadMaps(const std::vector<std::string>& files) {
    std::vector<MouthShapes> maps;
    for (const std::string& file : files) {
        maps.push_back(MouthShapes::FromFile(file));
    }
    return maps;
}

/// The user's map of the set that `format` shows, or the project's own.
MouthShapes ChooseMap(const output_format& format, const std::vector<MouthShapes>& maps) {
    if (format.set == kNoSet) {
        return {};
    }
    const auto given = std::ranges::find_if(maps, [&](const MouthShapes& shapes) {
        return format.set == kAnySet || shapes.GetSet() == format.set;
    });
    if (given != maps.end()) {
        return *given;
    }
    if (format.set == kAnySet) {
        throw Failure(kExitUsage, "--format shapes: name a map of shapes with --shapes");
    }
    return MouthShapes::BuiltIn(std::string(format.set));
}

} // namespace

void AddOutputOptions(CLI::App& command, output_options* options) {
    command
        .add_option(
            "-o,--output", options->files,
            "File to write [-, standard output]; may be repeated; its extension selects the format")
        ->allow_extra_args(false)
        ->option_text("FILE");
    command
        .add_option("--format", options->formats,
                    "Format of the outputs, or of each in its turn: " +
                        CLI::detail::join(FormatNames(), ", ") + " [json]")
        ->check(CLI::IsMember(FormatNames()))
        ->allow_extra_args(false)
        ->option_text("FORMAT");
    AddShapeOptions(command, options);
}

void AddFormatOptions(CLI::App& command, output_options* options) {
    command
        .add_option("--format", options->formats,
                    "Format that is written of each recording; may be repeated: " +
                        CLI::detail::join(FormatNames(), ", ") + " [json]")
        ->check(CLI::IsMember(FormatNames()))
        ->allow_extra_args(false)
        ->option_text("FORMAT");
    AddShapeOptions(command, options);
}

void AddShapeOptions(CLI::App& command, output_options* options) {
    command
        .add_option("--shapes", options->shapes,
                    "Map from phonemes to mouth shapes, in place of the built-in one of the same "
                    "set, or for the format shapes; may be repeated")
        ->allow_extra_args(false)
        ->option_text("FILE");
    command
        .add_option("--hold", options->holdMs,
                    "Shortest time that a mouth-shape switch stays, in ms, rounded up to whole "
                    "frames; closed lips may come sooner, but each shape stays at least 50 ms [0]")
        ->check(CLI::Range(0, 10000))
        ->option_text("MS");
}

OutputForms::OutputForms(const output_options& options) : holdMs(options.holdMs) {
    std::vector<std::string> names = options.formats;
    if (names.empty()) {
        names.emplace_back("json");
    }
    const std::vector<MouthShapes> maps = ReadMaps(options.shapes);
    for (const std::string& name : names) {
        const output_format& format = FindFormat(name);
        if (std::ranges::find(forms, &format, &form::format) == forms.end()) {
            forms.push_back({&format, ChooseMap(format, maps)});
        }
    }
}

std::vector<written_form> OutputForms::Write(const timed_result& result) const {
    std::vector<written_form> written;
    for (const form& each : forms) {
        written.push_back(
            {std::string(each.format->ending), each.format->write(result, each.shapes, holdMs)});
    }
    return written;
}

OutputPlan::OutputPlan(const output_options& options) : holdMs(options.holdMs) {
    const std::vector<std::string> files =
        options.files.empty() ? std::vector<std::string>{"-"} : options.files;
    const size_t formats = options.formats.size();
    if (formats > 1 && formats != files.size()) {
        throw Failure(kExitUsage, "--format: give one for all outputs, or one for each");
    }
    const std::vector<MouthShapes> maps = ReadMaps(options.shapes);
    for (size_t i = 0; i < files.size(); ++i) {
        const output_format& format = formats == 0
                                          ? FormatOfFile(files[i])
                                          : FindFormat(options.formats[formats == 1 ? 0 : i]);
        outputs.push_back({files[i], &format, ChooseMap(format, maps)});
    }
}

void OutputPlan::Write(const timed_result& result) const {
    for (const output& each : outputs) {
        WriteOutput(each.file, each.format->write(result, each.shapes, holdMs));
    }
}
