#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <string>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/options/engine_data.h"
#include "apps/tessarin/readers/audio_file_stream.h"
#include "apps/tessarin/readers/lexicon_summary.h"
#include "apps/tessarin/readers/model_summary.h"
#include "apps/tessarin/readers/recording_failure.h"

namespace {

/// Enough to recognize a model or a lexicon, without reading a long recording whole.
std::string ReadHead(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string head(4, '\0');
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<size_t>(file.gcount()));
    return head;
}

void ShowModel(const std::string& path) {
    data_options options;
    options.model = path;
    LoadModel(options); // says what is wrong with a model that does not load
    const std::optional<model_summary> summary = SummarizeModel(ReadWholeFile(path));
    if (!summary) {
        throw EngineFailure(path, tessarin::kInvalidFile);
    }
    const model_summary& s = *summary;
    std::printf("acoustic model   version %d\n", s.version);
    std::printf("phonemes         %d:", s.numModels);
    for (const std::string& label : s.labels) {
        std::printf(" %s", label.c_str());
    }
    std::printf("\nstates           %d a phoneme, %d in all\n", s.numStates,
                s.numModels * s.numStates);
    std::printf("mixtures         %d a state\n", s.numMixtures);
    std::printf("features         %d from %d cepstra of %d bands, flags %u\n", s.numFeatures,
                s.numCepstra, s.numBands, s.flags);
    const double hop = s.sampleRate > 0 ? (s.windowSize - s.windowOverlap) * 1000.0 /
                                              static_cast<double>(s.sampleRate)
                                        : 0.0;
    std::printf("analysis         %g Hz, window %d, overlap %d (one vector each %g ms), "
                "pre-emphasis %g\n",
                static_cast<double>(s.sampleRate), s.windowSize, s.windowOverlap, hop,
                static_cast<double>(s.preEmphasis));
}

void ShowRecording(const recording_info& info) {
    const double seconds =
        info.sampleRate > 0 ? static_cast<double>(info.frames) / info.sampleRate : 0.0;
    std::printf("recording        %s, %s\n", info.container.c_str(), info.encoding.c_str());
    std::printf("rate             %d Hz\n", info.sampleRate);
    std::printf("channels         %d\n", info.channels);
    std::printf("length           %.3f s, %lld sample frames\n", seconds,
                static_cast<long long>(info.frames));
    std::printf("read by          %s\n", info.builtIn ? "the engine" : "the tool, for the engine");
}

void RunInspect(const std::string& path) {
    if (!std::filesystem::exists(path)) {
        throw Failure(kExitFailed, DescribeCode(path, tessarin::kFileNotFound));
    }
    recording_info info;
    const std::string head = ReadHead(path);
    if (LooksLikeModel(head)) {
        ShowModel(path);
    } else if (LooksLikeLexicon(head)) {
        std::fputs(DescribeLexicon(SummarizeLexicon(path)).c_str(), stdout);
    } else if (ProbeRecording(path, &info)) {
        ShowRecording(info);
    } else {
        throw NotARecording(path, "is not a recording, an acoustic model or a lexicon file");
    }
}

} // namespace

void AddInspectCommand(CLI::App& app) {
    auto path = std::make_shared<std::string>();
    CLI::App* command =
        app.add_subcommand("inspect", "Show what is in a recording, a model or a lexicon file");
    command->add_option("FILE", *path, "Recording, model or lexicon file")
        ->required()
        ->option_text(" ");
    command->callback([path] { RunInspect(*path); });
}
