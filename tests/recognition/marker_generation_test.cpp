#include "recognition/markers/marker_generation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "features/analysed_speech.h"
#include "features/scripted_pcm_stream.h"
#include "fixtures.h"
#include "recognition/acc_phn_viterbi.h"

namespace tessarin::test {
namespace {

using testing::ElementsAre;
using testing::FieldsAre;

struct marker_view {
    uint32_t type;
    std::string label;
    int32_t start;
    int32_t end;
    int32_t position;
    float score;

    bool operator==(const marker_view&) const = default;
};

std::vector<marker_view> View(const TArray<CSyncMarker>& markers) {
    std::vector<marker_view> views;
    for (const CSyncMarker& marker : markers) {
        views.push_back({marker.type, marker.label, marker.start, marker.end, marker.text_offset,
                         marker.score});
    }
    return views;
}

class GeneratedMarkers : public testing::Test {
protected:
    GeneratedMarkers() { graph.AddChain({1, 2, 1}); }

    void Generate(const std::vector<uint32_t>& states, const std::vector<float>& energy,
                  bool stateMarkers, bool withGraph = true, bool amplitudes = true) {
        TArray<uint32_t> path;
        for (const uint32_t state : states) {
            path.Add(state);
        }
        TArray<float> energies;
        for (const float value : energy) {
            energies.Add(value);
        }
        ASSERT_EQ(GenerateMarkers(path, *model, stream, withGraph ? graph.Get() : nullptr, energies,
                                  stateMarkers, amplitudes, results),
                  kNoError);
    }

    std::unique_ptr<CAccousticHMM> model = MakeLikelihoodModel({"x", "AA", "s"});
    hand_graph graph; // AA s AA
    list_stream stream;
    TArray<CSyncMarker> results;
};

TEST_F(GeneratedMarkers, CoverEachPhoneFromMiddleToMiddle) {
    Generate({0, 0, 1, 2, 3, 4, 5, 6, 7, 8}, std::vector<float>(10, 20.0f), false);
    EXPECT_THAT(View(results), ElementsAre(FieldsAre(1u, "AA", 5, 45, 0, 20.0f),
                                           FieldsAre(1u, "s", 45, 75, 1, 20.0f),
                                           FieldsAre(1u, "AA", 75, 105, 2, 20.0f)));
    Generate({0, 0, 1, 2, 3, 4, 5, 6, 7, 8}, {}, false, false, false);
    EXPECT_THAT(View(results), ElementsAre(FieldsAre(1u, "x", 5, 45, 0, 0.0f),
                                           FieldsAre(1u, "AA", 45, 75, 1, 0.0f),
                                           FieldsAre(1u, "s", 75, 105, 2, 0.0f)));
}

TEST_F(GeneratedMarkers, MeasureAmplitudesInTheStreamsEnergyRange) {
    struct scale_case {
        float low;
        float high;
        std::vector<float> energies;
        float expected;
    };
    for (const scale_case& each : std::vector<scale_case>{
             {0, 100, {30, 40}, std::sqrt(1250.0f)}, // root of the mean of the squares
             {10, 60, {20, 20}, 20},
             {10, 60, {5, 5}, 0},
             {10, 60, {90, 90}, 100},
             {50, 50, {4000, 4000}, 50}, // no range: 0 to 8000
             {1e33f, 0, {80, 80}, 1},
             {0, 100, {}, 0},
             {0, 100, {NAN, NAN}, 0}}) {
        SCOPED_TRACE(each.expected);
        stream.minEnergy = each.low;
        stream.maxEnergy = each.high;
        Generate({0, 0, 3}, each.energies, false);
        ASSERT_EQ(results.GetSize(), 2);
        EXPECT_FLOAT_EQ(results[0].score, each.expected);
    }
}

TEST_F(GeneratedMarkers, PutTheSegmentsOfAPhoneBehindIt) {
    Generate({0, 0, 1, 2, 3, 4, 5}, {10, 10, 20, 30, 40, 50, 60}, true);
    EXPECT_THAT(View(results),
                ElementsAre(FieldsAre(1u, "AA", 5, 45, 0, std::sqrt(1500.0f / 4)),
                            FieldsAre(5u, "", 5, 25, 0, 10.0f), FieldsAre(5u, "", 25, 35, 0, 20.0f),
                            FieldsAre(5u, "", 35, 45, 0, 30.0f),
                            // as loud as its last segment, and without segments
                            FieldsAre(1u, "s", 45, 75, 1, 60.0f)));
}

TEST_F(GeneratedMarkers, ReplaceWhatWasThere) {
    CSyncMarker word{};
    word.type = kWordMarker;
    word.text = static_cast<char*>(std::malloc(4)); // a leak would show in the sanitizer run
    results.Add(word);
    Generate({}, {}, true);
    EXPECT_EQ(results.GetSize(), 0);
}

TEST_F(GeneratedMarkers, HaveNoLabelForAPhoneThatTheModelLacks) {
    Generate({0, 30}, {1, 1}, false, false);
    EXPECT_STREQ(results[1].label, "");
    model->labels[0] = "longer than a field";
    Generate({0, 3}, {1, 1}, false, false);
    EXPECT_STREQ(results[0].label, "longer ");
}

TEST_F(GeneratedMarkers, NeedARate) {
    stream.sampleRate = 0.0f;
    Generate({0, 3}, {1, 1}, false);
    EXPECT_EQ(results[1].end, 0);
}

class scripted_search : public CAccPhnViterbi {
public:
    error_code Viterbi(const CAccousticHMM&, IObservationStream&, ProgressSink*,
                       TArray<uint32_t>& path, TArray<float>& energies) override {
        searched = energies.GetSize();
        path.Add(0);
        path.Add(3);
        return code;
    }

