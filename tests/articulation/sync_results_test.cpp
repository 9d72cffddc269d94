#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "base/allocation.h"
#include "results/concrete_sync_marker_collection.h"
#include "results/sync_marker.h"
#include "sounds.h"

namespace tessarin::test {
namespace {

char* OwnedText(const char* text) {
    char* copy = static_cast<char*>(alloc(std::strlen(text) + 1, false));
    std::strcpy(copy, text);
    return copy;
}

CSyncMarker Word(int32_t start, const char* text) {
    CSyncMarker marker = Marker({"", start, start + 10, 0.0f, kWordMarker});
    marker.text = OwnedText(text);
    return marker;
}

/// The scores after one run that left these markers.
std::vector<float> Mapped(CConcreteSyncMarkerCollection& results) {
    results.set_flags(kPostProcessScores);
    results.PostProcessMarkers();
    std::vector<float> scores;
    for (const CSyncMarker* marker = results.begin(); marker != results.end(); ++marker) {
        scores.push_back(marker->score);
    }
    return scores;
}

std::vector<float> Mapped(const std::vector<sound>& list) {
    sounds results(list);
    return Mapped(results);
}

TEST(SyncMarker, CopyOwnsItsTextAndAPhonemeOwnsNone) {
    CSyncMarker word = Word(5, "hello");
    CSyncMarker copy;
    EXPECT_EQ(CopySyncMarker(copy, word), kNoError);
    EXPECT_STREQ(copy.text, "hello");
    EXPECT_NE(copy.text, word.text);
    DeleteSyncMarker(copy);
    EXPECT_EQ(copy.text, nullptr);

    char borrowed[] = "not mine";
    CSyncMarker phoneme = Marker({"b", 0, 10});
    phoneme.text = borrowed;
    EXPECT_EQ(CopySyncMarker(copy, phoneme), kNoError);
    EXPECT_EQ(copy.text, nullptr);
    DeleteSyncMarker(phoneme); // must not free what it does not own
    EXPECT_EQ(phoneme.text, nullptr);
    DeleteSyncMarker(word);
}

TEST(SyncResults, AnEmptyCollectionHasNoPlaces) {
    sounds results;
    EXPECT_EQ(results.begin(), nullptr);
    EXPECT_EQ(results.end(), nullptr);
    EXPECT_TRUE(Mapped(results).empty());
}

TEST(SyncResults, InsertsByStartBehindEqualOnes) {
    sounds results;
    for (const sound& s : {sound{"b", 10, 20}, {"d", 30, 40}, {"a", 5, 6}, {"c", 10, 20}}) {
        results.add_marker(Marker(s));
    }
    std::string order;
    for (const CSyncMarker* marker = results.begin(); marker != results.end(); ++marker) {
        order += marker->label;
    }
    EXPECT_EQ(order, "abcd");
}

TEST(SyncResults, InsertsBeforeTheFirstLaterMarkerOfAnyList) {
    // Searches append out of order, and hosts move what they were lent.
    std::mt19937 random(5);
    for (int round = 0; round < 200; ++round) {
        sounds results;
        std::vector<int32_t> expected;
        for (int step = 0; step < 40; ++step) {
            const auto start = static_cast<int32_t>(random() % 50) - 10 + step;
            const CSyncMarker marker = Marker({"a", start, start + 1});
            switch (random() % 12) {
            case 0:
                results.Add(marker);
                expected.push_back(start);
                break;
            case 1:
                if (!expected.empty()) {
                    results.begin()->start = expected[0] = start;
                }
                break;
            case 2:
                if (!expected.empty()) {
                    (results.end() - 1)->start = expected.back() = start;
                }
                break;
            case 3:
                if (random() % 4 == 0) {
                    results.clear();
                    expected.clear();
                }
                break;
            default:
                results.add_marker(marker);
                expected.insert(std::find_if(expected.begin(), expected.end(),
                                             [start](int32_t other) { return other > start; }),
                                start);
            }
        }
        std::vector<int32_t> starts;
        for (const CSyncMarker* marker = results.begin(); marker != results.end(); ++marker) {
            starts.push_back(marker->start);
        }
        ASSERT_EQ(starts, expected) << round;
    }
}

TEST(SyncResults, InsertsAmongAsManyMarkersAsARunReplaced) {
    sounds results;
    results.add_marker(Marker({"a", 1, 2}));
    results.add_marker(Marker({"b", 2, 3}));
    results.SetSize(0, 4);
    results.Add(Marker({"c", 50, 60}));
    results.Add(Marker({"d", 100, 110}));
    results.PostProcessMarkers();
    results.add_marker(Marker({"e", 70, 80}));
    EXPECT_STREQ(results.begin()[1].label, "e");
}

TEST(SyncResults, TakesACopyOfItsOwnMarker) {
    sounds results;
    results.add_marker(Marker({"a", 7, 9}));
    for (int32_t count = 0; count < 1000; ++count) {
        results.add_marker(*results.begin());
    }
    EXPECT_TRUE(std::all_of(results.begin(), results.end(), [](const CSyncMarker& marker) {
        return marker.start == 7 && marker.end == 9 && marker.label == std::string("a");
    }));
}

TEST(SyncResults, ClearReleasesTextsAndKeepsRoomAndCopiesAreDeep) {
    sounds results;
    results.add_marker(Word(0, "one"));
    results.add_marker(Word(10, "two"));
    results.set_flags(kWriteStateMarkers);
    CConcreteSyncMarkerCollection copy(results.begin(), results.end());
    results.clear(); // a leak or a double release is the sanitizer's to find
    EXPECT_EQ(results.size(), 0);
    EXPECT_EQ(results.GetCapacity(), CConcreteSyncMarkerCollection::kGrowthStep);
    ASSERT_EQ(copy.size(), 2);
    EXPECT_STREQ(copy.begin()[1].text, "two");
    EXPECT_EQ(copy.get_flags(), 0u);
}

TEST(PostProcessMarkers, IsOffUnlessAsked) {
    sounds results({{"AA", 0, 60}});
    results.PostProcessMarkers();
    EXPECT_EQ(results.begin()->score, 100.0f);
}

TEST(PostProcessMarkers, MapsLevelsAndLengthens) {
    EXPECT_THAT(Mapped({{"AA", 0, 60, 100.0f}}), testing::ElementsAre(66.0f));
    EXPECT_THAT(Mapped({{"s", 0, 60, 100.0f}}), testing::ElementsAre(100.0f));
    EXPECT_THAT(Mapped({{"s", 0, 60, 0.9f}}), testing::ElementsAre(0.0f));
    const float notLong = 0.75f * 50.0f * std::log10(5.9f) + 0.25f * 5.0f;
    EXPECT_THAT(Mapped({{"AA", 0, 600, 5.9f}}), testing::ElementsAre(testing::FloatEq(notLong)));
    EXPECT_THAT(Mapped({{"AA", 0, 10, 6.0f}}), testing::ElementsAre(65.0f));
}

TEST(PostProcessMarkers, StateSegmentsBearTheLabelBeforeThemAndSpansPass) {
    EXPECT_THAT(Mapped({{"", 0, 10, 100.0f, kStateMarker},
                        {"AA", 0, 60},
                        {"", 0, 60, 100.0f, kStateMarker},
                        {"", 0, 60, 7.0f, kWordMarker}}),
                testing::ElementsAre(100.0f, 66.0f, 66.0f, 7.0f));
}

TEST(PostProcessMarkers, OnlyTheFirstSoundOfARunProfitsFromWhatWasCarried) {
    sounds results({{"s", 0, 10}, {"AA", 10, 70}});
    Mapped(results);
    results.clear();
    results.Add(Marker({"AA", 70, 130}));
    results.Add(Marker({"AA", 130, 190}));
    EXPECT_THAT(Mapped(results), testing::ElementsAre(82.0f, 66.0f)); // 120 / 3.75 + 50
    results.clear();
    results.Add(Marker({"s", 190, 200}));
    results.Add(Marker({"AA", 200, 260}));
    EXPECT_THAT(Mapped(results), testing::ElementsAre(100.0f, 66.0f));
}

TEST(PostProcessMarkers, ACarriedLengthIsTheLastPhonemesAlone) {
    // The label that was carried is used up before the sum could be taken.
    sounds results({{"AA", 0, 60}});
    for (int run = 0; run < 2; ++run) {
        Mapped(results);
        results.begin()->score = 100.0f;
    }
    EXPECT_EQ(Mapped(results).front(), 82.0f);
}

TEST(PostProcessMarkers, SurvivesNumbersThatNoSearchWrites) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInf = std::numeric_limits<float>::infinity();
    constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
    constexpr int32_t kMax = std::numeric_limits<int32_t>::max();
    EXPECT_THAT(Mapped({{"AA", 0, 60, kNan}}), testing::ElementsAre(0.0f));
    Mapped({{"AA", kMax, kMin, kInf}, {"AA", kMin, kMax, -kInf}, {"AAAAAAAA", kMin, kMax, 1e38f}});
}

} // namespace
} // namespace tessarin::test
