#include "text/timed_markers.h"

#include "results/concrete_sync_marker_collection.h"
#include "text/spoken.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessarin {
namespace {

using testing::ElementsAre;

std::vector<std::string> Timeline(const char* text, std::string_view lexicon = "") {
    const auto transcriber = EnglishTranscriber(lexicon);
    transcriber->Transcribe(text);
    CConcreteSyncMarkerCollection results;
    transcriber->GenerateTimedMarkers(&results);
    std::vector<std::string> lines;
    for (const CSyncMarker& marker : static_cast<TArray<CSyncMarker>&>(results)) {
        lines.push_back(std::to_string(marker.start) + "-" + std::to_string(marker.end) + " " +
                        (marker.type == kWordMarker
                             ? "@" + std::to_string(marker.text_offset) + "+" +
                                   std::to_string(marker.text_length)
                             : marker.label + (" " + std::to_string(int(marker.score)))));
    }
    return lines;
}

TEST(TimedMarkers, AddUpDefaultDurations) {
    EXPECT_THAT(Timeline("a"), ElementsAre("0-125 @0+1", "0-125 EY 75"));
    EXPECT_THAT(
        Timeline("{x} a, <pause> bee", "BEE=bIY\nBEE=x"),
        ElementsAre("0-125 @4+1", "0-125 EY 75", "125-284 @15+3", "125-193 b 30", "193-284 IY 75"))
        << "only words take time, and of a choice the first";
    EXPECT_THAT(Timeline(""), ElementsAre());
}

TEST(TimedMarkers, EndAWordAtAnUnknownSymbol) {
    EXPECT_THAT(Timeline("bee b", "BEE=bQQIY\nB=b"),
                ElementsAre("0-68 @0+3", "0-68 b 30", "68-136 @4+1", "68-136 b 30"));
    EXPECT_THAT(Timeline("'"), ElementsAre("0-0 @0+1"));
}

TEST(TimedMarkers, NullIsIgnored) {
    const auto transcriber = EnglishTranscriber();
    transcriber->Transcribe("a");
    transcriber->GenerateTimedMarkers(nullptr);
}

} // namespace
} // namespace tessarin
