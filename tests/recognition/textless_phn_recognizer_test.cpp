#include "recognition/textless_phn_recognizer.h"

#include <gtest/gtest.h>

#include <cstring>

#include "fixtures.h"
#include "results/concrete_sync_marker_collection.h"

namespace tessarin::test {
namespace {

class TextlessRecognizer : public testing::Test {
protected:
    TextlessRecognizer() {
        for (size_t s = 0; s < 9; ++s) {
            model->transitions[s][s] = 0.5f;
            if (s % 3 < 2) {
                model->transitions[s][s + 1] = 0.5f;
            }
            for (size_t to = 0; s % 3 == 2 && to < 9; to += 3) {
                model->transitions[s][to] = 0.1f;
            }
        }
        for (const size_t state : {3u, 4u, 5u, 6u, 7u, 8u, 8u}) {
            stream.AddOnly(state, 9, 2, 50.0f);
        }
    }
    error_code Recognize() {
        return recognizer.RecognizePhonemes(&stream, model.get(), nullptr, &results);
    }

    std::unique_ptr<CAccousticHMM> model = MakeLikelihoodModel({"x", "AA", "s"});
    list_stream stream;
    CConcreteSyncMarkerCollection results;
    CTextlessPhnRecognizer recognizer;
};

TEST_F(TextlessRecognizer, HearsPhonemesWithoutAText) {
    CSyncMarker stale{};
    stale.type = kPhonemeMarker;
    results.Add(stale); // replaced
    EXPECT_EQ(Recognize(), kNoError);
    ASSERT_EQ(results.GetSize(), 2);
    EXPECT_STREQ(results[0].label, "AA");
    EXPECT_STREQ(results[1].label, "s");
    EXPECT_EQ(results[1].start, 65);
    EXPECT_EQ(results[1].end, 145);
}

TEST_F(TextlessRecognizer, NeedsAllTablesForTheLanguageSearch) {
    class counting_recognizer : public CTextlessPhnRecognizer {
    public:
        error_code ViterbiLM(const CAccousticHMM&, IObservationStream&, ProgressSink*,
                             TArray<uint32_t>&, TArray<float>&) override {
            ++languageSearches;
            return kRecognitionFailed;
        }
        int languageSearches = 0;
    } counting;
    model->unigrams.assign(3, 0.5f);
    EXPECT_EQ(counting.RecognizePhonemes(&stream, model.get(), nullptr, &results), kNoError);
    EXPECT_EQ(counting.languageSearches, 0);
    model->bigrams = float_matrix(3, 3);
    model->trigrams.assign(3, float_matrix(3, 3));
    EXPECT_EQ(counting.RecognizePhonemes(&stream, model.get(), nullptr, &results),
              kRecognitionFailed);
    EXPECT_EQ(counting.languageSearches, 1);
}

TEST_F(TextlessRecognizer, MapsScoresAfterAFailureToo) {
    CSyncMarker earlier{};
    earlier.type = kPhonemeMarker;
    std::strcpy(earlier.label, "s");
    earlier.score = 100.0f;
    results.set_flags(kPostProcessScores);
    results.Add(earlier);
    stream.failAt = 3;
    EXPECT_EQ(Recognize(), kFileNotFound);
    ASSERT_EQ(results.GetSize(), 1);
    EXPECT_EQ(results[0].score, 100.0f);
    results[0].score = 10.0f;
    EXPECT_EQ(Recognize(), kFileNotFound);
    EXPECT_EQ(results[0].score, 40.0f); // 0.75 * 50 + 0.25 * 10
}

TEST_F(TextlessRecognizer, RefusesWhatItCannotUse) {
    CAccousticHMM* const hmm = model.get();
    EXPECT_EQ(recognizer.RecognizePhonemes(&stream, hmm, nullptr, nullptr), kInvalidArgument);
    EXPECT_EQ(recognizer.RecognizePhonemes(nullptr, hmm, nullptr, &results), kInvalidArgument);
    EXPECT_EQ(recognizer.RecognizePhonemes(&stream, nullptr, nullptr, &results), kInvalidArgument);
    list_stream empty;
    EXPECT_EQ(recognizer.RecognizePhonemes(&empty, hmm, nullptr, &results), kNoError);
    EXPECT_EQ(results.GetSize(), 0);
}

} // namespace
} // namespace tessarin::test
