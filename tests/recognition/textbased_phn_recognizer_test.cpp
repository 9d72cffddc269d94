#include "recognition/textbased_phn_recognizer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fixtures.h"
#include "results/concrete_sync_marker_collection.h"

namespace tessarin::test {
namespace {

using testing::ElementsAre;
using testing::FieldsAre;
using testing::IsEmpty;
using testing::Pair;

struct marker_view {
    uint32_t type;
    std::string text; // of a span; the label of a phone
    int32_t start;
    int32_t end;
};

class Aligner : public testing::Test {
protected:
    /// So many observations of 10 ms of each state of a phone.
    void Speak(size_t phone, int observations) {
        for (size_t state = 0; state < 3; ++state) {
            stream.AddOnly(phone * 3 + state, 12, observations, 50.0f, 1e-12);
        }
    }
    error_code Align(const char* text, ProgressSink* progress = nullptr) {
        return recognizer.RecognizePhonemes(&stream, model.get(), text, &transcriber, progress,
                                            &results);
    }
    std::vector<marker_view> View() {
        std::vector<marker_view> views;
        for (const CSyncMarker& marker : static_cast<TArray<CSyncMarker>&>(results)) {
            const bool isPhone = marker.type == kPhonemeMarker || marker.type == kStateMarker;
            const char* text = isPhone ? marker.label : marker.text ? marker.text : "(null)";
            views.push_back({marker.type, text, marker.start, marker.end});
        }
        return views;
    }

