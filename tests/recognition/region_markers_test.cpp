#include "recognition/aligner/region_markers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "fixtures.h"
#include "results/concrete_sync_marker_collection.h"

namespace tessarin::test {
namespace {

using testing::ElementsAre;
using testing::FieldsAre;

struct marker_view {
    uint32_t type;
    std::string text; // of a span; the label of a phone
    int32_t start;
    int32_t end;
    int32_t offset;
};

class RegionMarkers : public testing::Test {
protected:
    /// A phone of 100 ms at `position`.
    void AddPhone(const char* label, int32_t position, uint32_t type = kPhonemeMarker) {
        CSyncMarker phone{};
        phone.type = type;
        std::strcpy(phone.label, label);
        phone.start = phones.GetSize() * 100;
        phone.end = phone.start + 100;
        phone.score = static_cast<float>(position);
        phone.text_offset = position;
        phones.Add(phone);
    }
    void AddToken(tx_marker_kind kind, uint32_t start, uint32_t end, uint32_t first,
                  uint32_t last) {
        CTxMarker& token = tokens.Add(kind, start, end, {});
        token.first_state = first;
        token.last_state = last;
    }
    void Emit(const char* text, bool keepPhonemes = true, int32_t offsetMs = 0) {
        const auto length = static_cast<int64_t>(text != nullptr ? std::strlen(text) : 0);
        ASSERT_EQ(EmitRegionMarkers(results, phones, offsetMs, tokens.markers, text, length,
                                    keepPhonemes),
                  kNoError);
    }
    std::vector<marker_view> View() {
        std::vector<marker_view> views;
        for (const CSyncMarker& marker : static_cast<TArray<CSyncMarker>&>(results)) {
            const bool isPhone = marker.type == kPhonemeMarker || marker.type == kStateMarker;
            const char* text = isPhone ? marker.label : marker.text ? marker.text : "(null)";
            views.push_back({marker.type, text, marker.start, marker.end, marker.text_offset});
        }
        return views;
    }

    CConcreteSyncMarkerCollection results;
    TArray<CSyncMarker> phones;
    token_list tokens;
};

TEST_F(RegionMarkers, OpenEachSpanBeforeItsFirstPhone) {
    AddPhone("x", 0);
    AddPhone("h", 1);
    AddPhone("IY", 2);
    AddPhone("s", 4); // the silence at 3 was skipped
    AddPhone("x", 5);
    AddToken(kCutToken, 0, 0, 1, 1);
    AddToken(kWordToken, 0, 2, 1, 3);
    AddToken(kWordToken, 3, 4, 4, 5);
    AddToken(kPunctuationToken, 4, 5, 5, 6);
    Emit("He s.", true, 1000);
    EXPECT_THAT(View(),
                ElementsAre(FieldsAre(1u, "x", 1000, 1100, 0), FieldsAre(2u, "He", 1100, 1300, 0),
                            FieldsAre(1u, "h", 1100, 1200, 0), FieldsAre(1u, "IY", 1200, 1300, 0),
                            FieldsAre(2u, "s", 1300, 1400, 3),
                            FieldsAre(1u, "s", 1300, 1400, 0), // of the span before
                            FieldsAre(3u, ".", 1400, 1500, 4), FieldsAre(1u, "x", 1400, 1500, 3)));
    EXPECT_EQ(results[1].score, 1.0f); // left over from the phone
    EXPECT_STREQ(results[1].label, "h");
    EXPECT_EQ(results[1].text_length, 2);
}

TEST_F(RegionMarkers, PinTheRestOfTheTextToTheLastPhone) {
    AddPhone("x", 0);
    AddPhone("h", 1);
    AddToken(kWordToken, 0, 1, 1, 2);
    AddToken(kTagToken, 1, 2, 3, 3);
    AddToken(kWordToken, 2, 3, 4, 6);
    Emit("abc");
    EXPECT_THAT(View(),
                ElementsAre(FieldsAre(1u, "x", 0, 100, 0), FieldsAre(2u, "a", 100, 200, 0),
                            FieldsAre(4u, "b", 100, 200, 1), FieldsAre(2u, "c", 100, 200, 2),
                            FieldsAre(1u, "h", 100, 200, 0)));
}

TEST_F(RegionMarkers, GiveASilentTokenNoTimeOfItsOwn) {
    AddPhone("h", 1);
    AddPhone("s", 2);
    AddToken(kTagToken, 0, 1, 1, 1);
    AddToken(kWordToken, 1, 2, 1, 3);
    Emit("ab");
    EXPECT_THAT(View(),
                ElementsAre(FieldsAre(4u, "a", 0, 0, 0), FieldsAre(2u, "b", 0, 200, 1),
                            FieldsAre(1u, "h", 0, 100, 0), FieldsAre(1u, "s", 100, 200, 1)));
}

TEST_F(RegionMarkers, CanLeaveOutPhonemesButNotTheirSegments) {
    AddPhone("h", 1);
    AddPhone("", 1, kStateMarker);
    AddPhone("s", 2);
    AddToken(kWordToken, 0, 1, 1, 3);
    Emit("a", false);
    EXPECT_THAT(View(), ElementsAre(FieldsAre(2u, "a", 0, 300, 0), FieldsAre(5u, "", 100, 200, 0)));
}

TEST_F(RegionMarkers, NeverReadPastTheText) {
    struct text_case {
        uint32_t start;
        uint32_t end;
        const char* text;
        const char* expected;
        int32_t length;
    };
    for (const text_case& each : std::vector<text_case>{
             {1, 3, "abc", "bc", 2},
             {1, 4, "abc", "bc", 2}, // an unterminated bracket ends after the text
             {3, 4, "abc", "", 0},
             {4, 5, "abc", "(null)", -1},
             {2, 1, "abc", "(null)", -1},
             {0xFFFFFFFF, 2, "abc", "(null)", INT32_MIN},
             {0, 0xFFFFFFFF, "abc", "abc", 3},
             {1, 3, nullptr, "(null)", 2}}) {
        SCOPED_TRACE(each.start);
        tokens = {};
        phones.RemoveAll();
        results.clear();
        AddPhone("h", 1);
        AddToken(kWordToken, each.start, each.end, 1, 2);
        Emit(each.text);
        ASSERT_EQ(results.GetSize(), 2);
        EXPECT_EQ(View()[0].text, each.expected);
        EXPECT_EQ(results[0].text_length, each.length);
    }
}

TEST_F(RegionMarkers, KeepTheirOrderOfProduction) {
    AddPhone("h", 1);
    AddPhone("s", 2);
    phones[1].start = -50; // an earlier start does not move it
    AddToken(kWordToken, 0, 1, 2, 3);
    Emit("a", true, INT32_MAX);
    EXPECT_THAT(View(), ElementsAre(FieldsAre(1u, "h", INT32_MAX, INT32_MAX, 0),
                                    FieldsAre(2u, "a", INT32_MAX - 50, INT32_MAX, 0),
                                    FieldsAre(1u, "s", INT32_MAX - 50, INT32_MAX, 0)));
}

} // namespace
} // namespace tessarin::test