    error_code code = kNoError;
    int32_t searched = -1;
};

TEST_F(GeneratedMarkers, ComeFromWhicheverSearchTheRecognizerHas) {
    TArray<float> energies;
    energies.Add(7.0f);
    scripted_search search;
    const auto align = [&](CAccPhnViterbi& recognizer, uint32_t positions) {
        return recognizer.GenerateAlignment(*model, stream, graph.Get(), positions, {0}, {},
                                            nullptr, false, results, energies);
    };
    EXPECT_EQ(align(search, 0), kNoError); // an empty stream
    EXPECT_EQ(search.searched, -1);
    EXPECT_EQ(energies.GetSize(), 1);

    stream.AddOnly(0, 9, 2);
    CAccPhnViterbi none;
    EXPECT_EQ(align(none, 0), kNotAvailable);
    EXPECT_EQ(align(none, 3), kNotAvailable);
    EXPECT_EQ(align(search, 3), kNotAvailable);
    EXPECT_EQ(align(search, 0), kNoError);
    EXPECT_EQ(search.searched, 2);
    EXPECT_EQ(results.GetSize(), 2);

    results.SetSize(0, 4);
    search.code = kUserCancelled;
    EXPECT_EQ(align(search, 0), kUserCancelled);
    EXPECT_EQ(results.GetSize(), 0);
    search.code = kRecognitionFailed;
    EXPECT_EQ(align(search, 0), kRecognitionFailed);
    EXPECT_EQ(results.GetSize(), 2);
}

TEST_F(GeneratedMarkers, LeaveTheSinkOnTheStreamAfterOtherCodesThanZeroAndEight) {
    ScriptedPcmStream pcm(Speechlike(8000));
    analysis mean;
    mean.descriptor.flags |= kCalcSpectralMean;
    for (const error_code code :
         {kNoError, kRecognitionFailed, kUserCancelled, kFileNotFound, kNotAvailable}) {
        SCOPED_TRACE(code);
        CSpectralStream spectral;
        ASSERT_EQ(spectral.Init2(&pcm, 1, &mean.descriptor), kNoError);
        recording_sink sink;
        scripted_search search;
        search.code = code;
        TArray<float> energies;
        EXPECT_EQ(search.GenerateAlignment(*model, spectral, nullptr, 0, {0}, {}, &sink, false,
                                           results, energies),
                  code);
        EXPECT_TRUE(sink.phases.empty()); // the search has read nothing
        std::vector<float> features(kObservationScratch);
        float energy = 0.0f;
        EXPECT_EQ(spectral.GetObservation(features.data(), &energy), kNoError);
        EXPECT_EQ(sink.phases.size(), code == kNoError || code == kRecognitionFailed ? 0u : 2u);
        spectral.SetSource(nullptr);
    }
}

} // namespace
} // namespace tessarin::test
