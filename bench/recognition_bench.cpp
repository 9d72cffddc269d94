// The searches on ten minutes of synthetic speech. `x_real_time` is seconds of audio for each
// second of work on one core; scoring the Gaussians is part of it.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "base/quib_allocator.h"
#include "model/accoustic_hmm.h"
#include "recognition/aligner/sliding_viterbi.h"
#include "recognition/free/free_viterbi.h"
#include "recognition/graph/forward_graph.h"
#include "recognition/graph/log_state_graph.h"
#include "recognition/graph/state_graph.h"
#include "recognition/literal_free_search.h"
#include "recognition/sentences/sentence_viterbi.h"
#include "recognition/sentences/word_spans.h"
#include "recognition/trellis/trellis_viterbi.h"
#include "results/concrete_sync_marker_collection.h"
#include "tessarin/observation_stream.h"

using namespace tessarin;

namespace {

constexpr int32_t kPhones = 40;
constexpr int32_t kFeatures = 39;
constexpr int32_t kGaussians = 8;
constexpr int32_t kFrames = 60000; // of 10 ms
constexpr int32_t kFramesPerPhone = 8;
constexpr float kStay = 0.6f;

CGaussMixture Gaussian(double weight, const std::vector<float>& mean, float variance) {
    CGaussMixture mixture;
    mixture.weight = weight;
    mixture.mean = mean;
    mixture.inverseCovariance.assign(kFeatures, 1.0f / variance);
    mixture.gConst = std::pow(2.0 * 3.14159265 * double{variance}, -0.5 * kFeatures);
    return mixture;
}

/// Forty phonemes of three states: Gaussians around a centre each, and a broad one that lets no
/// state become impossible.
std::unique_ptr<CAccousticHMM> MakeModel() {
    std::mt19937 random(1);
    std::normal_distribution<float> normal;
    auto model = std::make_unique<CAccousticHMM>();
    model->numModels = kPhones;
    model->numStates = 3;
    model->numMixtures = kGaussians;
    model->descriptor.numFeatures = kFeatures;
    for (int32_t p = 0; p < kPhones; ++p) {
        model->labels.push_back(std::string(1, static_cast<char>('A' + p)));
    }
    const auto total = static_cast<size_t>(model->GetTotalStates());
    model->transitions = float_matrix(total, total);
    model->models.resize(kPhones);
    for (size_t s = 0; s < total; ++s) {
        CAccousticHMMState state;
        state.transitions.assign(3, 0.0f);
        state.transitions[s % 3] = model->transitions[s][s] = kStay;
        if (s % 3 < 2) {
            state.transitions[s % 3 + 1] = model->transitions[s][s + 1] = 1.0f - kStay;
        }
        for (size_t p = 0; s % 3 == 2 && p < kPhones; ++p) {
            model->transitions[s][p * 3] += (1.0f - kStay) / kPhones;
        }
        std::vector<float> mean(kFeatures);
        std::generate(mean.begin(), mean.end(), [&] { return normal(random); });
        for (int32_t m = 1; m < kGaussians; ++m) {
            std::vector<float> shifted = mean;
            for (float& value : shifted) {
                value += 0.3f * normal(random);
            }
            state.mixtures.push_back(Gaussian(1.0 / kGaussians, shifted, 0.5f));
        }
        state.mixtures.push_back(Gaussian(1e-5, std::vector<float>(kFeatures), 4.0f));
        model->models[s / 3].states.push_back(state);
    }
    model->AnalyseTopology();
    model->BuildScoring();
    return model;
}

/// Speech of a list of phones, from memory; or, without spread, silence that fits all alike.
class SyntheticSpeech final : public IObservationStream {
public:
    SyntheticSpeech(const CAccousticHMM& model, const std::vector<uint16_t>& phones) {
        std::mt19937 random(3);
        std::normal_distribution<float> normal;
        for (int32_t t = 0; t < kFrames; ++t) {
            const auto phone = static_cast<size_t>(t / kFramesPerPhone) % phones.size();
            const auto state = static_cast<size_t>(t % kFramesPerPhone * 3 / kFramesPerPhone);
            const auto& mean = model.models[phones[phone]].states[state].mixtures[0].mean;
            for (const float value : mean) {
                observations.push_back(value + 0.7f * normal(random));
            }
        }
    }
    explicit SyntheticSpeech(float constant)
        : observations(size_t{kFrames} * kFeatures, constant) {}

