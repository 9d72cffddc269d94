#include "recognition/loose/match_aligner.h"

#include <algorithm>
#include <chrono>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fixtures.h"
#include "results/concrete_sync_marker_collection.h"

namespace tessarin::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Observations of 10 ms; what is said is e^28 times likelier than anything else.
class MatchAligner : public testing::Test {
protected:
    void Speak(std::initializer_list<size_t> phones, int observations = 3) {
        for (const size_t phone : phones) {
            for (size_t state = 0; state < 3; ++state) {
                stream.AddOnly(phone * 3 + state, 12, observations, 50.0f, 1e-12);
            }
        }
    }
    error_code Align(ProgressSink* progress = nullptr) {
        return aligner.Align(&stream, model.get(), text, &transcriber, progress, &results);
    }
    /// Each marker as its label or text with its times.
    static std::string View(CConcreteSyncMarkerCollection& markers) {
        std::string view;
        for (const CSyncMarker& marker : static_cast<TArray<CSyncMarker>&>(markers)) {
            const bool isPhone = marker.type == kPhonemeMarker;
            view += (isPhone ? std::string(marker.label) : "<" + std::string(marker.text) + ">") +
                    " " + std::to_string(marker.start) + "-" + std::to_string(marker.end) + " " +
                    std::to_string(static_cast<int>(marker.score)) + "\n";
        }
        return view;
    }
    std::string SaidWords() {
        uint32_t count = 0;
        const match_word* const words = aligner.GetWords(&count);
        std::string said;
        for (uint32_t i = 0; i < count; ++i) {
            said += words[i].is_said != 0 ? '1' : '0';
        }
        return said;
    }
    std::string Unscripted() {
        uint32_t count = 0;
        const match_stretch* const all = aligner.GetUnscripted(&count);
        std::string view;
        for (uint32_t i = 0; i < count; ++i) {
            view += std::to_string(all[i].start_ms) + "-" + std::to_string(all[i].end_ms) + "@" +
                    std::to_string(all[i].text_start) + " ";
        }
        return view;
    }

    std::unique_ptr<CAccousticHMM> model = MakeLikelihoodModel({"x", "AA", "s", "t"});
    list_stream stream;
    ready_transcriber transcriber;
    CConcreteSyncMarkerCollection results;
    CMatchAligner aligner;
    const char* text = "sa ta ss at";
};

class FourWords : public MatchAligner {
protected:
    FourWords() {
        transcriber.tokens.AddWord(0, 2, "sAA");
        transcriber.tokens.AddWord(3, 5, "tAA");
        transcriber.tokens.AddWord(6, 8, "ss");
        transcriber.tokens.AddWord(9, 11, "AAt");
    }
};

TEST_F(FourWords, HaveTheExactTimesWhereTheTextIsWhatWasSaid) {
    Speak({0, 2, 1, 3, 1, 2, 2, 1, 3, 0});
    for (const uint32_t mode : {kMatchAuto, kMatchExact}) {
        SCOPED_TRACE(mode);
        results.clear();
        results.set_flags(kPostProcessScores);
        stream.next = 0;
        EXPECT_EQ(aligner.SetMode(mode), kNoError);
        EXPECT_EQ(Align(), kNoError);
        CConcreteSyncMarkerCollection exact;
        exact.set_flags(kPostProcessScores);
        stream.next = 0;
        EXPECT_EQ(CTextbasedPhnRecognizer().RecognizePhonemes(&stream, model.get(), text,
                                                              &transcriber, nullptr, &exact),
                  kNoError);
        EXPECT_EQ(View(results), View(exact));
        EXPECT_EQ(SaidWords(), mode == kMatchAuto ? "1111" : "");
        EXPECT_EQ(Unscripted(), "");
    }
    EXPECT_EQ(aligner.SetMode(3), kInvalidArgument);
}

