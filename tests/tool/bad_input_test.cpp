#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tool/run_tool.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

void ExpectFailure(const std::string& arguments, int exitCode, const std::string& file,
                   const std::vector<std::string>& texts, const std::string& input = "") {
    SCOPED_TRACE(arguments);
    const tool_run run = RunTool(arguments, input);
    EXPECT_EQ(run.exitCode, exitCode);
    EXPECT_EQ(run.output.find("phonemes"), std::string::npos) << "nothing is found";
    EXPECT_THAT(run.errors, HasSubstr("tessarin: " + file + ": "));
    for (const std::string& text : texts) {
        EXPECT_THAT(run.errors, HasSubstr(text));
    }
}

TEST(BadInput, WhatIsAlignedHasWordsAndSound) {
    const ScratchFolder scratch;
    const std::string silent = scratch.Path("silent.wav");
    WriteWav(silent, std::vector<int16_t>(32000));
    for (const std::string command : {"align", "view"}) {
        const tool_run marks = RunTool(command + " -q " + DemoRecording() + " --text '... - ?!'");
        EXPECT_EQ(marks.exitCode, 2) << command;
        EXPECT_THAT(marks.errors, HasSubstr("the text has no words, only marks"));
        const tool_run run = RunTool(command + " -q " + silent + " --text 'Hello there.'");
        EXPECT_EQ(run.exitCode, 2) << command;
        EXPECT_THAT(run.errors, HasSubstr("it is silent from beginning to end"));
        EXPECT_THAT(RunTool(command + " -q " + DemoRecording() + " --text 'Good morning.'").errors,
                    HasSubstr("of other speech at"))
            << command;
    }
}

TEST(BadInput, ATextMayComeThroughAPipe) {
    const ScratchFolder scratch;
    const std::string pipe = scratch.Path("pipe");
    const tool_run run = RunTool("--version >/dev/null; mkfifo " + pipe + "; printf hello >" +
                                 pipe + " & " TESSARIN_TOOL " transcribe --text-file " + pipe);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(run.output, HasSubstr("\tword\thello\t"));
}

TEST(BadInput, TextThatSaysNothingIsRefused) {
    const ScratchFolder scratch;
    const std::string blank = scratch.Path("blank.txt");
    WriteFile(blank, "\xEF\xBB\xBF \r\n\t\n");
    const std::string foreign = scratch.Path("foreign.txt");
    WriteFile(foreign, "\u0436 \u0436");
    for (const std::string& command :
         {"align " + DemoRecording(), "view " + DemoRecording(),
          "spectrogram -o " + scratch.Path("x.png") + " " + DemoRecording(),
          "align --sentences " + DemoRecording(), std::string("transcribe")}) {
        ExpectFailure(command + " --text-file " + blank, 2, blank, {"is empty; give the words"});
        ExpectFailure(command + " --text ''", 1, "--text", {"is empty; give the words"});
    }
    ExpectFailure("transcribe -", 2, "-", {"is empty"});
    ExpectFailure("align " + DemoRecording() + " --text-file " + foreign, 2, foreign,
                  {"no character", "another --lexicon"});
}

TEST(BadInput, RecordingWithoutASampleIsRefused) {
    const ScratchFolder scratch;
    const std::string wav = scratch.Path("none.wav");
    WriteWav(wav, {});
    for (const std::string& command :
         {"align --text hello " + wav, "align --sentences --text hello " + wav, "recognize " + wav,
          "view " + wav, "cut -o " + scratch.Path("x.wav") + " " + wav,
          "cut --channel mix -o " + scratch.Path("x.wav") + " " + wav,
          "gate -o " + scratch.Path("x.wav") + " " + wav,
          "spectrogram -o " + scratch.Path("x.png") + " " + wav, "live " + wav,
          "commands --record one=" + wav + " --save " + scratch.Path("x.json")}) {
        ExpectFailure(command, 2, wav, {"has no samples", "again"});
    }
    EXPECT_THAT(RunTool("inspect " + wav).output, HasSubstr("0 sample frames"));
}

