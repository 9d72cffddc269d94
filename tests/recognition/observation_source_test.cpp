#include "recognition/observation_source.h"

#include <string>

#include <gtest/gtest.h>

#include "features/analysed_speech.h"
#include "features/scripted_pcm_stream.h"
#include "fixtures.h"
#include "recognition/free/free_viterbi.h"
#include "recognition/live/heard_frames.h"
#include "recognition/live/live_search.h"
#include "recognition/textbased_phn_recognizer.h"
#include "recognition/textless_phn_recognizer.h"
#include "recognition/trellis/trellis_viterbi.h"
#include "results/concrete_sync_marker_collection.h"

namespace tessarin::test {
namespace {

TEST(ObservationSource, RefusesWiderObservationsThanTheModelsInEverySearch) {
    ScriptedPcmStream pcm(Speechlike(8000));
    analysis wide;
    wide.descriptor.numFeatures = 38;
    CSpectralStream stream;
    ASSERT_EQ(stream.Init2(&pcm, 1, &wide.descriptor), kNoError);
    const auto model = MakeLikelihoodModel({"x"});
    TArray<uint32_t> path;
    TArray<float> energies;
    EXPECT_EQ(FreeViterbi(*model, stream, nullptr, path, energies), kInvalidArgument);
    EXPECT_EQ(FreeViterbiLM(*model, stream, nullptr, path, energies), kInvalidArgument);

    ready_transcriber transcriber;
    transcriber.tokens.AddWord(0, 1, "xx");
    CConcreteSyncMarkerCollection results;
    CTextbasedPhnRecognizer aligner;
    for (const uint8_t sentences : {uint8_t{0}, uint8_t{1}}) {
        static_cast<void>(aligner.SetOutputOptions(sentences, sentences));
        EXPECT_EQ(aligner.AlignTranscription(&stream, model.get(), &transcriber, nullptr, &results),
                  kInvalidArgument);
    }
    ready_transcriber nothing;
    nothing.tokens.Add(kPunctuationToken, 0, 1, {});
    EXPECT_EQ(aligner.AlignTranscription(&stream, model.get(), &nothing, nullptr, &results),
              kInvalidArgument);

    const std::string file;
    hand_graph graph;
    graph.AddChain({0, 0});
    const log_state_graph logs = log_state_graph::FromProbabilities(graph.records.data(), 6);
    EXPECT_EQ(TrellisViterbi({0, 0, 0, 0.0, file}, *model, logs, {0}, stream, nullptr, &path,
                             energies, nullptr),
              kInvalidArgument);

    CCritSection lock;
    heard_frames heard(lock);
    live_search live(stream, 3, {*model, AllTransitions(*model)}, heard);
    EXPECT_EQ(live.Open(), kInvalidArgument);
    EXPECT_FALSE(stream.HasStarted());
}

TEST(ObservationSource, LooksAheadWithoutChangingTheOrder) {
    for (const uint32_t ahead : {0u, 1u, 3u, observation_source::kMostAhead}) {
        SCOPED_TRACE(ahead);
        list_stream stream;
        for (int t = 0; t < 30; ++t) {
            stream.observations.push_back({static_cast<float>(t)});
            stream.energies.push_back(static_cast<float>(100 + t));
        }
        stream.failAt = 25;
        observation_source source(stream, 1);
        TArray<float> energies;
        ASSERT_EQ(source.Open(&energies), kNoError);
        for (uint32_t t = 0; t < 25; ++t) {
            ASSERT_EQ(source.Next(), kNoError);
            const float* const later = ahead > 0 ? source.LookAhead(ahead) : nullptr;
            ASSERT_EQ(later != nullptr, ahead > 0 && t + ahead < 25);
            if (later != nullptr) {
                ASSERT_EQ(*later, static_cast<float>(t + ahead));
            }
            ASSERT_EQ(*source.GetFeatures(), static_cast<float>(t));
            ASSERT_EQ(source.GetEnergy(), static_cast<float>(100 + t));
            ASSERT_EQ(energies[static_cast<int32_t>(t)], static_cast<float>(100 + t));
        }
        EXPECT_EQ(source.Next(), kFileNotFound);
    }
}

} // namespace
} // namespace tessarin::test