TEST_F(FourWords, HaveNoMarkerWhenTheyWereNotSaid) {
    Speak({0, 2, 1, 1, 3, 0});
    EXPECT_EQ(Align(), kNoError);
    EXPECT_EQ(SaidWords(), "1001");
    EXPECT_EQ(View(results), "x 5-95 50\n<sa> 95-275 50\ns 95-185 50\nAA 185-275 50\n"
                             "<at> 275-455 50\nAA 275-365 50\nt 365-455 50\nx 455-545 50\n");
    match_summary summary;
    aligner.GetSummary(&summary);
    EXPECT_EQ(summary.is_loose, 1);
    EXPECT_EQ(summary.unsaid, 2u);
    EXPECT_EQ(summary.verdict, kMatchUnknown);
    uint32_t count = 0;
    const match_word* const words = aligner.GetWords(&count);
    EXPECT_GT(words[0].margin, 100.0f);
    EXPECT_LT(words[1].margin, 0.0f);
    EXPECT_EQ(words[0].confidence, -1.0f);
}

TEST_F(FourWords, LetOtherSpeechStandBetweenThemAsItIsHeard) {
    Speak({0, 2, 1, 3, 1});
    Speak({0}, 2);
    Speak({3, 2, 1, 3});
    Speak({0}, 2);
    Speak({2, 2, 1, 3, 0});
    EXPECT_EQ(Align(), kNoError);
    EXPECT_EQ(SaidWords(), "1111");
    EXPECT_EQ(Unscripted(), "515-875@6 ");
    EXPECT_THAT(View(results), HasSubstr("AA 365-455 50\nx 455-515 50\nt 515-605 50\ns 605-695 50\n"
                                         "AA 695-785 50\nt 785-875 50\nx 875-935 50\n<ss> 935-"));
}

TEST_F(FourWords, HaveTheLooseTimesWhenTheyAreAskedFor) {
    Speak({0, 2, 1, 3, 1, 2, 2});
    Speak({3}, 1); // too little other speech to depart from the text for
    Speak({1, 3, 0});
    match_summary summary;
    for (const uint32_t mode : {kMatchAuto, kMatchLoose}) {
        SCOPED_TRACE(mode);
        results.clear();
        stream.next = 0;
        EXPECT_EQ(aligner.SetMode(mode), kNoError);
        EXPECT_EQ(Align(), kNoError);
        aligner.GetSummary(&summary);
        EXPECT_EQ(summary.is_loose, mode == kMatchLoose ? 1 : 0);
        EXPECT_EQ(SaidWords(), "1111");
    }
}

TEST_F(FourWords, HaveSegmentsWhereTheyAreAskedFor) {
    Speak({0, 2, 1, 1, 3, 0});
    results.set_flags(kWriteStateMarkers);
    EXPECT_EQ(Align(), kNoError);
    EXPECT_EQ(SaidWords(), "1001");
    std::vector<int32_t> starts;
    for (const CSyncMarker& marker : static_cast<TArray<CSyncMarker>&>(results)) {
        if (marker.type == kStateMarker) {
            starts.push_back(marker.start);
        }
    }
    // Of all phonemes but the last.
    EXPECT_THAT(starts,
                ElementsAre(5, 35, 65, 95, 125, 155, 185, 215, 245, 275, 305, 335, 365, 395, 425));
}

TEST_F(FourWords, EndWhereTheyAreCancelled) {
    Speak({0, 2, 1, 3, 1, 2, 2, 1, 3, 0});
    stream.slowAt = 20;
    recording_sink sink(0);
    EXPECT_EQ(Align(&sink), kUserCancelled);
    EXPECT_EQ(SaidWords(), "");
    EXPECT_EQ(results.GetSize(), 0);
}

TEST_F(FourWords, AreFoundAgainWhereTheExactSearchLosesTheText) {
    // A text of twelve states of which the audio has room for five.
    Speak({2, 1}, 1);
    EXPECT_EQ(Align(), kRecognitionFailed); // one of four is not most of it
    EXPECT_EQ(SaidWords(), "1000");
}

