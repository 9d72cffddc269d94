#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "base/quib_allocator.h"
#include "model/accoustic_hmm.h"
#include "recognition/graph/state_rec.h"
#include "support/recording_sink.h"
#include "tessarin/observation_stream.h"
#include "tessarin/transcriber.h"

namespace tessarin::test {

/// A model whose likelihoods a test chooses: feature s alone decides how likely global state s is.
/// Strictly left to right, `stay` on every self-loop.
inline std::unique_ptr<CAccousticHMM>
MakeLikelihoodModel(std::vector<std::string> labels, float stay = 0.5f, int32_t numStates = 3) {
    auto model = std::make_unique<CAccousticHMM>();
    model->numModels = static_cast<int32_t>(labels.size());
    model->numStates = numStates;
    model->numMixtures = 1;
    model->labels = std::move(labels);
    const auto total = static_cast<size_t>(model->GetTotalStates());
    model->descriptor.numFeatures = static_cast<int32_t>(total);
    model->transitions = float_matrix(total, total);
    model->models.resize(model->labels.size());
    for (size_t s = 0; s < total; ++s) {
        const size_t local = s % static_cast<size_t>(numStates);
        CAccousticHMMState state;
        state.transitions.assign(static_cast<size_t>(numStates), 0.0f);
        state.transitions[local] = stay;
        if (local + 1 < static_cast<size_t>(numStates)) {
            state.transitions[local + 1] = 1.0f - stay;
        }
        CGaussMixture mixture;
        mixture.weight = 1.0;
        mixture.gConst = 1.0;
        mixture.mean.assign(total, 0.0f);
        mixture.inverseCovariance.assign(total, 0.0f);
        mixture.inverseCovariance[s] = 1.0f;
        state.mixtures.push_back(mixture);
        model->models[s / static_cast<size_t>(numStates)].states.push_back(state);
    }
    model->AnalyseTopology();
    model->ClearConstraints();
    model->BuildScoring();
    return model;
}

/// The feature that makes its state as likely as `likelihood`, which is in [0, 1].
inline float FeatureFor(double likelihood) {
    return likelihood <= 0.0 ? 1000.0f : static_cast<float>(std::sqrt(-2.0 * std::log(likelihood)));
}

/// Observations from memory, at 10 ms. Windows are 20 ms long.
class list_stream : public IObservationStream {
public:
    /// Appends an observation with these likelihoods of the model's states.
    void Add(const std::vector<double>& likelihoods, float energy = 0.0f) {
        std::vector<float> features;
        for (const double likelihood : likelihoods) {
            features.push_back(FeatureFor(likelihood));
        }
        observations.push_back(std::move(features));
        energies.push_back(energy);
    }

    /// Appends `count` observations of `numStates` model states in which only `state` is likely.
    void AddOnly(size_t state, size_t numStates, int count, float energy = 0.0f,
                 double others = 0.0) {
        std::vector<double> likelihoods(numStates, others);
        likelihoods[state] = 1.0;
        for (int i = 0; i < count; ++i) {
            Add(likelihoods, energy);
        }
    }

    uint32_t GetNumObservations() override { return static_cast<uint32_t>(observations.size()); }
    error_code GetObservation(float* features, float* energy) override {
        if (next == failAt) {
            return failure;
        }
        if (next == slowAt) {
            std::this_thread::sleep_for(std::chrono::milliseconds(510)); // progress is due
        }
        if (next >= observations.size()) {
            ++readsBehindEnd;
            return kInternalError;
        }
        std::copy(observations[next].begin(), observations[next].end(), features);
        *energy = energies[next];
        ++next;
        return kNoError;
    }
    void GetFrameGeometry(uint32_t* windowSize, uint32_t* overlap) override {
        *windowSize = 320;
        *overlap = 160;
    }
    float GetSampleRate() override { return sampleRate; }
    void GetEnergyRange(float* minimum, float* maximum) override {
        *minimum = minEnergy;
        *maximum = maxEnergy;
    }
    void SetProcessingFlags(uint32_t) override {}
    error_code GetBandEnergies(float*, uint32_t* count) override {
        *count = 0;
        return kNotAvailable;
    }
    error_code SetNoiseFloor(uint32_t, const float*, int32_t) override { return kNotAvailable; }

