// The whole road on one core: a recording in memory and its text become markers and frames. The
// counter `x_real_time` is seconds of audio for each second of work. `mode` is a match_mode: 1 for
// the exact search alone, 0 for both.

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "tessarin/tessarin.h"

namespace {

namespace fs = std::filesystem;

constexpr size_t kWaveHeaderSize = 44;

std::string Content(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string DemoContent(const char* extension) {
    for (const auto& entry : fs::directory_iterator(TESSARIN_SOURCE_DIR "/data/demo")) {
        if (entry.path().extension() == extension) {
            return Content(entry.path());
        }
    }
    return {};
}

/// The demo recording, over and over, from memory.
class RepeatedRecording final : public tessarin::IQuibPCMStream {
public:
    explicit RepeatedRecording(int repeats) {
        const std::string wave = DemoContent(".wav");
        for (int i = 0; i < repeats; ++i) {
            samples.append(wave, kWaveHeaderSize);
        }
    }

    void GetFormat(tessarin::PCMFormat* out) override { *out = {16000, 16, 1}; }
    uint32_t GetSize() override { return static_cast<uint32_t>(samples.size()); }
    int32_t Read(void* buffer, int32_t bytes) override {
        const size_t count = std::min(static_cast<size_t>(bytes), samples.size() - place);
        std::memcpy(buffer, samples.data() + place, count);
        place += count;
        return static_cast<int32_t>(count);
    }
    tessarin::error_code Start() override {
        place = 0;
        return tessarin::kNoError;
    }

private:
    std::string samples;
    size_t place = 0;
};

void Align(benchmark::State& state) {
    const std::string image = Content(TESSARIN_SOURCE_DIR "/data/en-us.model");
    tessarin::CAccousticHMM* model = nullptr;
    tessarin::IVisemixTranscriber* transcriber = nullptr;
    tessarin::IMatchAligner* aligner = nullptr;
    tessarin::IPhnMixtureArticulator* articulator = nullptr;
    tessarin::ISyncResultsCollection* results = nullptr;
    if (CreateAccHMM(image.data(), static_cast<uint32_t>(image.size()), nullptr, &model) != 0) {
        state.SkipWithError("no model");
        return;
    }
    CreateTranscriberFromLexiconFile(TESSARIN_SOURCE_DIR "/data/en-us.lexicon", &transcriber);
    CreateMatchAligner(&aligner);
    aligner->SetMode(static_cast<uint32_t>(state.range(1)));
    CreatePhonemeArticulator(&articulator, 0);
    CreateSyncResultsCollection(tessarin::kPostProcessScores, &results);

    const int repeats = static_cast<int>(state.range(0));
    RepeatedRecording recording(repeats);
    std::string text;
    for (int i = 0; i < repeats; ++i) {
        text += DemoContent(".txt") + " ";
    }
    for (auto _ : state) {
        tessarin::IObservationStream* stream = nullptr;
        CreateObservationStreamFromQuibStream(&recording, model, &stream);
        results->clear();
        const int32_t code =
            aligner->Align(stream, model, text.c_str(), transcriber, nullptr, results);
        articulator->GenerateArticulations(results, nullptr);
        DestroyObservationStream(stream);
        if (code != 0) {
            state.SkipWithError(GetVisemixErrorMessage(code));
            break;
        }
    }
    const double seconds = recording.GetSize() / 2.0 / 16000.0;
    state.counters["audio_s"] = seconds;
    state.counters["x_real_time"] =
        benchmark::Counter(seconds, benchmark::Counter::kIsIterationInvariantRate);

    DestroySyncResultsCollection(results);
    DestroyPhonemeArticulator(articulator);
    DestroyMatchAligner(aligner);
    DestroyTranscriber(transcriber);
    DestroyAccHMM(model);
}
BENCHMARK(Align)
    ->ArgNames({"repeats", "mode"})
    ->ArgsProduct({{1, 10, 100}, {tessarin::kMatchExact, tessarin::kMatchAuto}})
    ->Unit(benchmark::kMillisecond);

} // namespace
