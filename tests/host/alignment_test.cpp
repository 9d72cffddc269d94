#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/host_without_type_information.h"
#include "host/shipped_data.h"
#include "tessarin/tessarin.h"

namespace {

using tessarin::CSyncMarker;

/// The shipped model and lexicon, and the demo recording with its text.
class Alignment : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(CreateTranscriberFromLexiconFile(TESSARIN_SOURCE_DIR "/data/en-us.lexicon",
                                                   &transcriber),
                  0);
        ASSERT_EQ(CreateSyncResultsCollection(tessarin::kPostProcessScores, &results), 0);
        ASSERT_EQ(CreateTextBasedRecognizer(&recognizer), 0);
    }

    void TearDown() override {
        DestroyTextBasedRecognizer(recognizer);
        DestroySyncResultsCollection(results);
        DestroyTranscriber(transcriber);
    }

    std::vector<std::string> Words() {
        std::vector<std::string> words;
        for (const CSyncMarker* m = results->begin(); m != results->end(); ++m) {
            if (m->type == tessarin::kWordMarker) {
                words.emplace_back(m->text);
            }
        }
        return words;
    }

    const shipped_model shipped;
    tessarin::CAccousticHMM* const model = shipped.model;
    tessarin::IVisemixTranscriber* transcriber = nullptr;
    tessarin::ISyncResultsCollection* results = nullptr;
    tessarin::ITextBasedPhnRecognizer* recognizer = nullptr;
};

TEST_F(Alignment, PutsEveryWordOfTheTextInOrder) {
    tessarin::IObservationStream* stream = nullptr;
    ASSERT_EQ(CreateObservationStreamFromAudioFile(TESSARIN_SOURCE_DIR "/data/demo/echo-test.wav",
                                                   model, &stream),
              0);
    const double duration = stream->GetNumObservations() * 10.0;
    const std::string text = DataFile("demo/echo-test.txt");
    ASSERT_EQ(
        recognizer->RecognizePhonemes(stream, model, text.c_str(), transcriber, nullptr, results),
        0);
    uint32_t count = 0;
    const tessarin::CTxMarker* tokens = transcriber->GetOutputMarkers(&count);
    std::vector<std::string> spoken;
    for (uint32_t i = 0; i < count; ++i) {
        if (tokens[i].kind == tessarin::kWordToken) {
            spoken.push_back(
                text.substr(tokens[i].text_start, tokens[i].text_end - tokens[i].text_start));
        }
    }
    EXPECT_EQ(Words(), spoken);

    int32_t reached = 0;
    for (const CSyncMarker* m = results->begin(); m != results->end(); ++m) {
        if (m->type == tessarin::kPhonemeMarker) {
            EXPECT_GE(m->start, reached) << "phonemes follow each other";
            EXPECT_GE(m->end, m->start);
            reached = m->end;
        }
    }
    EXPECT_NEAR(reached, duration, 60.0) << "the phonemes cover the recording";
    DestroyObservationStream(stream);
}

TEST_F(Alignment, TakesAHostWithoutTypeInformation) {
    const plain_host host = MakePlainHost();
    tessarin::ITextlessPhnRecognizer* textless = nullptr;
    ASSERT_EQ(CreateTextlessPhnRecognizer(&textless), 0);
    const auto recognize = [&](tessarin::ISyncResultsCollection* found) {
        return textless->RecognizePhonemes(host.stream.get(), model, host.progress.get(), found);
    };
    const auto align = [&](tessarin::ISyncResultsCollection* found) {
        return recognizer->RecognizePhonemes(host.stream.get(), model, "Hello", transcriber,
                                             host.progress.get(), found);
    };
    EXPECT_EQ(recognize(host.collection.get()), 2) << "only the library's own are written to";
    EXPECT_EQ(align(host.collection.get()), 2);
    EXPECT_EQ(recognize(results), 0);
    EXPECT_GT(results->size(), 0);
    results->clear();
    EXPECT_EQ(align(results), 8) << "nobody says it";
    EXPECT_GT(results->size(), 0);
    EXPECT_EQ(AddNoiseGate(host.stream.get(), -30, 0, 10, 0, 0), 6);
    DestroyTextlessPhnRecognizer(textless);
}

} // namespace