    std::vector<std::vector<float>> observations;
    std::vector<float> energies;
    float sampleRate = 16000.0f;
    float minEnergy = 0.0f;
    float maxEnergy = 100.0f;
    size_t next = 0;
    size_t failAt = SIZE_MAX;
    size_t slowAt = SIZE_MAX;
    error_code failure = kFileNotFound;
    int readsBehindEnd = 0;
};

/// A graph put together by hand.
class hand_graph {
public:
    void Add(uint8_t phone, uint8_t state, const std::vector<state_arc>& arcs) {
        void* memory = pool.Alloc(state_rec::SizeFor(static_cast<int32_t>(arcs.size())));
        auto* record = new (memory) state_rec{static_cast<uint16_t>(arcs.size()), phone, state};
        std::uninitialized_copy(arcs.begin(), arcs.end(), record->Arcs());
        records.push_back(record);
    }
    /// A chain of whole phones of three states, each entered from the one before; `stay` on
    /// self-loops, 1 - stay on the way on.
    void AddChain(const std::vector<uint8_t>& phones, float stay = 0.5f) {
        for (const uint8_t phone : phones) {
            for (uint8_t state = 0; state < 3; ++state) {
                const auto n = static_cast<uint32_t>(records.size());
                if (n == 0) {
                    Add(phone, state, {{n, stay}});
                } else {
                    Add(phone, state, {{n - 1, 1.0f - stay}, {n, stay}});
                }
            }
        }
    }

    const state_rec* const* Get() const { return records.data(); }
    uint32_t Positions() const { return static_cast<uint32_t>(records.size() / 3); }

    std::vector<state_rec*> records;

private:
    quib_allocator pool{32768};
};

/// Tokens of a text, with storage for their groups.
class token_list {
public:
    struct group {
        std::vector<std::string> alternatives;
    };

    CTxMarker& Add(tx_marker_kind kind, uint32_t start, uint32_t end, std::vector<group> spelled,
                   uint32_t flags = 0, int32_t value = -1) {
        CTxMarker marker{};
        marker.text_start = start;
        marker.text_end = end;
        marker.kind = kind;
        marker.value = value;
        marker.flags = flags;
        marker.group_count = static_cast<int32_t>(spelled.size());
        auto entry = std::make_unique<storage>();
        entry->spelled = std::move(spelled);
        for (group& each : entry->spelled) {
            std::vector<char*>& pointers = entry->pointers.emplace_back();
            for (std::string& alternative : each.alternatives) {
                pointers.push_back(alternative.data());
            }
        }
        for (std::vector<char*>& pointers : entry->pointers) {
            entry->groups.push_back({static_cast<int32_t>(pointers.size()), pointers.data()});
        }
        marker.groups = entry->groups.empty() ? nullptr : entry->groups.data();
        owned.push_back(std::move(entry));
        markers.push_back(marker);
        return markers.back();
    }
    CTxMarker& AddWord(uint32_t start, uint32_t end, const std::string& phonemes) {
        return Add(kWordToken, start, end, {{{phonemes}}});
    }
    CTxMarker& AddCut(int32_t ms) { return Add(kCutToken, 0, 0, {}, 0, ms); }

    std::vector<CTxMarker> markers;

private:
    struct storage {
        std::vector<group> spelled;
        std::vector<std::vector<char*>> pointers;
        std::vector<PhonemeGroup> groups;
    };
    std::vector<std::unique_ptr<storage>> owned;
};

/// A transcriber whose output is already there.
class ready_transcriber final : public IVisemixTranscriber {
public:
    bool Transcribe(const char* text) override {
        transcribed = text;
        return true;
    }
    bool Transcribe(IQuibConvertedText*) override { return true; }
    void getTranscriberInfo(TranscriberInfo*) override {}
    CTxMarker* GetOutputMarkers(uint32_t* count) override {
        *count = static_cast<uint32_t>(tokens.markers.size());
        return tokens.markers.empty() ? nullptr : tokens.markers.data();
    }
    const char* GetTranscription() override { return ""; }
    void GenerateTimedMarkers(ISyncResultsCollection*) override {}
    const char* GetInfoString(uint32_t* length) override {
        *length = 0;
        return nullptr;
    }
    int32_t AddRef() override { return 1; }
    int32_t Release() override { return 1; }
    uint32_t GetInputChar(int32_t index) override {
        const auto place = static_cast<size_t>(index);
        return place < transcribed.size() ? static_cast<uint8_t>(transcribed[place]) : 0;
    }

    token_list tokens;
    std::string transcribed;
};

} // namespace tessarin::test