TEST_F(MatchAligner, TreatsEachRegionForItself) {
    transcriber.tokens.AddWord(0, 2, "sAA");
    transcriber.tokens.AddCut(180);
    transcriber.tokens.AddWord(3, 5, "tAA");
    transcriber.tokens.AddWord(6, 8, "ss");
    Speak({2, 1, 2, 2, 0});
    EXPECT_EQ(Align(), kNoError);
    EXPECT_EQ(SaidWords(), "101");
    EXPECT_EQ(View(results), "<sa> 5-185 50\ns 5-95 50\nAA 95-185 50\n"
                             "<ss> 185-365 50\ns 185-275 50\ns 275-365 50\nx 365-455 50\n");
}

/// Fails once and then goes on.
class stumbling_stream : public list_stream {
public:
    error_code GetObservation(float* features, float* energy) override {
        const error_code code = list_stream::GetObservation(features, energy);
        failAt = code == failure ? SIZE_MAX : failAt;
        return code;
    }
};

/// The first region cannot be read; the second has no room for its last word, and finds the rest.
TEST_F(MatchAligner, ReportsTheFailureOfAnyRegion) {
    transcriber.tokens.AddWord(0, 2, "sAA");
    transcriber.tokens.AddCut(180);
    transcriber.tokens.AddWord(3, 5, "sAA");
    transcriber.tokens.AddWord(6, 14, "ssssssss");
    Speak({2, 1, 3, 1});
    stumbling_stream stumbling;
    stumbling.observations = stream.observations;
    stumbling.energies = stream.energies;
    stumbling.failAt = 4;
    EXPECT_EQ(aligner.Align(&stumbling, model.get(), text, &transcriber, nullptr, &results),
              kFileNotFound);
}

/// Sixteen thousand pauses that must not be left out, in a recording that has room for none.
TEST_F(MatchAligner, DoesNotSearchWhatCannotBeThere) {
    for (uint32_t i = 0; i < 16000; ++i) {
        transcriber.tokens.Add(kPunctuationToken, i, i + 1, {{{"x"}}}, kPauseTokenFlag);
    }
    Speak({0, 2, 1, 0}, 200);
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(Align(), kRecognitionFailed);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(10));
    match_summary summary;
    aligner.GetSummary(&summary);
    EXPECT_EQ(summary.is_loose, 0);
}

TEST_F(MatchAligner, KnowsNothingAtFirst) {
    match_summary summary{};
    aligner.GetSummary(&summary);
    EXPECT_EQ(summary.score, -1.0f);
    EXPECT_EQ(summary.duration, -1.0f);
    EXPECT_EQ(summary.spread, 1.0f);
    EXPECT_EQ(summary.verdict, kMatchUnknown);
    uint32_t count = 1;
    EXPECT_EQ(aligner.GetWords(&count), nullptr);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(aligner.GetUnscripted(nullptr), nullptr);
    EXPECT_EQ(aligner.GetPhonemeConfidences(nullptr), nullptr);
    aligner.GetSummary(nullptr);
    EXPECT_EQ(aligner.GetFingerprint(nullptr), 0u);
    EXPECT_EQ(aligner.SetCalibration(nullptr, "", 0), kInvalidArgument);
    EXPECT_EQ(aligner.SetCalibration(model.get(), nullptr, 1), kInvalidArgument);
}

TEST_F(MatchAligner, RefusesWhatTheExactAlignerRefuses) {
    transcriber.tokens.AddWord(0, 2, "sAA");
    Speak({2, 1});
    EXPECT_EQ(aligner.Align(nullptr, model.get(), text, &transcriber, nullptr, &results),
              kInvalidArgument);
    EXPECT_EQ(aligner.Align(&stream, model.get(), text, &transcriber, nullptr, nullptr),
              kInvalidArgument);
    EXPECT_EQ(aligner.Align(&stream, nullptr, text, &transcriber, nullptr, &results),
              kInvalidArgument);
    EXPECT_EQ(aligner.Align(&stream, model.get(), text, nullptr, nullptr, &results),
              kInvalidArgument);
    stream.failAt = 4;
    EXPECT_EQ(Align(), kFileNotFound);
    EXPECT_EQ(SaidWords(), "");
}

