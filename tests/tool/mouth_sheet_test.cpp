#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/picture.h"
#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

// The places of a sheet.
constexpr int kMargin = 10;
constexpr int kCellWidth = 140;
constexpr int kCellHeight = 202;
constexpr int kMouthWidth = 136;
constexpr int kMouthHeight = 150;

struct sheet : picture {
    /// The pixels in the mouth of a cell of the first row that are this dark.
    int CountDark(int cell) const {
        int count = 0;
        for (int y = kMargin + 40; y < kMargin + kMouthHeight; ++y) {
            for (int x = 30; x < kMouthWidth - 30; ++x) {
                count += Brightness(kMargin + cell * kCellWidth + x, y) < 200 ? 1 : 0;
            }
        }
        return count;
    }
    /// The pixels of a cell's caption that are ink.
    int CountInk(int cell) const {
        int count = 0;
        for (int y = kMargin + kMouthHeight; y < kMargin + kMouthHeight + 42; ++y) {
            for (int x = 0; x < kMouthWidth; ++x) {
                count += Brightness(kMargin + cell * kCellWidth + x, y) < 150 ? 1 : 0;
            }
        }
        return count;
    }
};

sheet ReadSheet(const std::string& path) {
    return {ReadPng(ReadFile(path))};
}

/// A result whose phonemes last 100 ms, three frames, and are alone in these.
json ResultOf(const std::vector<std::string>& phonemes) {
    json result = {{"version", 1},
                   {"code", 0},
                   {"message", ""},
                   {"phonemes", json::array()},
                   {"words", json::array()},
                   {"events", json::array()},
                   {"frames", json::array()},
                   {"curves", json::array()}};
    for (size_t i = 0; i < phonemes.size(); ++i) {
        const size_t ms = 100 * i;
        result["phonemes"].push_back(
            {{"label", phonemes[i]}, {"start_ms", ms}, {"end_ms", ms + 100}, {"score", 50}});
        for (const size_t start : {ms, ms + 33, ms + 66}) {
            result["frames"].push_back(
                {{"start_ms", start}, {"end_ms", start + 33}, {"weights", {{phonemes[i], 1}}}});
        }
    }
    return result;
}

class MouthSheet : public testing::Test {
protected:
    tool_run Draw(const json& result, const std::string& options = "") {
        WriteFile(timings, result.dump());
        return RunTool("view " + DemoRecording() + " --timings " + timings + " --sheet " + path +
                       options);
    }

    ScratchFolder scratch;
    std::string timings = scratch.Path("timings.json");
    std::string path = scratch.Path("sheet.png");
};

TEST_F(MouthSheet, ShowsWhatTheLipsDo) {
    json result = ResultOf({"x", "p", "b", "m", "AA", "AH", "UW"});
    result["words"].push_back({{"text", "palm"},
                               {"start_ms", 100},
                               {"end_ms", 700},
                               {"text_offset", 0},
                               {"text_length", 4}});
    const tool_run run = Draw(result);
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.output, "") << "no page, since none was asked for";
    const sheet drawn = ReadSheet(path);
    EXPECT_EQ(drawn.width, 2 * kMargin + 7 * kCellWidth - 4);
    EXPECT_EQ(drawn.height, 2 * kMargin + kCellHeight - 4);
    for (const int closed : {1, 2, 3}) {
        EXPECT_LT(drawn.CountDark(closed), 120) << closed;
    }
    EXPECT_GT(drawn.CountDark(4), 800) << "AA";
    EXPECT_GT(drawn.CountDark(4), 2 * drawn.CountDark(6)) << "AA opens farther than UW";
    EXPECT_GT(drawn.CountInk(4), 100) << "phoneme and word";
    EXPECT_EQ(drawn.CountInk(0), 0) << "a pause has neither";
}

TEST_F(MouthSheet, TakesEveryThirdFrameOfARecording) {
    const tool_run run = RunTool("view " + DemoRecording() + " --to 3000 -q --sheet " + path +
                                 " -o " + scratch.Path("page.html"));
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(ReadFile(scratch.Path("page.html")), HasSubstr("id=\"mouth\""));
    const sheet drawn = ReadSheet(path);
    EXPECT_EQ(drawn.width, 2 * kMargin + 12 * kCellWidth - 4);
    EXPECT_EQ(drawn.height, 2 * kMargin + 3 * kCellHeight - 4) << "90 frames, 30 mouths";
}

TEST_F(MouthSheet, DrawsWeightsThatNoMouthHas) {
    json result = ResultOf({"AA", "AA"});
    for (size_t i = 0; i < 6; ++i) {
        result["frames"][i]["weights"] =
            i < 3 ? json::object({{"AA", 1e300}, {"unknown", 1}, {"x", -1e300}})
                  : json::object({{"AA", 1}});
    }
    ASSERT_EQ(Draw(result).exitCode, 0);
    const sheet drawn = ReadSheet(path);
    EXPECT_EQ(drawn.CountDark(0), drawn.CountDark(1)) << "more than all of a shape is all of it";
}

TEST_F(MouthSheet, TellsWhatCannotBeDrawn) {
    const auto errorsOf = [this](const json& result) {
        const tool_run run = Draw(result);
        EXPECT_EQ(run.exitCode, 2);
        return run.errors;
    };
    json result = ResultOf({"AA"});
    result["frames"] = json::array();
    EXPECT_THAT(errorsOf(result), HasSubstr("no frames"));

    result = ResultOf({"AA"});
    for (const double time : {-1.0, 1e300}) {
        result["frames"][0]["start_ms"] = time;
        EXPECT_THAT(errorsOf(result), HasSubstr("a frame at"));
    }

    result = ResultOf({"AA"});
    const json frame = result["frames"][0];
    result["frames"] = std::vector<json>(7201, frame);
    EXPECT_THAT(errorsOf(result), HasSubstr("7201 frames are too many"));

    path = scratch.Path("none/sheet.png");
    EXPECT_THAT(errorsOf(ResultOf({"AA"})), HasSubstr("none/sheet.png"));
}

} // namespace
