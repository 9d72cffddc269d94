#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST(CommandLine, HelpAndVersionSucceedAndMisuseExitsWithOne) {
    EXPECT_EQ(RunTool("--help").exitCode, 0);
    EXPECT_EQ(RunTool("--version").exitCode, 0);
    for (const char* command : {"align", "recognize", "inspect", "lexicon build"}) {
        SCOPED_TRACE(command);
        const std::string help = RunTool(std::string(command) + " --help").output;
        EXPECT_THAT(help, HasSubstr(command));
        EXPECT_THAT(help, Not(AnyOf(HasSubstr("REQUIRED"), HasSubstr("Excludes:"),
                                    HasSubstr("Needs:"), HasSubstr(" VALUE "))));
    }
    for (const char* arguments :
         {"", "sing", "align", "inspect", "align x.wav", "transcribe", "transcribe x",
          "align x.wav --text a --text-file b", "align x.wav --text a --fps fast",
          "align x.wav --text a --format xml", "align x.wav --text a --channel left"}) {
        SCOPED_TRACE(arguments);
        const tool_run run = RunTool(arguments);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.output, "") << "messages go to standard error";
        EXPECT_NE(run.errors, "");
    }
}

TEST(CommandLine, AWrongWordNamesTheNearestRightOne) {
    const struct {
        const char* arguments;
        const char* message;
    } cases[] = {
        {"algn x.wav", "tessarin: there is no command algn; did you mean align?"},
        {"lexicon biuld a b", "lexicon: there is no command biuld; did you mean build?"},
        {"align x.wav --txt=a", "align: there is no option --txt; did you mean --text?"},
        {"align x.wav --text a --max-shape 3",
         "there is no option --max-shape; did you mean --max-shapes?"},
        {"cut x.wav --fps 25", "cut: there is no option --fps; see tessarin cut --help"},
        {"sing", "tessarin: there is no command sing; see tessarin --help"},
    };
    for (const auto& [arguments, message] : cases) {
        SCOPED_TRACE(arguments);
        const tool_run run = RunTool(arguments);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_THAT(run.errors, HasSubstr(message));
    }
    EXPECT_THAT(RunTool("align x.wav --channel left").errors, HasSubstr("--channel"));
    EXPECT_THAT(RunTool("describe").errors, Not(HasSubstr("there is no")));
}

TEST(CommandLine, FailuresNameTheFileAndExitWithTwo) {
    const ScratchFolder scratch;
    const std::string noise = scratch.Path("noise.wav");
    WriteFile(noise, "this is not a recording");
    const std::string shortModel = scratch.Path("short.model");
    WriteFile(shortModel, "mmhz\1");
    const std::string text = " --text hello";
    for (const std::string& arguments :
         {"align " + scratch.Path("none.wav") + text, "align " + noise + text,
          "align " + DemoRecording() + text + " --model " + shortModel,
          "align " + DemoRecording() + text + " --lexicon " + scratch.Path("none.txt"),
          "align " + DemoRecording() + text + " --rules " + shortModel,
          "align " + DemoRecording() + text + " --channel 7",
          "align " + DemoRecording() + text + " --data " + scratch.Path("none"),
          "align " + DemoRecording() + text + " -o " + scratch.Path("none/out.json"),
          "inspect " + noise, "inspect " + shortModel}) {
        SCOPED_TRACE(arguments);
        const tool_run run = RunTool(arguments);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, StartsWith("tessarin: "));
    }
    EXPECT_THAT(RunTool("align " + scratch.Path("none.wav") + text).errors,
                HasSubstr(scratch.Path("none.wav") + ": A required file could not be found. "
                                                     "(code 10)"));
}

TEST(CommandLine, AlignWritesTheWholeResult) {
    // The mark and the quote change nothing in what is said, but every offset after them.
    const std::string text = "\xEF\xBB\xBF“" + ReadFile(DemoText());
    const ScratchFolder scratch;
    WriteFile(scratch.Path("text.txt"), text);
    const tool_run run = RunTool("align " + DemoRecording() + " --text-file " +
                                 scratch.Path("text.txt") + " --fps 25");
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const json result = json::parse(run.output);
    EXPECT_EQ(result["code"], 0);
    EXPECT_EQ(result["message"], "No Error");
    EXPECT_GT(result["duration_ms"], 500);
    EXPECT_GT(result["phonemes"].size(), result["words"].size());
    ASSERT_GT(result["frames"].size(), 10u);
    for (const json& frame : result["frames"]) {
        double sum = 0;
        for (const auto& [label, weight] : frame["weights"].items()) {
            sum += weight.get<double>();
        }
        EXPECT_NEAR(sum, 1.0, 1e-3);
        EXPECT_EQ(frame["end_ms"].get<int>() - frame["start_ms"].get<int>(), 40);
    }
    for (const json& word : result["words"]) {
        EXPECT_EQ(word["text"], text.substr(word["text_offset"], word["text_length"]));
    }
}

TEST(CommandLine, TranscribeShowsWordsKindsAndPhonemes) {
    const std::string expected = "start\tend\tkind\ttext\tphonemes\n"
                                 "0\t5\tword\tHello\thAHlOW|hEHlOW\n"
                                 "5\t6\tpunctuation\t,\tx\n"
                                 "7\t10\tword\tMr.\tmIHstER\n"
                                 "11\t12\tword\tX\tEHks\n";
    EXPECT_EQ(RunTool("transcribe --text 'Hello, Mr. X'").output, expected);
    EXPECT_EQ(RunTool("transcribe -", "Hello, Mr. X").output, expected);
    const json tokens =
        json::parse(RunTool("transcribe --format json --text 'Hello, Mr. X'").output)["tokens"];
    ASSERT_EQ(tokens.size(), 4u);
    EXPECT_EQ(tokens[0]["phonemes"][0][1], "hEHlOW");
}

TEST(CommandLine, InspectTellsRecordingsAndModels) {
    EXPECT_THAT(RunTool("inspect " + DemoRecording()).output, HasSubstr("rate             16000"));
    const tool_run model = RunTool("inspect " TESSARIN_SOURCE_DIR "/data/en-us.model");
    EXPECT_EQ(model.exitCode, 0);
    EXPECT_THAT(model.output, HasSubstr("phonemes         40: x m p b"));
    EXPECT_THAT(model.output, HasSubstr("3 a phoneme, 120 in all"));
}

} // namespace
