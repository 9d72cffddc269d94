#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

const std::string kDemo = TESSARIN_SOURCE_DIR "/data/demo/echo-test";

tool_run Cues(const std::string& options) {
    return RunTool("cues " + options);
}

std::vector<json> JsonLines(const std::string& text) {
    std::vector<json> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(json::parse(line)); // every line
    }
    return lines;
}

TEST(Cues, HaveTheFieldsThatPipelinesRead) {
    const std::string dialog = kDemo + ".wav -q -d " + kDemo + ".txt ";
    const json cues = json::parse(Cues(dialog + "-f json").output);
    EXPECT_EQ(cues["metadata"]["soundFile"], kDemo + ".wav");
    ASSERT_GT(cues["mouthCues"].size(), 20u);
    double reached = 0;
    for (const json& cue : cues["mouthCues"]) {
        EXPECT_EQ(cue["start"], reached);
        EXPECT_GT(cue["end"], reached);
        EXPECT_THAT(cue["value"].get<std::string>(), MatchesRegex("[A-HX]"));
        reached = cue["end"];
    }
    EXPECT_EQ(cues["metadata"]["duration"], reached);

    const std::string table = Cues(dialog).output;
    EXPECT_THAT(table, testing::StartsWith("0.00\tX\n"));
    EXPECT_THAT(table, MatchesRegex("([0-9]+\\.[0-9][0-9][0-9]?\t[A-HX]\n)+"));
    EXPECT_THAT(Cues(dialog + "-f xml").output,
                AllOf(HasSubstr("<rhubarbResult>"), HasSubstr("<mouthCue start=\"0.00\" end=")));
}

TEST(Cues, AreHeardWithoutATextAndUseATextAsFarAsItFits) {
    EXPECT_GT(Cues(kDemo + ".wav -q -r phonetic --threads 2").output.size(), 200u);
    const ScratchFolder scratch;
    WriteFile(scratch.Path("blank.txt"), " \n");
    EXPECT_EQ(Cues(kDemo + ".wav -q -d " + scratch.Path("blank.txt")).output,
              Cues(kDemo + ".wav -q").output);
    WriteFile(scratch.Path("more.txt"), DemoText() + " And the elephants went home for tea.");
    const tool_run partly = Cues(kDemo + ".wav --machineReadable --consoleLevel warning -d " +
                                 scratch.Path("more.txt"));
    EXPECT_EQ(partly.exitCode, 0);
    EXPECT_GT(partly.output.size(), 200u);
    EXPECT_THAT(partly.errors, HasSubstr("were not heard"));
}

TEST(Cues, DrawOnlyWhatTheCharacterHas) {
    const std::string dialog = kDemo + ".wav -q -d " + kDemo + ".txt ";
    EXPECT_THAT(Cues(dialog + "--extendedShapes \"\"").output, MatchesRegex("([0-9.]+\t[A-F]\n)+"));
    EXPECT_THAT(Cues(dialog + "--extendedShapes X").output, MatchesRegex("([0-9.]+\t[A-FX]\n)+"));
    EXPECT_EQ(Cues(dialog + "--extendedShapes Q").exitCode, 1);
}

TEST(Cues, OfSwitchLayersCountFrames) {
    const std::string options = kDemo + ".wav -q -f dat -d " + kDemo + ".txt ";
    const std::string letters = Cues(options).output;
    EXPECT_THAT(letters, MatchesRegex("MohoSwitch1\n([0-9]+ [A-HX]\n)+"));
    EXPECT_THAT(Cues(options + "--datUsePrestonBlair").output,
                MatchesRegex("MohoSwitch1\n([0-9]+ (MBP|etc|E|AI|O|U|FV|L|rest)\n)+"));
    const auto last = [](const std::string& text) {
        return std::stoi(text.substr(text.rfind('\n', text.size() - 2) + 1));
    };
    EXPECT_NEAR(last(Cues(options + "--datFrameRate 48").output), 2 * last(letters), 2);
}

TEST(Cues, SpeakInLinesOfJson) {
    const ScratchFolder scratch;
    const std::string log = scratch.Path("cues.log");
    const tool_run run =
        Cues(kDemo + ".wav --machineReadable -o " + scratch.Path("out.tsv") + " --logFile " + log);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "");
    const std::vector<json> lines = JsonLines(run.errors);
    ASSERT_GT(lines.size(), 10u);
    EXPECT_EQ(lines.front()["type"], "start");
    EXPECT_EQ(lines.front()["file"], kDemo + ".wav");
    EXPECT_EQ(lines.back()["type"], "success");
    double reached = -1;
    for (const json& line : lines) {
        EXPECT_TRUE(line["log"]["level"].is_string() && line["log"]["message"].is_string());
        if (line["type"] == "progress") {
            EXPECT_GT(line["value"], reached);
            reached = line["value"];
        }
    }
    EXPECT_EQ(reached, 1.0);
    EXPECT_THAT(ReadFile(log),
                AllOf(HasSubstr("[Info] No text is given"), Not(HasSubstr("[Trace]"))));

    const tool_run failed = Cues("/nowhere.wav --machineReadable");
    EXPECT_EQ(failed.exitCode, 2);
    const json last = JsonLines(failed.errors).back();
    EXPECT_EQ(last["type"], "failure");
    EXPECT_THAT(last["reason"].get<std::string>(), HasSubstr("/nowhere.wav"));
}

TEST(Cues, SayTheirVersion) {
    EXPECT_THAT(Cues("--version").output, HasSubstr("version 1."));
    const tool_run people = Cues(kDemo + ".wav -o /dev/null");
    EXPECT_THAT(people.errors, AllOf(HasSubstr("Generating"), HasSubstr("Done.")));
}

} // namespace
