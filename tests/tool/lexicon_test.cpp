#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/run_tool.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// Runs `lexicon` with the given arguments and expects success.
std::string Lexicon(const std::string& arguments) {
    const tool_run run = RunTool("lexicon " + arguments);
    EXPECT_EQ(run.exitCode, 0) << arguments << "\n" << run.errors;
    return run.output;
}

TEST(LexiconCommand, BuildsChangesAndShowsALexicon) {
    const ScratchFolder scratch;
    const std::string file = scratch.Path("small.lexicon");
    const std::string list = scratch.Path("list.txt");
    WriteFile(list, ";;; a dictionary\nread  R IY1 D\nREAD(2)  R EH1 D # past\nCAT=kAEt\n");
    EXPECT_EQ(Lexicon("build " + file + " " + list), "3 entries\n");
    EXPECT_EQ(Lexicon("export " + file), "CAT=kAEt\nREAD=rIYd\nREAD=rEHd\n");
    Lexicon("add " + file + " Tessarin tEHsAHrIHn");
    Lexicon("add " + file + " cat kAAt");
    EXPECT_EQ(Lexicon("find " + file + " cat TESSARIN"),
              "cat=kAAt\nCAT=kAEt\nTessarin=tEHsAHrIHn\n");
    Lexicon("remove " + file + " CAT kAAt");
    EXPECT_EQ(Lexicon("find " + file + " cat"), "CAT=kAEt\n");
    EXPECT_THAT(Lexicon("prune " + file + " -o " + scratch.Path("pruned.lexicon")),
                HasSubstr("%\n1 of 4 entries removed\n"));
    EXPECT_EQ(Lexicon("prune --quiet " + file), "1 of 4 entries removed\n");
    EXPECT_EQ(Lexicon("export " + file), "READ=rIYd\nREAD=rEHd\nTessarin=tEHsAHrIHn\n");
    EXPECT_THAT(Lexicon("show " + file), HasSubstr("entries          3 of 2 words\n"));
}

TEST(LexiconCommand, SaysOfALexiconWhatInspectSays) {
    const std::string shipped = TESSARIN_SOURCE_DIR "/data/en-us.lexicon";
    const std::string said = RunTool("inspect " + shipped).output;
    EXPECT_EQ(Lexicon("show " + shipped), said);
    EXPECT_THAT(said, StartsWith("lexicon          version 2\n"
                                 "name             English (United States)\n"
                                 "language         9\n"
                                 "code page        1252\n"
                                 "flags            56\n"
                                 "comment          CMU Pronouncing Dictionary\n"
                                 "information      Made from the CMU Pronouncing Dictionary"));
    EXPECT_THAT(said, HasSubstr("\nentries          134852 of 126046 words\n"
                                "other words      decision tree of 27868 leaves, "));
    EXPECT_THAT(
        RunTool("inspect " TESSARIN_SOURCE_DIR "/fuzz/corpus/lexicon_file/rules.lexicon").output,
        HasSubstr("\nother words      9 rules, section version 4\n"));
    const ScratchFolder scratch;
    WriteFile(scratch.Path("cut.lexicon"), ReadFile(shipped).substr(0, 50000));
    const tool_run cut = RunTool("inspect " + scratch.Path("cut.lexicon"));
    EXPECT_EQ(cut.exitCode, 2);
    EXPECT_THAT(cut.errors, HasSubstr("(code 12)"));
}

TEST(LexiconCommand, LosesNothingOnTheWayThroughTheDictionarysForm) {
    const ScratchFolder scratch;
    const std::string file = scratch.Path("small.lexicon");
    const std::string words = scratch.Path("words.txt");
    const std::string dictionary = scratch.Path("dictionary.txt");
    WriteFile(words, "'EM=AHm\nA=AH\nA=EY\nTHE=DHAH\nTHE=DHIY\nUH=x\nVISION=vIHZHAHn\n");
    Lexicon("build " + file + " " + words);
    Lexicon("export " + file + " --format cmu -o " + dictionary);
    EXPECT_THAT(ReadFile(dictionary), HasSubstr("THE(2)  DH IY\n"));
    Lexicon("build " + scratch.Path("again.lexicon") + " " + dictionary);
    EXPECT_EQ(Lexicon("import " + scratch.Path("again.lexicon") + " " + dictionary),
              "0 of 7 entries added\n");
    WriteFile(words, Lexicon("export " + scratch.Path("again.lexicon")));
    EXPECT_THAT(ReadFile(words), HasSubstr("A=AH\nA=EY\nTHE=DHAH\nTHE=DHIY\n"));
}

TEST(LexiconCommand, TellsWhatIsWrong) {
    const ScratchFolder scratch;
    const std::string file = scratch.Path("small.lexicon");
    const std::string list = scratch.Path("list.txt");
    WriteFile(list, "CAT=kAEt\nDOG D AO9 G\n");
    EXPECT_THAT(RunTool("lexicon build " + file + " " + list).errors, HasSubstr("line 2"));
    EXPECT_EQ(RunTool("lexicon show " + file).exitCode, 2);
    EXPECT_EQ(RunTool("lexicon find " + list + " CAT").exitCode, 2);
    EXPECT_EQ(RunTool("lexicon").exitCode, 1);
    EXPECT_EQ(RunTool("lexicon add " + file + " word").exitCode, 1);
}

TEST(LexiconCommand, AddsNoWordThatAFileCannotHold) {
    const ScratchFolder scratch;
    const std::string file = scratch.Path("small.lexicon");
    WriteFile(file, ReadFile(TESSARIN_SOURCE_DIR "/fuzz/corpus/lexicon_file/rules.lexicon"));
    const std::string before = ReadFile(file);
    for (const char* word : {"''", "A=B", "=", "' A'", "'A\nB'"}) {
        const tool_run run = RunTool("lexicon add " + file + " " + word + " kAEt");
        EXPECT_EQ(run.exitCode, 1) << word;
        EXPECT_THAT(run.errors, HasSubstr("WORD=phonemes")) << word;
    }
    EXPECT_TRUE(ReadFile(file) == before);
}

} // namespace