    std::unique_ptr<CAccousticHMM> model = MakeLikelihoodModel({"x", "AA", "s", "t"});
    list_stream stream;
    ready_transcriber transcriber;
    CConcreteSyncMarkerCollection results;
    CTextbasedPhnRecognizer recognizer;
};

TEST_F(Aligner, TimesWordsAndPhonemes) {
    transcriber.tokens.AddWord(0, 2, "sAA");
    transcriber.tokens.AddWord(3, 4, "t");
    for (const size_t phone : {0u, 2u, 1u, 3u, 0u}) {
        Speak(phone, 2);
    }
    EXPECT_EQ(Align("sa t"), kNoError);
    EXPECT_EQ(transcriber.transcribed, "sa t");
    EXPECT_THAT(View(), ElementsAre(FieldsAre(1u, "x", 5, 65), FieldsAre(2u, "sa", 65, 185),
                                    FieldsAre(1u, "s", 65, 125), FieldsAre(1u, "AA", 125, 185),
                                    FieldsAre(2u, "t", 185, 245), FieldsAre(1u, "t", 185, 245),
                                    FieldsAre(1u, "x", 245, 305)));
    EXPECT_FLOAT_EQ(results[0].score, 50.0f);

    // The same again, from what was transcribed: the recognizer keeps nothing of a run, and
    // results are appended.
    stream.next = 0;
    EXPECT_EQ(recognizer.AlignTranscription(&stream, model.get(), &transcriber, nullptr, &results),
              kNoError);
    ASSERT_EQ(results.GetSize(), 14);
    EXPECT_EQ(results[8].text, nullptr);
    EXPECT_EQ(results[8].text_length, 2);
}

TEST_F(Aligner, ChoosesThePronunciationThatWasSpoken) {
    transcriber.tokens.Add(kWordToken, 0, 1, {{{"sAA", "tAA", "AAs"}}});
    for (const size_t phone : {3u, 1u, 0u}) {
        Speak(phone, 2);
    }
    EXPECT_EQ(Align("a"), kNoError);
    EXPECT_THAT(View(), ElementsAre(FieldsAre(2u, "a", 5, 125), FieldsAre(1u, "t", 5, 65),
                                    FieldsAre(1u, "AA", 65, 125), FieldsAre(1u, "x", 125, 185)));
}

TEST_F(Aligner, WritesStateSegmentsWhenTheResultsAskForThem) {
    results.set_flags(kWriteStateMarkers);
    transcriber.tokens.AddWord(0, 1, "st");
    Speak(2, 2);
    Speak(3, 2);
    EXPECT_EQ(Align("a"), kNoError);
    EXPECT_THAT(View(), ElementsAre(FieldsAre(2u, "a", 5, 125), FieldsAre(1u, "s", 5, 65),
                                    FieldsAre(5u, "", 5, 25), FieldsAre(5u, "", 25, 45),
                                    FieldsAre(5u, "", 45, 65), FieldsAre(1u, "t", 65, 125)));
}

TEST_F(Aligner, AlignsTheRegionsBetweenCutsOneAfterTheOther) {
    transcriber.tokens.AddWord(0, 1, "s");
    transcriber.tokens.AddCut(120);
    transcriber.tokens.AddWord(2, 3, "t");
    Speak(0, 2);
    Speak(2, 2); // 0 to 120 ms
    Speak(3, 2);
    EXPECT_EQ(Align("a b"), kNoError);
    EXPECT_THAT(View(), ElementsAre(FieldsAre(1u, "x", 5, 65), FieldsAre(2u, "a", 65, 125),
                                    FieldsAre(1u, "s", 65, 125), FieldsAre(2u, "b", 125, 185),
                                    FieldsAre(1u, "t", 125, 185)));
    EXPECT_EQ(transcriber.tokens.markers[1].first_state, 1u); // the cut stands at the next word
}

TEST_F(Aligner, GoesOnAfterARegionThatFailed) {
    transcriber.tokens.AddWord(0, 1, "sAAsAA");
    transcriber.tokens.AddCut(60);
    transcriber.tokens.AddWord(2, 3, "t");
    Speak(2, 2);
    Speak(3, 2);
    EXPECT_EQ(Align("a b"), kRecognitionFailed); // six observations are too few for four phones
    EXPECT_THAT(View(), testing::Contains(FieldsAre(2u, "b", 65, 125)));
}

TEST_F(Aligner, ReadsOnWhenACutStandsBeforeTheCutBeforeIt) {
    transcriber.tokens.AddCut(120);
    transcriber.tokens.AddWord(0, 1, "s");
    transcriber.tokens.AddCut(60);
    transcriber.tokens.AddWord(2, 3, "t");
    Speak(0, 4);
    Speak(3, 4); // 240 ms
    EXPECT_EQ(Align("a b"), kNoError);
    // 12 observations of silence; a region of -6 that takes all 24 that are announced; and 18 for
    // the last word. What lies after the audio reads as zeros, for which all states are likely.
    EXPECT_EQ(stream.next, 24u);
    EXPECT_EQ(stream.readsBehindEnd, 0);
    const std::vector<marker_view> view = View();
    EXPECT_THAT(view[0], FieldsAre(1u, "x", 5, 125));
    EXPECT_THAT(view[1], FieldsAre(2u, "a", 125, 365));
    EXPECT_THAT(view[2], FieldsAre(1u, "x", 125, 365));
}

TEST_F(Aligner, MakesOnePhoneOfARegionWithNothingToAlign) {
    transcriber.tokens.Add(kPunctuationToken, 0, 1, {});
    Speak(2, 2);
    EXPECT_EQ(Align("."), kNoError); // the final silence alone has fewer than four states
    EXPECT_THAT(View(), ElementsAre(FieldsAre(3u, ".", 5, 5), FieldsAre(1u, "x", 5, 65)));

    results.clear();
    transcriber.tokens = {};
    transcriber.tokens.AddWord(0, 1, "s");
    stream.observations.resize(2);
    stream.next = 0;
    EXPECT_EQ(Align("a"), kNoError); // two observations are too few to look for a word
    EXPECT_THAT(View(), ElementsAre(FieldsAre(2u, "a", 5, 25), FieldsAre(1u, "x", 5, 25)));

    results.clear();
    stream.observations.clear();
    EXPECT_EQ(Align("a"), kNoError);
    EXPECT_THAT(View(), IsEmpty());
}

TEST_F(Aligner, HasNoMarkersForAPathOfTwoObservations) {
    transcriber.tokens.AddWord(0, 1, "sAAt");
    stream.AddOnly(6, 12, 3);
    stream.Add(std::vector<double>(12, 0.0));
    stream.AddOnly(6, 12, 3);
    EXPECT_EQ(Align("a"), kRecognitionFailed); // lost at observation 3
    EXPECT_THAT(View(), IsEmpty());
}

TEST_F(Aligner, DeliversThePathAsFarAsItGot) {
    transcriber.tokens.AddWord(0, 1, "s");
    transcriber.tokens.AddWord(2, 3, "t");
    Speak(2, 3);
    Speak(3, 1);
    stream.Add(std::vector<double>(12, 0.0));
    stream.AddOnly(0, 12, 3);
    EXPECT_EQ(Align("a b"), kRecognitionFailed);
    const std::vector<marker_view> view = View();
    ASSERT_FALSE(view.empty());
    EXPECT_EQ(std::count_if(view.begin(), view.end(),
                            [](const marker_view& each) { return each.type == kWordMarker; }),
              2);
}

TEST_F(Aligner, ReportsToEveryRegionAndStopsNoneWhenCancelled) {
    transcriber.tokens.AddWord(0, 1, "s");
    transcriber.tokens.AddCut(1500);
    transcriber.tokens.AddWord(2, 3, "t");
    Speak(2, 50);
    Speak(3, 50);
    recording_sink sink(0);
    EXPECT_EQ(Align("a b", &sink), kUserCancelled);
    EXPECT_THAT(sink.calls, ElementsAre(Pair(100, 150), Pair(100, 150)));
    EXPECT_THAT(View(), IsEmpty());
}

TEST_F(Aligner, OutputOptionsChooseSearchAndMarkers) {
    transcriber.tokens.AddWord(0, 1, "s");
    Speak(2, 2);
    struct option_case {
        uint8_t retry;
        uint8_t wordsOnly;
        error_code code;
        int32_t markers;
    };
    for (const option_case& each : {option_case{0, 0, kNoError, 2}, option_case{1, 0, kNoError, 2},
                                    option_case{0, 1, kNoError, 1}, option_case{2, 7, kNoError, 1},
                                    option_case{1, 1, kNoError, 0}}) {
        SCOPED_TRACE(testing::Message() << int{each.retry} << ' ' << int{each.wordsOnly});
        stream.next = 0;
        results.clear();
        EXPECT_EQ(recognizer.SetOutputOptions(each.retry, each.wordsOnly), each.wordsOnly ? 0 : 1);
        EXPECT_EQ(Align("a"), each.code);
        EXPECT_EQ(results.GetSize(), each.markers);
    }
}

TEST_F(Aligner, RetrySlidesPastAPronunciationThatWasNotSpoken) {
    // The window of 500 states ends within the first pronunciation of the second word; only one
    // that slides reaches the other while it still holds the end of the first word.
    std::string first;
    std::string other;
    for (int i = 0; i < 45; ++i) {
        first += "sAA";
    }
    for (int i = 0; i < 55; ++i) {
        other += "sAA";
    }
    transcriber.tokens.AddWord(0, 1, first);
    transcriber.tokens.Add(kWordToken, 2, 3, {{{other, "t"}}});
    const auto speak = [&](size_t phone, int observations) {
        for (size_t state = 0; state < 3; ++state) {
            stream.AddOnly(phone * 3 + state, 12, observations); // all else is impossible
        }
    };
    speak(0, 2);
    for (int i = 0; i < 45; ++i) {
        speak(2, 1);
        speak(1, 1);
    }
    speak(3, 2);
    speak(0, 2);
    recognizer.SetBeamWidth(500);
    for (const auto& [retry, code] : {std::pair{0, kRecognitionFailed}, {1, kNoError}}) {
        SCOPED_TRACE(retry);
        stream.next = 0;
        results.clear();
        recognizer.SetOutputOptions(static_cast<uint8_t>(retry), 0);
        EXPECT_EQ(Align("a b"), code);
        if (retry != 0) {
            ASSERT_GT(results.GetSize(), 0);
            EXPECT_STREQ(results[results.GetSize() - 2].label, "t");
        }
    }
}

TEST_F(Aligner, RefusesWhatItCannotUse) {
    CAccousticHMM* const hmm = model.get();
    EXPECT_EQ(recognizer.RecognizePhonemes(&stream, hmm, "a", &transcriber, nullptr, nullptr),
              kInvalidArgument);
    EXPECT_EQ(recognizer.RecognizePhonemes(&stream, hmm, "a", nullptr, nullptr, &results),
              kInvalidArgument);
    EXPECT_EQ(recognizer.RecognizePhonemes(nullptr, hmm, "a", &transcriber, nullptr, &results),
              kInvalidArgument);
    EXPECT_EQ(recognizer.RecognizePhonemes(&stream, nullptr, "a", &transcriber, nullptr, &results),
              kInvalidArgument);
    EXPECT_EQ(transcriber.transcribed, "");

    EXPECT_EQ(Align("a"), kNoError); // no tokens, no region
    transcriber.tokens.AddWord(0, 1, "s");
    Speak(2, 2);
    stream.sampleRate = 0.0f;
    EXPECT_EQ(Align("a"), kInvalidArgument);
    EXPECT_EQ(stream.next, 0u);

    const auto crowded = MakeLikelihoodModel(std::vector<std::string>(257, "s"), 0.5f, 1);
    EXPECT_EQ(
        recognizer.RecognizePhonemes(&stream, crowded.get(), "a", &transcriber, nullptr, &results),
        kOutOfRange);
}

TEST_F(Aligner, PassesOnAFailedRead) {
    transcriber.tokens.AddWord(0, 1, "s");
    Speak(2, 2);
    stream.failAt = 3;
    EXPECT_EQ(Align("a"), kFileNotFound);
    EXPECT_THAT(View(), IsEmpty());
}

TEST_F(Aligner, SurvivesCutsAtAnyTime) {
    for (const int32_t ms : {INT32_MIN, -1, 0, 1, 59, 60, 5000, INT32_MAX}) {
        SCOPED_TRACE(ms);
        transcriber.tokens = {};
        transcriber.tokens.AddWord(0, 1, "s");
        transcriber.tokens.AddCut(ms);
        transcriber.tokens.AddWord(2, 3, "t");
        stream = {};
        Speak(2, 2);
        Speak(3, 2);
        const error_code code = Align("a b");
        EXPECT_TRUE(code == kNoError || code == kRecognitionFailed) << code;
        EXPECT_EQ(stream.readsBehindEnd, 0);
    }
}

TEST(AlignerOptions, BeamWidthIsHeldToItsRange) {
    CTextbasedPhnRecognizer recognizer;
    EXPECT_EQ(recognizer.GetBeamWidth(), 2000);
    for (const auto& [width, stored] :
         {std::pair(100, 500), std::pair(9000, 8000), std::pair(-1, 500), std::pair(700, 700)}) {
        recognizer.SetBeamWidth(width);
        EXPECT_EQ(recognizer.GetBeamWidth(), stored);
    }
}

TEST(AlignerOptions, SearchOptionsAreTakenEachForItself) {
    struct option_case {
        uint16_t beam;
        uint16_t kept;
        double logBeam;
        error_code code;
        int32_t storedBeam;
        uint16_t storedKept;
        double storedLogBeam;
    };
    for (const option_case& each :
         {option_case{0, 0, 0.0, kInvalidArgument, 2000, 0, 0.0},
          option_case{1000, 250, -200.0, kNoError, 1000, 250, -200.0},
          option_case{1000, 1000, -300.0, kInvalidArgument, 1000, 1000, -300.0},
          option_case{600, 900, 0.0, kInvalidArgument, 600, 600, 0.0},
          option_case{0, 100, 0.0, kInvalidArgument, 2000, 0, 0.0}, // the argument is compared
          option_case{1000, 250, -100.0, kInvalidArgument, 1000, 250, 0.0},
          option_case{1000, 250, std::nan(""), kInvalidArgument, 1000, 250, 0.0}}) {
        SCOPED_TRACE(testing::Message() << each.beam << ' ' << each.kept << ' ' << each.logBeam);
        CTextbasedPhnRecognizer recognizer;
        EXPECT_EQ(recognizer.SetSearchOptions(each.beam, each.kept, 0, each.logBeam, nullptr),
                  each.code);
        EXPECT_EQ(recognizer.GetBeamWidth(), each.storedBeam);
        EXPECT_EQ(recognizer.GetKeptPerFrame(), each.storedKept);
        EXPECT_EQ(recognizer.GetLogBeam(), each.storedLogBeam);
    }
}

} // namespace
} // namespace tessarin::test
