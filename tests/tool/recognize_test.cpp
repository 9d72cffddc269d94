#include <algorithm>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

bool IsVowel(const std::string& label) {
    return std::string("AEIOU").find(label.front()) != std::string::npos;
}

int LongestVowelMs(const tool_run& run) {
    int longest = 0;
    const json result = json::parse(run.output);
    for (const json& phoneme : result["phonemes"]) {
        if (IsVowel(phoneme["label"])) {
            longest =
                std::max(longest, phoneme["end_ms"].get<int>() - phoneme["start_ms"].get<int>());
        }
    }
    return longest;
}

TEST(Recognize, HearsPhonemesAndMakesTheMouthTrack) {
    const std::string statistics = TESSARIN_SOURCE_DIR "/data/en-us.trigrams";
    const tool_run run = RunTool("recognize " + DemoRecording());
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const json result = json::parse(run.output);
    EXPECT_GT(result["phonemes"].size(), 5u);
    EXPECT_TRUE(result["words"].empty());
    int end = result["phonemes"][0]["start_ms"];
    for (const json& phoneme : result["phonemes"]) {
        EXPECT_EQ(phoneme["start_ms"], end);
        end = phoneme["end_ms"];
    }
    EXPECT_NEAR(end, result["duration_ms"].get<int>(), 30);
    EXPECT_GT(result["frames"].size(), 10u);

    EXPECT_EQ(RunTool("recognize " + DemoRecording() + " --counts --trigrams " + statistics).output,
              run.output)
        << "the project's own statistics are used by default";
    EXPECT_NE(RunTool("recognize " + DemoRecording() + " --no-trigrams").output, run.output);
}

TEST(Recognize, WritesProgressAsLinesForPrograms) {
    const tool_run run = RunTool("recognize --progress-lines " + DemoRecording());
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    std::istringstream lines(run.errors);
    std::string word;
    int percent = 0, last = -1, count = 0;
    while (lines >> word >> percent) {
        EXPECT_EQ(word, "progress");
        EXPECT_NE(percent, last);
        EXPECT_LE(percent, 100);
        last = percent;
        ++count;
    }
    EXPECT_TRUE(lines.eof());
    EXPECT_GT(count, 5);
    EXPECT_EQ(RunTool("recognize " + DemoRecording()).errors, "");
}

TEST(Recognize, LimitsEndALongVowel) {
    const ScratchFolder scratch;
    WriteFile(scratch.Path("limits"), "AAAEAHAOAWAYEHEREYIHIYOWOYUHUW 90\n");
    const std::string arguments = "recognize " + DemoRecording();
    EXPECT_GT(LongestVowelMs(RunTool(arguments)), 150);
    const tool_run limited = RunTool(arguments + " --limits " + scratch.Path("limits"));
    ASSERT_EQ(limited.exitCode, 0) << limited.errors;
    EXPECT_LE(LongestVowelMs(limited), 120);
    EXPECT_EQ(RunTool(arguments + " --no-trigrams --limits " + scratch.Path("limits")).exitCode, 1)
        << "only the search with statistics knows limits";
}

TEST(Recognize, BadStatisticsAndLimitsNameTheFileAndExitWithTwo) {
    const ScratchFolder scratch;
    const std::string missing = scratch.Path("missing");
    const std::string unknown = scratch.Path("unknown");
    WriteFile(unknown, "AA 300 unknown 200");
    const std::string noNumber = scratch.Path("number");
    WriteFile(noNumber, "AA long EH 300");
    const std::string folder = scratch.Path("");
    for (const std::string& option :
         {"--trigrams " + missing, "--trigrams " + folder, "--limits " + missing,
          "--limits " + folder, "--limits " + unknown, "--limits " + DemoRecording()}) {
        SCOPED_TRACE(option);
        const tool_run run = RunTool("recognize " + DemoRecording() + " " + option);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, HasSubstr(option.substr(option.find(' ') + 1)));
    }
}

TEST(Recognize, HostileStatisticsStillEnd) {
    const ScratchFolder scratch;
    const std::string file = scratch.Path("statistics");
    const std::string arguments = "recognize " + DemoRecording() + " --trigrams " + file;
    const std::string bytes = ReadFile(DemoRecording());
    for (const std::string& content :
         {std::string(), bytes, std::string("version"), std::string(1 << 20, 'A'),
          std::string("version 1\nAA nan AAEH inf AAEHs -inf"),
          std::string("version 1\nAA 1e38 EH 1e38 s 1e38 AAEH 1e-38 AAEHs 1e38"),
          std::string("AA -1 AAEH -1 AAEHs -1")}) {
        SCOPED_TRACE(content.substr(0, 40));
        WriteFile(file, content);
        for (const char* counts : {"", " --counts"}) {
            const tool_run run = RunTool(arguments + counts);
            // What lets no phoneme follow another loses the recording, and that is reported.
            EXPECT_TRUE(run.exitCode == 0 || run.exitCode == 2) << run.exitCode << run.errors;
            EXPECT_TRUE(json::accept(run.output)) << run.output.substr(0, 200);
        }
    }
}

} // namespace