TEST(BadInput, WhatIsNotARecordingIsNamed) {
    const ScratchFolder scratch;
    const std::string x = " -o " + scratch.Path("x.wav") + " ";
    const auto write = [&](const char* name, const std::string& content) {
        WriteFile(scratch.Path(name), content);
        return scratch.Path(name);
    };
    std::filesystem::create_directory(scratch.Path("folder.wav"));
    struct {
        std::string file;
        const char* what;
        const char* remedy;
    } const cases[] = {
        {write("speech.txt", "Hello,\tZo\xC3\xAB.\r\n"), "it is a text file", "--text-file"},
        {write("speech.wav", "What is said here.\n"), "it is a text file", "--text-file"},
        {write("wide.txt", std::string("\xFF\xFEH\0i\0", 6)), "it is a text file", "--text-file"},
        {write("empty.wav", ""), "it is an empty file", "again"},
        {scratch.Path("folder.wav"), "it is a folder", "name a file in it"},
        {TESSARIN_SOURCE_DIR "/data/en-us.model", "it is an acoustic model", "--model"},
        {TESSARIN_SOURCE_DIR "/data/en-us.lexicon", "it is a lexicon file", "--lexicon"},
        {write("speech.m4a", std::string("\0\0\0\x1C", 4) + "ftypM4A "), "it is an MP4", "convert"},
    };
    for (const auto& [file, what, remedy] : cases) {
        for (const std::string& command :
             {std::string("align --text hello "), std::string("recognize "), std::string("view "),
              "cut" + x, "cut --channel mix" + x, "gate" + x, "spectrogram" + x,
              std::string("live ")}) {
            // The reason of who tried to read it stands in the first line.
            ExpectFailure(command + file, 2, file, {"\n  ", what, remedy});
        }
    }
    EXPECT_THAT(RunTool("align --text hello " + cases[0].file).errors, HasSubstr("(code 12)\n"));
    EXPECT_THAT(RunTool("inspect " + cases[0].file).errors, HasSubstr("it is a text file"));
    const std::string noise = write("noise.wav", std::string("\1\2\3\0\xFE", 5));
    EXPECT_THAT(RunTool("align --text hello " + noise).errors, Not(HasSubstr("it is")));
    ExpectFailure("gate" + x + scratch.Path("none.wav"), 2, scratch.Path("none.wav"),
                  {"could not be found. (code 10)"});
}

TEST(BadInput, ProseIsNotALexicon) {
    const ScratchFolder scratch;
    const std::string file = scratch.Path("prose.txt");
    const auto expect = [&](const std::string& content, const std::string& option,
                            const std::string& reason) {
        WriteFile(file, content);
        ExpectFailure("transcribe --text hello " + option + " " + file, 2, file,
                      {reason, "WORD=phonemes"});
    };
    expect("It was the best of times,\nit was the worst of times.\n", "--lexicon",
           "line 1 is not WORD=phonemes, such as HELLO=hEHlOW; a lexicon");
    expect("ONE=wAHn\n\n# two = 2\nTWO=tUW\nand prose", "--lexicon", "line 5 is not");
    expect("=wAHn\n", "--lexicon", "line 1 is not");
    expect("ONE= \n", "--lexicon", "line 1 is not");
    expect("It was the best of times.\n", "--words", "line 1 is neither");
    for (const std::string& content : {std::string(), std::string(" \r\n\n")}) {
        expect(content, "--lexicon", "has no words");
        expect(content, "--words", "has no words");
    }
    ExpectFailure("lexicon build " + scratch.Path("new.lexicon") + " " + file, 2, file,
                  {"has no words"});
    EXPECT_FALSE(std::filesystem::exists(scratch.Path("new.lexicon")));
}

TEST(BadInput, ATextThatStopsBeingUtf8IsWarnedOfWithThePlace) {
    const ScratchFolder scratch;
    const std::string file = scratch.Path("text.txt");
    const auto errorsOf = [&](const std::string& content, const std::string& options = "") {
        WriteFile(file, content);
        const tool_run run = RunTool("transcribe --text-file " + file + options);
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        return run.errors;
    };
    EXPECT_THAT(errorsOf("Zo\xC3\xAB\r\nis \xC3\xA9t\xE9 \xFF.\n"),
                AllOf(StartsWith("tessarin: " + file + ": line 2, column 6: the byte E9 "),
                      HasSubstr("code page 1252"), HasSubstr("--encoding local")));
    EXPECT_THAT(errorsOf("caf\xE9"), HasSubstr("line 1, column 4"));
    EXPECT_THAT(errorsOf("caf\xE9", " --encoding local"), IsEmpty()) << "it was said";
    EXPECT_THAT(errorsOf("caf\xC3\xA9\n"), IsEmpty());
    EXPECT_THAT(errorsOf(std::string("\xFF\xFEh\0i\0", 6)), IsEmpty());
    EXPECT_THAT(errorsOf(std::string("h\0\xE9\0", 4)), IsEmpty());
    WriteFile(file, "caf\xE9=kAHfEY\n");
    EXPECT_THAT(RunTool("transcribe --text a --words " + file).errors,
                HasSubstr(file + ": line 1, column 4: the byte E9"));
}

} // namespace
