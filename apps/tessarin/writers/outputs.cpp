#include "apps/tessarin/writers/outputs.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <utility>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/gltf/speaking_asset.h"
#include "apps/tessarin/writers/output_formats.h"
#include "apps/tessarin/writers/reduced_keys.h"

namespace {

/// Stands for the map of `--shapes` itself, whatever its set is called.
constexpr std::string_view kAnySet = "*";
constexpr std::string_view kNoSet;

/// In the order of tessarin_alphabet.
constexpr std::array<const char*, 4> kAlphabets = {"labels", "ipa", "arpabet", "sampa"};

} // namespace

struct output_format {
    std::string_view name;
    std::string_view ending; ///< of the files that are written so
    std::string_view set;    ///< of shapes
    std::string (*write)(const timed_result& result, const write_settings& settings);
};

namespace {

template <std::string (*Write)(const timed_result&)>
std::string Plain(const timed_result& result, const write_settings& /*settings*/) {
    return Write(result);
}

template <std::string (*Write)(const timed_result&, uint32_t)>
std::string Named(const timed_result& result, const write_settings& settings) {
    return Write(result, settings.alphabet);
}

template <std::string (*Write)(const timed_result&, const MouthShapes&)>
std::string Shaped(const timed_result& result, const write_settings& settings) {
    return Write(result, settings.shapes);
}

template <std::string (*Write)(const timed_result&, const MouthShapes&, int)>
std::string Switches(const timed_result& result, const write_settings& settings) {
    return Write(result, settings.shapes, settings.holdMs);
}

std::string Json(const timed_result& result, const write_settings& settings) {
    if (!settings.tolerance) {
        return WriteJson(result, settings.alphabet);
    }
    timed_result reduced = result;
    ReduceCurves(*settings.tolerance, &reduced);
    return WriteJson(reduced, settings.alphabet);
}

// Where several endings fit a file, the first decides: longer ones stand before those they end in.
constexpr std::array kFormats = {
    output_format{"visemes", ".visemes.csv", "visemes", Shaped<WriteShapesCsv>},
    output_format{"arkit", ".arkit.csv", "arkit", Shaped<WriteShapesCsv>},
    output_format{"vrm", ".vrm.csv", "vrm", Shaped<WriteShapesCsv>},
    output_format{"shapes", ".shapes.csv", kAnySet, Shaped<WriteShapesCsv>},
    output_format{"visemes-glb", ".visemes.glb", "visemes", WriteGlb},
    output_format{"shapes-glb", ".shapes.glb", kAnySet, WriteGlb},
    output_format{"glb", ".glb", "arkit", WriteGlb},
    output_format{"gltf", ".gltf", "arkit", WriteGltf},
    output_format{"vrma", ".vrma", "vrm", WriteVrmAnimation},
    output_format{"capture", ".capture.csv", "arkit", Shaped<WriteCaptureCsv>},
    output_format{"csv", ".csv", kNoSet, Named<WriteCurvesCsv>},
    output_format{"switches-tsv", ".switches.tsv", "switches", Switches<WriteSwitchesTsv>},
    output_format{"switches-json", ".switches.json", "switches", Switches<WriteSwitchesJson>},
    output_format{"switches-xml", ".xml", "switches", Switches<WriteSwitchesXml>},
    output_format{"moho", ".dat", "preston-blair", Switches<WriteMohoSwitches>},
    output_format{"json", ".json", kNoSet, Json},
    output_format{"tsv", ".tsv", kNoSet, Named<WriteTsv>},
    output_format{"textgrid", ".textgrid", kNoSet, Named<WriteTextGrid>},
    output_format{"vtt", ".vtt", kNoSet, Plain<WriteWebVtt>},
    output_format{"eaf", ".eaf", kNoSet, WriteElan},
    output_format{"smil", ".smil", kNoSet, WriteSmil},
    output_format{"xhtml", ".xhtml", kNoSet, WriteWordPage},
    output_format{"word-labels", ".words.txt", kNoSet, Plain<WriteWordLabels>},
    output_format{"phoneme-labels", ".phonemes.txt", kNoSet, Named<WritePhonemeLabels>},
    output_format{"srt", ".srt", kNoSet, Plain<WriteSrt>},
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

uint32_t AlphabetOf(std::string_view name) {
    return static_cast<uint32_t>(std::ranges::find(kAlphabets, name) - kAlphabets.begin());
}

std::vector<MouthShapes> ReadMaps(const std::vector<std::string>& files) {
    std::vector<MouthShapes> maps;
    for (const std::string& file : files) {
        maps.push_back(MouthShapes::FromFile(file));
    }
    return maps;
}

bool IsAsset(const output_format& format) {
    return format.write == WriteGlb || format.write == WriteGltf;
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

/// The maps whose shapes may be the targets of a user's asset: the one that its format names, or
/// where that leaves it open, the user's own maps and then the built-in ones.
std::vector<MouthShapes> MapsForAsset(const output_format& format, const MouthShapes& named,
                                      std::vector<MouthShapes> maps) {
    if (format.set != "arkit") {
        return {named};
    }
    for (const char* set : {"arkit", "visemes", "vrm"}) {
        maps.push_back(MouthShapes::BuiltIn(set));
    }
    return maps;
}

/// A file that names others by their places can be written only beside where it was.
void CheckPlace(const std::string& file, const std::string& into, const GltfDocument& asset) {
    namespace fs = std::filesystem;
    if (asset.HasOtherFiles() &&
        (file == "-" || fs::absolute(file).lexically_normal().parent_path() !=
                            fs::absolute(into).lexically_normal().parent_path())) {
        throw Failure(kExitUsage, file + ": must be in the folder of " + into +
                                      ", which names other files there; or make that one .glb");
    }
}

/// All but the file. Throws Failure for an asset or a map that does not read.
write_settings MakeSettings(const output_format& format, const output_options& options,
                            const std::vector<MouthShapes>& maps) {
    write_settings settings{.shapes = ChooseMap(format, maps),
                            .holdMs = options.holdMs,
                            .tolerance = options.tolerance,
                            .into = {},
                            .alphabet = AlphabetOf(options.alphabet),
                            .file = ""};
    if (IsAsset(format) && !options.into.empty()) {
        settings.into = OpenSpeakingAsset(options.into, MapsForAsset(format, settings.shapes, maps),
                                          &settings.shapes);
    }
    return settings;
}

/// What is written, beside its format.
void AddWritingOptions(CLI::App& command, output_options* options, const char* alphabet) {
    command
        .add_option("--shapes", options->shapes,
                    "Map from phonemes to mouth shapes, in place of the built-in one of the same "
                    "set, or for the format shapes; may be repeated")
        ->allow_extra_args(false)
        ->option_text("FILE");
    command
        .add_option(alphabet, options->alphabet,
                    "How phonemes are written: labels (this tool's own), ipa, arpabet or sampa; "
                    "JSON has them beside the labels [labels]")
        ->check(CLI::IsMember(std::vector<std::string>(kAlphabets.begin(), kAlphabets.end())))
        ->option_text("NAME");
    command
        .add_option("--hold", options->holdMs,
                    "Shortest time that a mouth-shape switch stays, in ms, rounded up to whole "
                    "frames; closed lips may come sooner, but each shape stays at least 50 ms [0]")
        ->check(CLI::Range(0, 10000))
        ->option_text("MS");
    CLI::Option* tolerance =
        command
            .add_option(
                "--tolerance", options->tolerance,
                "How far a curve may lie from the track, from 0 to 1: it then has keys only "
                "where it bends [all keys]")
            ->check(CLI::Range(0.0, 1.0))
            ->option_text("X");
    command
        .add_option("--into", options->into,
                    "glTF file (.glb, .vrm or .gltf) whose morph targets are to speak, by their "
                    "names: the .glb or .gltf output is this file with one more animation [a head "
                    "of the tool's own]")
        ->option_text("FILE");
    if (CLI::Option* commonKeys = command.get_option_no_throw("--common-keys")) {
        tolerance->excludes(commonKeys);
    }
}

} // namespace

void AddOutputOptions(CLI::App& command, output_options* options, const char* alphabet) {
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
    AddWritingOptions(command, options, alphabet);
}

void AddFormatOptions(CLI::App& command, output_options* options) {
    command
        .add_option("--format", options->formats,
                    "Format that is written of each recording; may be repeated: " +
                        CLI::detail::join(FormatNames(), ", ") + " [json]")
        ->check(CLI::IsMember(FormatNames()))
        ->allow_extra_args(false)
        ->option_text("FORMAT");
    AddWritingOptions(command, options, "--alphabet");
}

OutputForms::OutputForms(const output_options& options) {
    const std::vector<std::string> names =
        options.formats.empty() ? std::vector<std::string>{"json"} : options.formats;
    const std::vector<MouthShapes> maps = ReadMaps(options.shapes);
    bool hasAsset = false;
    for (const std::string& name : names) {
        const output_format& format = FindFormat(name);
        if (std::ranges::find(forms, &format, &form::format) == forms.end()) {
            forms.push_back({&format, MakeSettings(format, options, maps)});
            hasAsset = hasAsset || forms.back().settings.into != nullptr;
        }
    }
    if (hasAsset && std::ranges::any_of(forms, [](const form& each) {
            return each.settings.into != nullptr && each.settings.into->document.HasOtherFiles();
        })) {
        throw Failure(kExitUsage, "--into: " + options.into +
                                      " names other files beside it, so it cannot be written to "
                                      "another folder; make it .glb");
    }
    if (!options.into.empty() && !hasAsset) {
        throw Failure(kExitUsage, "--into: name a format of glTF with --format, such as glb");
    }
}

std::vector<written_form> OutputForms::Write(const timed_result& result,
                                             const std::string& stem) const {
    std::vector<written_form> written;
    for (const form& each : forms) {
        const std::string ending(each.format->ending);
        write_settings settings = each.settings;
        settings.file = stem + ending;
        written.push_back({ending, each.format->write(result, settings)});
    }
    return written;
}

OutputPlan::OutputPlan(const output_options& options) {
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
        write_settings settings = MakeSettings(format, options, maps);
        settings.file = files[i];
        if (settings.into != nullptr) {
            CheckPlace(files[i], options.into, settings.into->document);
        }
        outputs.push_back({files[i], &format, std::move(settings)});
    }
    if (!options.into.empty() && std::ranges::none_of(outputs, [](const output& each) {
            return each.settings.into != nullptr;
        })) {
        throw Failure(kExitUsage, "--into: name an output .glb or .gltf with -o");
    }
}

void OutputPlan::Write(const timed_result& result) const {
    for (const output& each : outputs) {
        WriteOutput(each.file, each.format->write(result, each.settings));
    }
}
