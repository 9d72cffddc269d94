#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "articulation/app_sync_results.h"
#include "sounds.h"

namespace tessarin::test {
namespace {

phn_marker_list Phonemes(const std::vector<sound>& list) {
    phn_marker_list phonemes;
    for (const sound& s : list) {
        phonemes.emplace_back(s.start, s.end, std::string(s.label), s.score);
    }
    return phonemes;
}

template <class List> std::string Shown(const List& list) {
    std::ostringstream text;
    for (const auto& marker : list) {
        text << marker.label << ' ' << marker.start << '-' << marker.end << ' ';
    }
    return text.str();
}

TEST(CutRange, ErasesSplitsAndTrims) {
    struct {
        int32_t from, to;
        const char* left;
    } const cases[] = {
        {10, 20, "a 0-10 c 20-40 "}, // the middle one lies inside
        {5, 30, "a 0-5 c 30-40 "},   // both neighbours reach out
        {22, 30, "a 0-10 b 10-20 c 20-22 c 30-40 "},
        {40, 50, "a 0-10 b 10-20 c 20-40 "}, // touching alone changes nothing
        {30, 5, "a 0-10 b 10-20 c 20-40 "},
        {0, 40, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.from);
        phn_marker_list list = Phonemes({{"a", 0, 10}, {"b", 10, 20}, {"c", 20, 40, 70.0f}});
        const uint32_t lastId = list.back().marker_id;
        list.cut_range(c.from, c.to);
        EXPECT_EQ(Shown(list), c.left);
        for (const phn_marker& marker : list) {
            EXPECT_FALSE(marker.changed);
            EXPECT_EQ(marker.score, marker.label == "c" ? 70.0f : 100.0f);
        }
        if (c.from == 22) {
            EXPECT_EQ(list[2].marker_id, lastId);
            EXPECT_GT(list[3].marker_id, lastId);
        }
    }
}

TEST(RemoveRange, ErasesWhateverTouches) {
    articulation_list frames;
    for (int32_t start : {0, 10, 20}) {
        frames.emplace_back(start, start + 10, "f");
    }
    articulation_list list = frames;
    list.remove_range(30, 35);
    EXPECT_EQ(Shown(list), "f 0-10 f 10-20 ");
    list.remove_range(3, 4);
    EXPECT_EQ(Shown(list), "f 10-20 ");
    list.remove_range(20, 10);
    EXPECT_EQ(list.size(), 1u);
    list.remove_range(-1, -1);
    EXPECT_TRUE(list.empty());

    gesture_marker_list gestures;
    gestures.emplace_back(50, 60, "late");
    gestures.emplace_back(0, 10, "early");
    gestures.remove_range(0, 20); // the walk ends at the one that is out of order
    EXPECT_EQ(gestures.size(), 2u);
    gestures.remove_range(0, 50);
    EXPECT_TRUE(gestures.empty());
}

TEST(MergeIn, PutsEqualStartsBehind) {
    phn_marker_list list = Phonemes({{"a", 0, 10}, {"b", 10, 20}});
    list.merge_in(Phonemes({{"x", 0, 5}, {"y", 30, 40}, {"z", 5, 6}}));
    EXPECT_EQ(Shown(list), "a 0-10 x 0-5 z 5-6 b 10-20 y 30-40 ");
}

TEST(ReplaceRange, LeavesNoSlivers) {
    struct {
        const char* name;
        std::vector<sound> list, other;
        const char* result;
    } const cases[] = {
        {"a silence before a vowel", {{"AA", 0, 200}}, {{"x", 0, 83}}, "x 0-83 AA 83-200 "},
        {"a short rest goes", {{"AA", 0, 100}}, {{"x", 0, 80}}, "x 0-100 "},
        {"an equal label joins", {{"x", 0, 100}}, {{"x", 0, 50}}, "x 0-100 "},
        {"the sliver before the seam's neighbour goes",
         {{"a", 0, 10}, {"b", 10, 100}, {"c", 100, 200}},
         {{"x", 100, 150}},
         "b 0-100 x 100-150 c 150-200 "},
        {"a long neighbour stays",
         {{"a", 0, 50}, {"b", 50, 60}, {"c", 60, 200}},
         {{"x", 60, 90}},
         "a 0-50 b 50-60 x 60-90 c 90-200 "},
        {"nothing replaces nothing", {{"a", 0, 50}}, {}, "a 0-50 "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        phn_marker_list list = Phonemes(c.list);
        list.replace_range(Phonemes(c.other));
        EXPECT_EQ(Shown(list), c.result);
    }
}

TEST(PhnMarker, ChildrenKeepTheirSharesOfAStretchedLength) {
    phn_marker marker(0, 100, "AA", 100.0f);
    marker.children = {{0, 50, "1"}, {50, 51, "2"}, {51, 100, "3"}};
    marker.set_end(50);
    EXPECT_EQ(Shown(marker.children), "1 0-25 3 25-50 ");
    marker.set_start(50);
    EXPECT_TRUE(marker.children.empty());
    EXPECT_TRUE(marker.changed);

    marker.children = {{0, 7, "1"}};
    marker.set_end(90); // it had no length that could be scaled
    EXPECT_EQ(Shown(marker.children), "1 0-7 ");
}

TEST(ReadSyncResults, StateSegmentsReplaceTheirPhoneme) {
    sounds results({{"", 0, 5, 1.0f, kStateMarker},
                    {"AA", 5, 35},
                    {"", 5, 15, 2.0f, kStateMarker},
                    {"", 15, 35, 3.0f, kStateMarker},
                    {"s", 35, 45},
                    {"q", 0, 9, 0.0f, 6}});
    app_sync_results sorted;
    ReadSyncResults(results, {}, false, sorted);
    EXPECT_EQ(Shown(sorted.phonemes), " 0-5 AA 5-15 AA 15-35 s 35-45 ");
}

TEST(ReadSyncResults, SpansOutsideTheTextKeepTheTextBefore) {
    sounds results;
    const int32_t places[][3] = {{kWordMarker, 0, 5},  {kPunctuationMarker, 5, 1},
                                 {kTagMarker, 6, 1},   {kWordMarker, -1, 2},
                                 {kWordMarker, 0, -1}, {kWordMarker, 4, INT32_MAX}};
    for (const auto& [type, offset, length] : places) {
        CSyncMarker marker = Marker({"", 0, 1, 9.0f, static_cast<uint32_t>(type)});
        marker.text_offset = offset;
        marker.text_length = length;
        results.Add(marker);
    }
    app_sync_results sorted;
    ReadSyncResults(results, "hello,", true, sorted);
    EXPECT_EQ(Shown(sorted.words), "hello 0-1 , 0-1 , 0-1 , 0-1 ");
    EXPECT_EQ(Shown(sorted.first_events), ", 0-1 ");
    EXPECT_EQ(Shown(sorted.second_events), ", 0-1 ");
    EXPECT_EQ(sorted.words.front().score, 0.0f);
}

} // namespace
} // namespace tessarin::test
