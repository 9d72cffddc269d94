#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "host/shipped_data.h"
#include "tessarin/tessarin.h"

namespace {

TEST(Factories, DestroyersTakeNull) {
    DestroyAccHMM(nullptr);
    DestroyObservationStream(nullptr);
    DestroySyncResultsCollection(nullptr);
    DestroyTextBasedRecognizer(nullptr);
    DestroyTranscriber(nullptr);
    DestroyLexiconEditor(nullptr);
    DestroyPhonemeArticulator(nullptr);
    SUCCEED();
}

TEST(Factories, RefuseNullOutputs) {
    EXPECT_EQ(CreateAccHMM("", 0, nullptr, nullptr), 2);
    EXPECT_EQ(CreateObservationStreamFromAudioFile("x.wav", nullptr, nullptr), 2);
    EXPECT_EQ(CreateObservationStreamFromQuibStream(nullptr, nullptr, nullptr), 2);
    EXPECT_EQ(CreatePCMDataSourceStream(nullptr, nullptr), 1);
    EXPECT_EQ(CreateSpectralDataSource(nullptr), 1);
    EXPECT_EQ(CreateSyncResultsCollection(0, nullptr), 1);
    EXPECT_EQ(CreatePhonemeArticulator(nullptr, 0), 1);
    EXPECT_EQ(CreateDefaultTranscriber("", 0, nullptr), 1);
}

// Kept: hosts know an unreadable model by code 12, although its text speaks of a WAV file.
TEST(Factories, UnreadableModelAnswersTwelve) {
    auto* model = reinterpret_cast<tessarin::CAccousticHMM*>(1);
    char text[tessarin::kModelErrorTextSize] = "untouched";
    EXPECT_EQ(CreateAccHMM("xx", 2, text, &model), 12);
    EXPECT_EQ(model, nullptr);
    EXPECT_STREQ(text, "[01] The Specified model is not a valid model");
}

TEST(Factories, ObservationStreamNeedsAModel) {
    auto* stream = reinterpret_cast<tessarin::IObservationStream*>(1);
    EXPECT_EQ(CreateObservationStreamFromAudioFile("x.wav", nullptr, &stream), 2);
    EXPECT_EQ(stream, nullptr);
}

TEST(Factories, CommandControllersNeedAModel) {
    const shipped_model shipped;
    auto* controller = reinterpret_cast<tessarin::IQuibCmdCtrl*>(1);
    EXPECT_EQ(CreateQuibCmdCtrl(nullptr, shipped.model, 0.0f, nullptr), 1);
    EXPECT_EQ(CreateQuibCmdCtrl(nullptr, nullptr, 0.0f, &controller), 2);
    EXPECT_EQ(controller, nullptr);
    auto* acoustic = reinterpret_cast<tessarin::IQuibAcousticCmdCtrl*>(1);
    EXPECT_EQ(CreateQuibAcousticCmdCtrl(nullptr, shipped.model, 0.0f, nullptr), 1);
    EXPECT_EQ(CreateQuibAcousticCmdCtrl(nullptr, nullptr, 0.0f, &acoustic), 2);
    EXPECT_EQ(acoustic, nullptr);
}

TEST(Factories, TranscriberSpeaksWithoutALexicon) {
    tessarin::IVisemixTranscriber* transcriber = nullptr;
    ASSERT_EQ(CreateDefaultTranscriber(nullptr, 0, &transcriber), 0);
    EXPECT_TRUE(transcriber->Transcribe("Hello, world"));
    uint32_t count = 0;
    const tessarin::CTxMarker* markers = transcriber->GetOutputMarkers(&count);
    ASSERT_EQ(count, 3u);
    EXPECT_EQ(markers[0].kind, tessarin::kWordToken);
    EXPECT_EQ(markers[1].kind, tessarin::kPunctuationToken);
    EXPECT_EQ(markers[1].flags, tessarin::kPauseTokenFlag);
    EXPECT_STREQ(markers[1].groups[0].alternatives[0], "x");
    EXPECT_EQ(markers[2].text_start, 7u);
    EXPECT_EQ(markers[2].text_end, 12u);
    DestroyTranscriber(transcriber);
}

TEST(Factories, ArticulatorAnimatesWhatAHostWrites) {
    tessarin::ISyncResultsCollection* results = nullptr;
    ASSERT_EQ(CreateSyncResultsCollection(0, &results), 0);
    tessarin::CSyncMarker marker{};
    marker.type = tessarin::kPhonemeMarker;
    marker.score = 100.0f;
    marker.end = 200;
    std::strcpy(marker.label, "b");
    results->add_marker(marker);

    tessarin::IPhnMixtureArticulator* articulator = nullptr;
    ASSERT_EQ(CreatePhonemeArticulator(&articulator, 0), 0);
    ASSERT_EQ(articulator->GenerateArticulations(results, nullptr), 0);
    ASSERT_NE(articulator->GetArticulationsBegin(), nullptr);
    EXPECT_STREQ(articulator->GetArticulationsBegin()->entries[0].label, "b");
    EXPECT_FLOAT_EQ(articulator->GetArticulationsBegin()->entries[0].weight, 1.0f);
    DestroyPhonemeArticulator(articulator);
    DestroySyncResultsCollection(results);
}

} // namespace
