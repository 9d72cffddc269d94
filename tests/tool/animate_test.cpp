#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

json Timings(const std::string& text, const std::string& options = "") {
    const tool_run run = RunTool("animate - " + options, text);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    return json::parse(run.output);
}

std::string Labels(const json& result) {
    std::string labels;
    for (const json& phoneme : result["phonemes"]) {
        labels += (labels.empty() ? "" : " ") + phoneme["label"].get<std::string>();
    }
    return labels;
}

std::string WithoutDoubleSilence(std::string labels) {
    for (size_t at = labels.find("x x"); at != std::string::npos; at = labels.find("x x")) {
        labels.erase(at, 2);
    }
    return labels;
}

TEST(Animate, ReadsAgainWhatAlignWrites) {
    const ScratchFolder scratch;
    const std::string options = "align " + DemoRecording() + " --text-file " + DemoText();
    // Whether a word was said is not read back.
    const tool_run run = RunTool(options + " --match exact -o " + scratch.Path("a.json") + " -o " +
                                 scratch.Path("a.tsv") + " -o " + scratch.Path("a.TextGrid"));
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const json aligned = json::parse(ReadFile(scratch.Path("a.json")));
    for (const char* name : {"a.json", "a.tsv", "a.TextGrid"}) {
        SCOPED_TRACE(name);
        const tool_run animated = RunTool("animate " + scratch.Path(name));
        ASSERT_EQ(animated.exitCode, 0) << animated.errors;
        const json result = json::parse(animated.output);
        const bool isGrid = std::string(name) == "a.TextGrid"; // with no silences side by side
        EXPECT_EQ(Labels(result), isGrid ? WithoutDoubleSilence(Labels(aligned)) : Labels(aligned));
        EXPECT_EQ(result["words"].size(), aligned["words"].size());
        EXPECT_EQ(result["words"][7]["start_ms"], aligned["words"][7]["start_ms"]);
        EXPECT_EQ(result["phonemes"].back()["end_ms"], aligned["phonemes"].back()["end_ms"]);
        EXPECT_EQ(result["frames"].size(), aligned["frames"].size());
        if (std::string(name) == "a.json") {
            EXPECT_EQ(result["duration_ms"], aligned["duration_ms"]);
            EXPECT_EQ(result["words"], aligned["words"]);
            EXPECT_EQ(result["phonemes"], aligned["phonemes"]);
        }
    }
}

TEST(Animate, KnowsThePhonemesOfOthers) {
    EXPECT_EQ(Labels(Timings("SIL 50\nHH 60\nAH0 40\nL 70\nOW1 120\nsil 30\n")), "x h AH l OW x");
    EXPECT_EQ(Labels(Timings("pau 50\njh 60\nax 40\nd 70\njh 9\nsp 5\n")), "x j AH d j x");
    EXPECT_EQ(
        Labels(Timings("; voice\n_ 50 0 120 100 118\nj 60\nu: 40 50 99\n", "--alphabet sampa")),
        "x y UW");
    EXPECT_EQ(Labels(Timings("j 60\nAH 40\nCH 1.5\n")), "j AH CH");
    const json result = Timings("h 60.4\nAH 40.4\nl 0\nOW 100\n");
    EXPECT_EQ(Labels(result), "h AH OW") << "what lasts no time is not there";
    EXPECT_EQ(result["phonemes"][2]["start_ms"], 101) << "durations add up before they are rounded";
    EXPECT_EQ(result["duration_ms"], 201);
}

TEST(Animate, ReadsTheShortFormOfATextGridAndUtf16) {
    const std::string grid =
        "File type = \"ooTextFile\"\nObject class = \"TextGrid\"\n\n0\n0.5\n"
        "<exists>\n2\n\"TextTier\"\n\"marks\"\n0\n0.5\n1\n0.2\n\"click\"\n"
        "\"IntervalTier\"\n\"phones\"\n0\n0.5\n2\n0\n0.25\n\"AE1\"\n0.25\n0.5\n"
        "\"T\"\n";
    EXPECT_EQ(Labels(Timings(grid)), "AE t");
    std::string wide = "\xFE\xFF";
    for (const char c : grid) {
        wide += std::string(1, '\0') + c;
    }
    EXPECT_EQ(Labels(Timings(wide)), "AE t");
}

TEST(Animate, NamesTheLineThatItCannotRead) {
    const std::string gridHead = "File type = \"ooTextFile\"\nObject class = \"TextGrid\"\n0\n1\n"
                                 "<exists>\n";
    constexpr const char* kLoudness = "-: \"loudness\" is not {\"step_ms\": 10, \"db\": [a number";
    const struct {
        std::string text;
        const char* message;
    } cases[] = {
        {"", "there are no timings in it"},
        {"AH 100\nqq 50\n", "-: line 2: not a known phoneme: qq"},
        {"AH\n", "-: line 1: a phoneme and its duration in milliseconds are expected"},
        {"AH 1e300\n", "-: line 1: a time is negative or later than four days"},
        {"start_ms\tend_ms\ttype\ttext\n5\t3\tphoneme\tAH\n", "line 2: a phoneme ends before"},
        {"start_ms\tend_ms\ttype\ttext\nx\n", "line 2: start_ms, end_ms, type and text"},
        {"{\"phonemes\": [{\"label\": 5, \"start_ms\": 0, \"end_ms\": 9}]}", "type must be string"},
        {"{\"phonemes\": []}", "there are no phonemes in it"},
        {"{\"version\": 2}", "version 2 of the JSON is not known"},
        {"{", "parse error"},
        {R"({"phonemes": [], "loudness": 5})", kLoudness},
        {R"({"phonemes": [], "loudness": {"db": [-5]}})", kLoudness},
        {R"({"phonemes": [], "loudness": {"step_ms": 20, "db": [-5]}})", kLoudness},
        {R"({"phonemes": [], "loudness": {"step_ms": 10, "db": ["loud"]}})", kLoudness},
        {gridHead + "99999999\n", "a size in the TextGrid is larger than what follows"},
        {gridHead + "1\n\"IntervalTier\"\n\"phones\"\n0\n1\n1\n0\n1\n\"AH", "does not end"},
        {gridHead + "0\n", "it has no tier called phones"},
    };
    for (const auto& [text, message] : cases) {
        const tool_run run = RunTool("animate -", text);
        EXPECT_EQ(run.exitCode, 2) << text;
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, HasSubstr(message));
    }
}

} // namespace
