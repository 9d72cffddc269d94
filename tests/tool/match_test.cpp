#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "run_tool.h"

namespace {

using json = nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

/// The demo's text with `written` in place of `said`.
std::string Changed(const std::string& said, const std::string& written) {
    std::string text = ReadFile(DemoText());
    const size_t at = text.find(said);
    EXPECT_NE(at, std::string::npos) << said;
    return text.replace(at, said.size(), written);
}

/// Aligns the demo recording with `text`.
tool_run Align(const ScratchFolder& scratch, const std::string& text, const std::string& options) {
    const std::string path = scratch.Path("text.txt");
    WriteFile(path, text);
    return RunTool("align " + DemoRecording() + " --text-file " + path + " -q " + options);
}

json WithoutMatch(json result) {
    result.erase("match");
    for (const char* list : {"words", "phonemes"}) {
        for (json& each : result[list]) {
            for (const char* key : {"said", "confidence", "margin"}) {
                each.erase(key);
            }
        }
    }
    return result;
}

TEST(Match, LeavesTheTimesOfTheRightTextAsTheyAre) {
    const ScratchFolder scratch;
    const std::string text = ReadFile(DemoText());
    const tool_run judged = Align(scratch, text, "--strict");
    EXPECT_EQ(judged.exitCode, 0) << judged.errors;
    EXPECT_THAT(judged.errors, IsEmpty());
    const json result = json::parse(judged.output);
    EXPECT_EQ(result["match"]["verdict"], "good");
    double sum = 0.0;
    for (const json& word : result["words"]) {
        EXPECT_EQ(word["said"], true);
        sum += word["confidence"].get<double>();
    }
    EXPECT_GT(sum / static_cast<double>(result["words"].size()), 0.9);
    const json exact = json::parse(Align(scratch, text, "--match exact").output);
    EXPECT_FALSE(exact.contains("match"));
    EXPECT_EQ(WithoutMatch(result), exact);
}

TEST(Match, ReportsWhatDoesNotFit) {
    const ScratchFolder scratch;
    const std::string text = Changed("echo test", "elephant umbrella test");
    const tool_run plain = Align(scratch, text, "");
    EXPECT_EQ(plain.exitCode, 0);
    EXPECT_THAT(plain.errors,
                AllOf(HasSubstr("words were not heard (from \"elephant"), HasSubstr(" s)")));
    const json result = json::parse(plain.output);
    EXPECT_EQ(result["match"]["verdict"], "doubtful");
    std::vector<std::string> unsaid;
    size_t placed = 0;
    for (const json& word : result["words"]) {
        EXPECT_GE(word["text_offset"].get<size_t>(), placed);
        placed = word["text_offset"];
        if (!word["said"].get<bool>()) {
            unsaid.push_back(word["text"]);
            EXPECT_FALSE(word.contains("start_ms"));
            EXPECT_LT(word["confidence"], 0.5);
        }
    }
    EXPECT_THAT(unsaid, testing::Contains("umbrella"));

    const tool_run strict = Align(scratch, text, "--strict -o " + scratch.Path("x.json"));
    EXPECT_EQ(strict.exitCode, 4);
    EXPECT_EQ(json::parse(ReadFile(scratch.Path("x.json")))["words"], result["words"]);

    const std::string table = Align(scratch, text, "--format tsv").output;
    EXPECT_THAT(table,
                AllOf(HasSubstr("text_length\tconfidence\n"), HasSubstr("\t\tunsaid\tumbrella\t")));
    EXPECT_THAT(Align(scratch, text, "--format textgrid").output, HasSubstr("\"confidence\""));
    for (const char* name : {"x.json", "x.tsv"}) {
        WriteFile(scratch.Path("x.tsv"), table);
        EXPECT_EQ(RunTool("animate " + scratch.Path(name) + " -o /dev/null --format json").exitCode,
                  0);
    }
    EXPECT_EQ(RunTool("view " + DemoRecording() + " -q --timings " + scratch.Path("x.json") +
                      " -o " + scratch.Path("x.html"))
                  .exitCode,
              0);
}

TEST(Match, HearsOtherSpeech) {
    const ScratchFolder scratch;
    const std::string text = ReadFile(DemoText());
    const size_t half = text.find(' ', text.size() / 2);
    const tool_run run = Align(scratch, text.substr(0, half), "");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.errors, HasSubstr(" s of other speech at "));
    const json result = json::parse(run.output);
    const json& last = result["events"].back();
    EXPECT_EQ(last["type"], "unscripted");
    size_t heard = 0;
    for (const json& phoneme : result["phonemes"]) {
        heard += phoneme["start_ms"] >= last["start_ms"] && phoneme["label"] != "x" ? 1 : 0;
    }
    EXPECT_GT(heard, 10u);
}

TEST(Match, IsPoorForAnotherText) {
    const ScratchFolder scratch;
    const tool_run run = Align(scratch,
                               "The harbour lights went out one after another, and nobody on the "
                               "quay could say whose boat it was that had come in before dawn.",
                               "--strict");
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_THAT(run.errors, HasSubstr("hardly the text"));
}

TEST(Match, HasNoReasonWhereItIsGood) {
    const ScratchFolder scratch;
    const tool_run run = Align(scratch, ReadFile(DemoText()), "--match loose --strict");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.errors, IsEmpty());
    const json result = json::parse(run.output);
    EXPECT_EQ(result["match"]["reason"], "");
    EXPECT_EQ(result["match"]["verdict"], "good");
    size_t unscripted = 0;
    for (const json& event : result["events"]) {
        unscripted += event["type"] == "unscripted" ? 1 : 0;
    }
    EXPECT_EQ(unscripted, 1u) << "a moment that does not count";
}

TEST(Match, SpeaksOfOneWord) {
    const ScratchFolder scratch;
    std::string text = Changed("echo test", "echo umbrella test");
    text.resize(text.find("The purpose"));
    EXPECT_THAT(Align(scratch, text, "--to 8200").errors,
                HasSubstr(": 1 of 28 words was not heard (from \"umbrella\" at "));
}

TEST(Match, IsNotStrictWithoutACalibration) {
    const ScratchFolder scratch;
    WriteFile(scratch.Path("own.model"), ReadFile(TESSARIN_SOURCE_DIR "/data/en-us.model"));
    const std::string own = "--model " + scratch.Path("own.model");
    const tool_run plain = Align(scratch, ReadFile(DemoText()), own);
    EXPECT_EQ(plain.exitCode, 0);
    EXPECT_EQ(json::parse(plain.output)["match"]["verdict"], "unknown");
    const tool_run strict = Align(scratch, ReadFile(DemoText()), own + " --strict");
    EXPECT_EQ(strict.exitCode, 4);
    EXPECT_THAT(strict.errors, AllOf(HasSubstr("the model has no calibration"),
                                     HasSubstr("beside the model, or leave out --strict")));
}

TEST(Match, RefusesModesThatDoNotGoTogether) {
    const ScratchFolder scratch;
    EXPECT_EQ(Align(scratch, "hello", "--match 1").exitCode, 1) << "modes have names";
    EXPECT_EQ(Align(scratch, "hello", "--match sometimes").exitCode, 1);
    EXPECT_EQ(Align(scratch, "hello", "--match exact --strict").exitCode, 1);
    EXPECT_EQ(Align(scratch, "hello.", "--sentences --strict").exitCode, 1);
}

} // namespace
