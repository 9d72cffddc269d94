#include "recognition/markers/flush_markers.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fixtures.h"
#include "results/concrete_sync_marker_collection.h"

namespace tessarin::test {
namespace {

using testing::ElementsAre;

/// "label start end score" of each marker; segments have the label "-".
std::vector<std::string> Lines(const TArray<CSyncMarker>& markers) {
    std::vector<std::string> lines;
    for (const CSyncMarker& marker : markers) {
        lines.push_back((marker.type == kStateMarker ? "-" : std::string(marker.label)) + " " +
                        std::to_string(marker.start) + " " + std::to_string(marker.end) + " " +
                        std::to_string(static_cast<int>(marker.score)));
    }
    return lines;
}

std::vector<std::string> Flush(const std::vector<uint8_t>& path, const std::vector<float>& energies,
                               bool stateMarkers) {
    const auto model = MakeLikelihoodModel({"x", "AA", "s"});
    TArray<CSyncMarker> results;
    const amplitude_scale amplitudes(0.0f, 100.0f, energies);
    EXPECT_EQ(GenerateFlushMarkers(path, *model, amplitudes, 10.0, stateMarkers, results), 0);
    return Lines(results);
}

TEST(FlushMarkers, ArePhonemesWithWholePercents) {
    EXPECT_THAT(Flush({0, 1, 3, 4, 4, 5, 6}, {10, 11, 50, 50, 51, 50, 99.9f}, false),
                ElementsAre("x 5 25 10", "AA 25 65 50", "s 65 75 99"));
    EXPECT_THAT(Flush({4}, {250}, false), ElementsAre("AA 5 15 100"));
    EXPECT_THAT(Flush({}, {}, true), ElementsAre());
}

TEST(FlushMarkers, SegmentsLoseTheFirstAndThoseAsStrongAsTheOneBefore) {
    EXPECT_THAT(Flush({3, 4, 5, 5, 6, 7, 8, 3, 4}, {10, 20, 30, 30, 50, 50.5f, 60, 70, 80}, true),
                ElementsAre("AA 5 45 10",               // as strong as its first segment
                            "- 15 25 20", "- 25 45 30", // without that one
                            "s 45 75 50", "- 65 75 60", // the second is as strong as the first
                            "AA 75 95 80"));            // the last: of its last state, and alone
}

TEST(FlushOverlap, BeginsWithATailOfTheFlushBefore) {
    CConcreteSyncMarkerCollection results;
    flush_overlap overlap;
    const auto add = [&](int32_t start, int32_t end) {
        CSyncMarker marker{};
        marker.type = kPhonemeMarker;
        marker.start = start;
        marker.end = end;
        results.Add(marker);
    };
    add(5, 105);
    add(105, 205);
    ASSERT_EQ(overlap.Join(60, results), 0);
    EXPECT_THAT(Lines(results), ElementsAre(" 0 100 0", " 100 200 0"));
    results.clear();
    add(5, 55);
    ASSERT_EQ(overlap.Join(60, results), 0); // 30 ms of what went before
    EXPECT_THAT(Lines(results), ElementsAre(" 0 30 0", " 30 80 0"));
    results.clear();
    ASSERT_EQ(overlap.Join(60, results), 0); // nothing new: the tail alone
    EXPECT_THAT(Lines(results), ElementsAre(" 0 30 0"));
    // However long it goes on, times stay small.
    for (int i = 0; i < 3000; ++i) {
        results.clear();
        add(0, 2000000);
        ASSERT_EQ(overlap.Join(200, results), 0);
        ASSERT_EQ(results[results.GetSize() - 1].end - results[0].start,
                  2000000 + (i == 0 ? 30 : 100));
    }
}

} // namespace
} // namespace tessarin::test
