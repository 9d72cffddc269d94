#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/run_tool.h"

namespace {

using testing::HasSubstr;

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
    EXPECT_THAT(Lexicon("prune " + file), HasSubstr("1 of 4 entries removed"));
    EXPECT_EQ(Lexicon("export " + file), "READ=rIYd\nREAD=rEHd\nTessarin=tEHsAHrIHn\n");
    EXPECT_THAT(Lexicon("show " + file), HasSubstr("entries      3\n"));
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

} // namespace