class Calibration : public FourWords {
protected:
    std::string Text(const std::string& more = "") {
        char print[32];
        std::snprintf(print, sizeof(print), "%llx",
                      static_cast<unsigned long long>(ModelFingerprint(*model)));
        return "tessarin calibration 1\nmodel " + std::string(print) +
               "\nword -1 0.1\nheard 0.5 # of them\nfile -4 0.05 3 0 0\nverdict 0.3 0.9\n" + more;
    }
    error_code Set(const std::string& given) {
        return aligner.SetCalibration(model.get(), given.data(),
                                      static_cast<uint32_t>(given.size()));
    }
};

TEST_F(Calibration, TurnsEvidenceIntoConfidence) {
    ASSERT_EQ(Set(Text("duration AA 4.5 0.5\n")), kNoError);
    Speak({0, 2, 1, 1, 3});
    Speak({3, 2, 3, 2});
    EXPECT_EQ(Align(), kNoError);
    uint32_t count = 0;
    const match_word* const words = aligner.GetWords(&count);
    ASSERT_EQ(count, 4u);
    float margins = 0.0f;
    for (uint32_t i = 0; i < count; ++i) {
        margins += std::clamp(words[i].margin, 0.0f, 100.0f);
        EXPECT_NEAR(words[i].confidence, 1.0 / (1.0 + std::exp(1.0 - 0.1 * words[i].margin)), 1e-5);
    }
    const float* const phonemes = aligner.GetPhonemeConfidences(&count);
    ASSERT_EQ(count, 9u); // silence, two words, and what is heard after them
    EXPECT_EQ(phonemes[0], -1.0f);
    EXPECT_EQ(phonemes[2], words[0].confidence);
    EXPECT_EQ(phonemes[3], words[3].confidence);
    EXPECT_EQ(phonemes[8], 0.5f);
    match_summary summary;
    aligner.GetSummary(&summary);
    EXPECT_NEAR(summary.margin, margins / 4, 1e-3f);
    EXPECT_NEAR(summary.score, 1.0 / (1.0 + std::exp(4.0 - 0.05 * margins / 4 - 1.5)), 1e-3);
    EXPECT_EQ(summary.verdict, kMatchDoubtful);
    EXPECT_GT(summary.duration, 0.0f);
}

TEST_F(Calibration, OfAnotherModelOrNoneIsRefused) {
    EXPECT_EQ(Set(Text("word 0 1\n")), kNoError);
    for (const std::string& wrong :
         {std::string(), std::string("tessarin calibration 2\n"), Text("word 0 -1\n"),
          Text("word 0 nan\n"), Text("duration AA 4\n"), Text("verdict 0.9 0.3\n"),
          Text("what 1\n"), Text().substr(0, 60)}) {
        SCOPED_TRACE(wrong);
        EXPECT_EQ(Set(wrong), kInvalidFile);
    }
    EXPECT_EQ(Set(Text("model 0\n")), kInvalidFile);
    const auto print = aligner.GetFingerprint(model.get());
    model->models[1].states[0].mixtures[0].inverseCovariance[0] += 0.1f;
    const auto changed = aligner.GetFingerprint(model.get());
    EXPECT_NE(changed, print);
    model->models[1].states[0].transitions[0] -= 0.1f;
    EXPECT_NE(aligner.GetFingerprint(model.get()), changed);
    const std::string given = Text();
    model->models[1].states[0].mixtures[0].mean[0] += 0.1f;
    EXPECT_EQ(Set(given), kInvalidArgument);
    Speak({0, 2, 1, 3, 1, 2, 2, 1, 3, 0});
    EXPECT_EQ(Align(), kNoError);
    uint32_t count = 0;
    EXPECT_EQ(aligner.GetWords(&count)->confidence, -1.0f);
}

} // namespace
} // namespace tessarin::test
