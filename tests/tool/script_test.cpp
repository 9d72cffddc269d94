#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The tokens but punctuation, as kind and text; each text must stand at its place.
std::vector<std::string> Tokens(const std::string& text, const std::string& options = "") {
    const tool_run run = RunTool("transcribe - --format json " + options, text);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    std::vector<std::string> tokens;
    const json result = json::parse(run.output);
    for (const json& token : result["tokens"]) {
        const std::string spelled = token["text"];
        if (token["kind"] != "punctuation") {
            tokens.push_back(token["kind"].get<std::string>() + " " + spelled);
            EXPECT_EQ(text.substr(token["text_offset"], token["text_length"]), spelled);
        }
    }
    return tokens;
}

TEST(Script, IsReadAsPeopleWriteItUnlessLiteral) {
    const std::string text = "JOHN (low): It is 5 °C — “Zoë” (beat) NOOO!";
    EXPECT_THAT(Tokens(text), ElementsAre("speaker JOHN (low):", "word It", "word is", "word 5 °C",
                                          "word Zoë", "direction (beat)", "word NOOO"));
    EXPECT_EQ(Tokens(text, "--literal").front(), "word JOHN");
}

TEST(Script, HasItsPlacesInTheUsersBytesInUtf16) {
    std::string wide = "\xFF\xFE";
    for (const char letter : std::string("MARY: In 1905.")) {
        wide += {letter, '\0'};
    }
    const tool_run run = RunTool("transcribe - --one-reading --format tsv", wide);
    EXPECT_THAT(run.output, HasSubstr("\n2\t12\tspeaker\tMARY:\t"));
    EXPECT_THAT(run.output, HasSubstr("\n20\t28\tword\t1905\tnAYntIYn OW fAYv\n"));
}

TEST(Script, GivesTheLinesOfOneRole) {
    const std::string text = "ANN: One.\nBOB: Two.\nAnn: Three.";
    EXPECT_THAT(Tokens(text, "--speaker bob"), ElementsAre("speaker BOB:", "word Two"));
    const tool_run none = RunTool("transcribe - --speaker CAT", text);
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_THAT(none.errors, HasSubstr("has no line of CAT"));
}

TEST(Script, RefusesForALiteralTextWhatOnlyAScriptHas) {
    for (const char* const option :
         {"--speaker ANN", "--text-format srt", "--cue-times", "--script-table none"}) {
        const tool_run run = RunTool("transcribe - --literal " + std::string(option), "ANN: One.");
        EXPECT_EQ(run.exitCode, 1) << option;
        EXPECT_THAT(run.errors, HasSubstr("does not go with --literal"));
    }
}

TEST(Script, TakesScreenplaysAndSubtitlesByTheirNames) {
    const ScratchFolder scratch;
    const auto wordsOf = [&](const std::string& name, const std::string& content) {
        WriteFile(scratch.Path(name), content);
        const tool_run run = RunTool("transcribe --format json --text-file " + scratch.Path(name));
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        std::string words;
        const json result = json::parse(run.output);
        for (const json& token : result["tokens"]) {
            words += token["kind"] == "word" ? token["text"].get<std::string>() + " " : "";
        }
        return words;
    };
    EXPECT_EQ(wordsOf("a.fountain", "Ann comes in.\n\nANN\nHello.\n"), "Hello ");
    EXPECT_EQ(wordsOf("a.SRT", "1\n00:00:01,000 --> 00:00:02,000\nHello.\n"), "Hello ");
    EXPECT_EQ(wordsOf("a.vtt", "WEBVTT\n\n00:01.000 --> 00:02.000\n<v Ann>Hello.\n"), "Hello ");
    EXPECT_EQ(wordsOf("a.TextGrid", "File type = \"ooTextFile\"\n\"TextGrid\" 0 1 <exists> 1 "
                                    "\"IntervalTier\" \"words\" 0 1 1 0 1 \"Hello\""),
              "Hello ");
}

TEST(Script, TakesATableOfOnesOwn) {
    const ScratchFolder scratch;
    WriteFile(scratch.Path("mine"), "[units]\nlg\tleague\tleagues\n");
    EXPECT_THAT(Tokens("20 lg", "--script-table " + scratch.Path("mine")),
                ElementsAre("word 20 lg"));
    WriteFile(scratch.Path("bad"), "a text\n");
    const tool_run bad = RunTool("transcribe - --script-table " + scratch.Path("bad"), "one");
    EXPECT_EQ(bad.exitCode, 2);
    EXPECT_THAT(bad.errors, HasSubstr("bad: line 1: an entry stands before the first section"));
    WriteFile(scratch.Path("words"), "XYZ=zIHz\n");
    const std::string words = " --words " + scratch.Path("words");
    EXPECT_THAT(RunTool("transcribe -" + words, "an XYZ").output, HasSubstr("\tXYZ\tzIHz\n"));
}

// The recording says "echo", which here is one of two ways to read 0.
TEST(Script, LetsTheRecordingChooseAReading) {
    const ScratchFolder scratch;
    std::string text = ReadFile(DemoText());
    text.replace(text.find("echo"), 4, "0");
    WriteFile(scratch.Path("text"), text);
    WriteFile(scratch.Path("table"), "[cardinals]\n0\tumbrella\n[words]\noh\techo\n");
    const std::string command = "align -q " + DemoRecording() + " --text-file " +
                                scratch.Path("text") + " --script-table " + scratch.Path("table");
    const json result = json::parse(RunTool(command).output);
    const json plain = json::parse(
        RunTool("align -q " + DemoRecording() + " --literal --text-file " + DemoText()).output);
    for (size_t i = 0; i < result["words"].size(); ++i) {
        const json& word = result["words"][i];
        EXPECT_EQ(word.value("reading", ""), word["text"] == "0" ? "echo" : "");
        EXPECT_EQ(word["start_ms"], plain["words"][i]["start_ms"]);
    }
    const json usual = json::parse(RunTool(command + " --one-reading").output);
    EXPECT_THAT(usual.dump(), testing::Not(HasSubstr("\"reading\"")));
}

TEST(Script, WarnsOnceOfSymbols) {
    const tool_run run = RunTool("transcribe -", "\xF0\x9F\x99\x84 hi \xF0\x9F\x99\x84");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.errors, HasSubstr("2 symbols that have no name are not said"));
    EXPECT_THAT(RunTool("transcribe -", "hi \xE2\x99\xAA").errors, IsEmpty());
}

TEST(Script, IsAlignedWithItsEvents) {
    std::string text = ReadFile(DemoText());
    text.replace(text.find("everything"), 10, "(beat) EVERYTHING");
    const ScratchFolder scratch;
    WriteFile(scratch.Path("text"), "VOICE: " + text);
    const tool_run run =
        RunTool("align -q " + DemoRecording() + " --text-file " + scratch.Path("text"));
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const json result = json::parse(run.output);
    EXPECT_EQ(result["events"][0]["type"], "speaker");
    int numEmphasised = 0;
    for (const json& word : result["words"]) {
        EXPECT_EQ(("VOICE: " + text).substr(word["text_offset"], word["text_length"]),
                  word["text"]);
        numEmphasised += word.contains("emphasis") ? 1 : 0;
    }
    EXPECT_EQ(numEmphasised, 1);
    // What is said and when is as without the marks of the script.
    const tool_run plain =
        RunTool("align -q " + DemoRecording() + " --literal --text-file " + DemoText());
    EXPECT_EQ(json::parse(plain.output)["words"].size(), result["words"].size());
}

} // namespace