    void Rewind() { next = 0; }

    uint32_t GetNumObservations() override { return kFrames; }
    error_code GetObservation(float* features, float* energy) override {
        std::copy_n(observations.data() + next * kFeatures, kFeatures, features);
        *energy = 100.0f;
        ++next;
        return kNoError;
    }
    void GetFrameGeometry(uint32_t* windowSize, uint32_t* overlap) override {
        *windowSize = 512;
        *overlap = 352;
    }
    float GetSampleRate() override { return 16000.0f; }
    void GetEnergyRange(float* minimum, float* maximum) override {
        *minimum = 0.0f;
        *maximum = 200.0f;
    }
    void SetProcessingFlags(uint32_t) override {}
    error_code GetBandEnergies(float*, uint32_t* count) override {
        *count = 0;
        return kNotAvailable;
    }
    error_code SetNoiseFloor(uint32_t, const float*, int32_t) override { return kNotAvailable; }

private:
    std::vector<float> observations;
    size_t next = 0;
};

std::vector<uint16_t> RandomPhones() {
    std::mt19937 random(2);
    std::vector<uint16_t> phones(kFrames / kFramesPerPhone);
    std::generate(phones.begin(), phones.end(),
                  [&] { return static_cast<uint16_t>(1 + random() % (kPhones - 1)); });
    return phones;
}

void ReportRealTime(benchmark::State& state) {
    state.counters["x_real_time"] = benchmark::Counter(
        kFrames * 0.01 * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

/// Words of four phones with silences between, all in a graph of some thirty thousand states.
void AddSpeech(state_graph_builder& builder) {
    const std::vector<uint16_t> phones = RandomPhones();
    for (size_t i = 0; i < phones.size(); ++i) {
        if (i % 4 == 0) {
            builder.AddPhoneStates(0, false);
        }
        builder.AddPhoneStates(phones[i], false);
    }
}

void Align(benchmark::State& state, const CAccousticHMM& model, SyntheticSpeech& speech,
           error_code expected) {
    quib_allocator pool(32768);
    state_graph_builder builder(model, pool);
    AddSpeech(builder);
    const uint32_t positions = builder.StateCount() / 3;
    const state_rec* const* graph = builder.CopyGraph();
    for ([[maybe_unused]] auto round : state) {
        speech.Rewind();
        TArray<uint32_t> path;
        TArray<float> energies;
        double score = 0.0;
        if (SlidingViterbi({2000, false}, model, graph, positions, {0, 3}, speech, nullptr, &path,
                           energies, &score) != expected) {
            state.SkipWithError("not the expected result");
        }
    }
    ReportRealTime(state);
}

void AlignSpeech(benchmark::State& state) {
    const auto model = MakeModel();
    SyntheticSpeech speech(*model, RandomPhones());
    Align(state, *model, speech, kNoError);
}
BENCHMARK(AlignSpeech)->Unit(benchmark::kMillisecond);

/// The same with back-pointers in memory, and with all of them on disk.
void AlignByTrellis(benchmark::State& state) {
    const auto model = MakeModel();
    SyntheticSpeech speech(*model, RandomPhones());
    quib_allocator pool(32768);
    state_graph_builder builder(*model, pool);
    AddSpeech(builder);
    const log_state_graph graph =
        log_state_graph::FromProbabilities(builder.CopyGraph(), builder.StateCount());
    const auto memory = static_cast<uint32_t>(state.range(0));
    for ([[maybe_unused]] auto round : state) {
        speech.Rewind();
        TArray<uint32_t> path;
        TArray<float> energies;
        double score = 0.0;
        if (TrellisViterbi({2000, 0, memory, 0.0, ""}, *model, graph, {0, 3}, speech, nullptr,
                           &path, energies, &score) != kNoError) {
            state.SkipWithError("not the expected result");
        }
    }
    ReportRealTime(state);
}
BENCHMARK(AlignByTrellis)->Arg(500000000)->Arg(0)->Unit(benchmark::kMillisecond);

/// Sentences of eight words in ten minutes in which all of them are said.
void FindSentences(benchmark::State& state) {
    const auto model = MakeModel();
    SyntheticSpeech speech(*model, RandomPhones());
    quib_allocator pool(32768);
    state_graph_builder builder(*model, pool);
    AddSpeech(builder);
    const log_state_graph graph =
        log_state_graph::FromProbabilities(builder.CopyGraph(), builder.StateCount());
    const forward_graph forward = forward_graph::FromLogGraph(graph, pool);
    constexpr uint32_t kSentenceStates = 8 * 15;
    CTxMarker marker{};
    std::vector<word_span> spans;
    for (uint32_t first = 3; first + kSentenceStates < graph.GetNumStates();
         first += kSentenceStates) {
        spans.push_back({&marker, &marker, first, {}, {}, first + kSentenceStates - 3, 0});
    }
    for ([[maybe_unused]] auto round : state) {
        speech.Rewind();
        CConcreteSyncMarkerCollection results;
        if (SentenceViterbi(2000, *model, forward, spans, speech, nullptr, 0, results) !=
            kNoError) {
            state.SkipWithError("not the expected result");
        }
    }
    ReportRealTime(state);
}
BENCHMARK(FindSentences)->Unit(benchmark::kMillisecond);

/// Far from every state, all are alike: the whole window stays alive.
void AlignNoise(benchmark::State& state) {
    const auto model = MakeModel();
    SyntheticSpeech noise(1000.0f);
    for (CSingleAccHmm& phone : model->models) {
        for (CAccousticHMMState& each : phone.states) {
            each.mixtures.assign(1, Gaussian(1.0, std::vector<float>(kFeatures, 1000.0f), 1.0f));
        }
    }
    model->BuildScoring();
    Align(state, *model, noise, kRecognitionFailed); // it stays in the first word
}
BENCHMARK(AlignNoise)->Unit(benchmark::kMillisecond);

using free_search = error_code (*)(const CAccousticHMM&, IObservationStream&, ProgressSink*,
                                   TArray<uint32_t>&, TArray<float>&);

std::unique_ptr<CAccousticHMM> MakeModelWithLanguage() {
    auto model = MakeModel();
    model->unigrams.assign(kPhones, 1.0f / kPhones);
    model->bigrams = float_matrix(kPhones, kPhones);
    model->trigrams.assign(kPhones, float_matrix(kPhones, kPhones));
    for (size_t p = 0; p < size_t{kPhones} * kPhones; ++p) {
        model->bigrams[0][p] = 1.0f / kPhones;
    }
    return model;
}

void Recognize(benchmark::State& state, free_search search) {
    const auto model = MakeModelWithLanguage();
    SyntheticSpeech speech(*model, RandomPhones());
    for ([[maybe_unused]] auto round : state) {
        speech.Rewind();
        TArray<uint32_t> path;
        TArray<float> energies;
        if (search(*model, speech, nullptr, path, energies) != kNoError) {
            state.SkipWithError("the search found nothing");
        }
    }
    ReportRealTime(state);
}

using literal_search = std::vector<uint32_t> (*)(const CAccousticHMM&,
                                                 const std::vector<std::vector<float>>&);

/// The same searches as plain loops over all pairs of states.
void RecognizeLiterally(benchmark::State& state, literal_search search) {
    const auto model = MakeModelWithLanguage();
    SyntheticSpeech speech(*model, RandomPhones());
    std::vector<std::vector<float>> observations(kFrames, std::vector<float>(kFeatures));
    for (std::vector<float>& observation : observations) {
        float energy = 0.0f;
        (void)speech.GetObservation(observation.data(), &energy);
    }
    for ([[maybe_unused]] auto round : state) {
        if (search(*model, observations).empty()) {
            state.SkipWithError("the search found nothing");
        }
    }
    ReportRealTime(state);
}

BENCHMARK_CAPTURE(Recognize, Plain, FreeViterbi)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(RecognizeLiterally, Plain, test::LiteralFreePath)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Recognize, WithLanguage, FreeViterbiLM)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(RecognizeLiterally, WithLanguage, test::LiteralLanguagePath)
    ->Unit(benchmark::kMillisecond);

} // namespace
