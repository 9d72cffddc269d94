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
#include "apps/tessarin/readers/recording_failure.h"
#include "tessarin/owned.h"
#include "tessarin/tessarin_c.h"

namespace {

/// Enough to recognize a model or a lexicon, without reading a long recording whole.
std::string ReadHead(const std::string& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    std::string head(4, '\0');
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<size_t>(file.gcount()));
    return head;
}

void ShowModel(const std::string& path) {
    data_options options;
    options.model = path;
    const tessarin::model_owner loaded = LoadModel(options); // says what is wrong with one
    tessarin::IMatchAligner* aligner = nullptr;
    CreateMatchAligner(&aligner);
    const tessarin::match_aligner_owner judge(aligner);
    if (judge == nullptr) {
        throw EngineFailure(path, tessarin::kOutOfMemory);
    }
    tessarin_model* made = nullptr;
    const int32_t code = tessarin_create_model_from_file(path.c_str(), &made);
    const std::unique_ptr<tessarin_model, tessarin::destroyer<tessarin_free_model>> model(made);
    if (code != TESSARIN_OK) {
        throw EngineFailure(path, code);
    }
    const tessarin_model_facts& facts = *tessarin_get_model_facts(made);
    std::printf("acoustic model   version %d\n", facts.version);
    std::printf("phonemes         %d:", facts.num_phonemes);
    for (int32_t i = 0; i < facts.num_phonemes; ++i) {
        std::printf(" %s", facts.labels[i]);
    }
    std::printf("\nstates           %d a phoneme, %d in all\n", facts.num_states,
                facts.num_phonemes * facts.num_states);
    std::printf("mixtures         %d a state\n", facts.num_mixtures);
    std::printf("features         %d from %d cepstra of %d bands, flags %u\n", facts.num_features,
                facts.num_cepstra, facts.num_bands, facts.flags);
    const double hop = facts.rate_hz > 0 ? (facts.window_size - facts.window_overlap) * 1000.0 /
                                               static_cast<double>(facts.rate_hz)
                                         : 0.0;
    std::printf("analysis         %g Hz, window %d, overlap %d (one vector each %g ms), "
                "pre-emphasis %g\n",
                static_cast<double>(facts.rate_hz), facts.window_size, facts.window_overlap, hop,
                static_cast<double>(facts.pre_emphasis));
    std::printf("fingerprint      %016llx\n",
                static_cast<unsigned long long>(judge->GetFingerprint(loaded.get())));
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
    if (head == "mmhz") {
        ShowModel(path);
    } else if (LooksLikeLexicon(head)) {
        std::fputs(DescribeLexicon(path).c_str(), stdout);
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
