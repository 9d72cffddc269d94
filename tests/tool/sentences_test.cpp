#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

/// What the demo says, and what it does not.
std::string MixedText() {
    return ReadFile(DemoText()) + "\nThe children built a boat of paper by the river.\n";
}

TEST(Sentences, OfTheTextAreFoundOrNot) {
    const ScratchFolder scratch;
    const std::string text = scratch.Path("text");
    WriteFile(text, MixedText());
    const std::string arguments = "align " + DemoRecording() + " --text-file " + text + " ";
    const tool_run run = RunTool(arguments + "--sentences");
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const json document = json::parse(run.output);
    EXPECT_GT(document["duration_ms"].get<int>(), 1000);
    const json& sentences = document["sentences"];
    ASSERT_GE(sentences.size(), 2u);
    EXPECT_TRUE(sentences.front()["found"].get<bool>());
    EXPECT_FALSE(sentences.back()["found"].get<bool>());
    EXPECT_THAT(sentences.back()["text"].get<std::string>(), StartsWith("The children"));

    const tool_run table = RunTool(arguments + "--sentences --format tsv");
    EXPECT_THAT(table.output, StartsWith("start_ms\tend_ms\tscore\ttext\n"));
    EXPECT_THAT(table.output, HasSubstr("\t\tnot found\tThe children"));
    const tool_run none = RunTool(arguments + "--sentences --least-score 90 --format tsv");
    EXPECT_EQ(none.exitCode, 0);
    EXPECT_THAT(none.output, StartsWith("start_ms\tend_ms\tscore\ttext\n\t\tnot found\t"));
}

TEST(Sentences, AnswerWhatGoesWrong) {
    const ScratchFolder scratch;
    const std::string arguments = "align " + DemoRecording() + " --text one ";
    EXPECT_EQ(RunTool(arguments + "--sentences --format textgrid").exitCode, 1);
    EXPECT_EQ(RunTool(arguments + "--sentences -o a.json -o b.json").exitCode, 1);
    EXPECT_EQ(RunTool(arguments + "--sentences --retry").exitCode, 1);
    EXPECT_EQ(RunTool(arguments + "--least-score 3").exitCode, 1);
    EXPECT_EQ(RunTool("align none.wav --text one --sentences").exitCode, 2);
    const std::string file = scratch.Path("out.tsv");
    EXPECT_EQ(RunTool("align " + DemoRecording() + " --text '.' --sentences -o " + file).exitCode,
              0);
    EXPECT_EQ(ReadFile(file), "start_ms\tend_ms\tscore\ttext\n");
}

TEST(Sentences, HavePlacesInUtf16AndWordsFromStandardInput) {
    const ScratchFolder scratch;
    const std::string plain = scratch.Path("plain");
    const std::string wide = scratch.Path("wide");
    const std::string words = scratch.Path("words");
    const std::string odd = "ECHO=SHSHSHSHSHSHSHSHSH\n";
    std::string units = "\xFF\xFE";
    for (const char letter : MixedText()) {
        units += {letter, '\0'};
    }
    WriteFile(plain, MixedText());
    WriteFile(wide, units);
    WriteFile(words, odd);
    const std::string search = "align " + DemoRecording() + " --sentences --text-file ";
    const json narrow = json::parse(RunTool(search + plain).output)["sentences"];
    const json other = json::parse(RunTool(search + wide).output)["sentences"];
    ASSERT_EQ(other.size(), narrow.size());
    for (size_t i = 0; i < narrow.size(); ++i) {
        EXPECT_EQ(other[i]["text_offset"], 2 + 2 * narrow[i]["text_offset"].get<int>());
        EXPECT_EQ(other[i]["text_length"], 2 * narrow[i]["text_length"].get<int>());
        EXPECT_EQ(other[i]["text"], narrow[i]["text"]);
    }
    const tool_run streamed = RunTool(search + plain + " --words -", odd);
    EXPECT_EQ(streamed.output, RunTool(search + plain + " --words " + words).output);
    EXPECT_NE(json::parse(streamed.output)["sentences"], narrow);
}

TEST(Retry, FindsWhatAPlainSearchFinds) {
    const std::string arguments =
        "align " + DemoRecording() + " --text-file " + DemoText() + " --format tsv";
    const tool_run plain = RunTool(arguments);
    const tool_run retry = RunTool(arguments + " --retry");
    EXPECT_EQ(retry.exitCode, 0) << retry.errors;
    EXPECT_EQ(retry.output, plain.output);
}

} // namespace
