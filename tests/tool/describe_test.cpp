#include <cstdio>
#include <sstream>

#include <gmock/gmock.h>

#include "tool/run_tool.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// What bash offers for the last word of `line` when it has read the tool's completion.
std::string CompleteInBash(const ScratchFolder& scratch, const std::string& line) {
    const std::string script = scratch.Path("complete.bash");
    WriteFile(script, RunTool("describe bash").output + "COMP_WORDS=(" + line +
                          ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_tessarin\n"
                          "echo \"${COMPREPLY[*]}\"\n");
    FILE* shell = popen(("bash " + script + " 2>&1").c_str(), "r");
    std::string offered;
    for (int c; shell != nullptr && (c = std::fgetc(shell)) != EOF;) {
        offered += static_cast<char>(c);
    }
    EXPECT_EQ(shell == nullptr ? -1 : pclose(shell), 0);
    return offered;
}

TEST(Describe, BashCompletesCommandsOptionsAndListedValues) {
    const ScratchFolder scratch;
    EXPECT_EQ(CompleteInBash(scratch, "tessarin transc"), "transcribe\n");
    EXPECT_THAT(CompleteInBash(scratch, "tessarin lexicon ''"),
                AllOf(HasSubstr("find"), HasSubstr("prune"), Not(HasSubstr("align"))));
    EXPECT_EQ(CompleteInBash(scratch, "tessarin lexicon export --form"), "--format\n");
    EXPECT_EQ(CompleteInBash(scratch, "tessarin lexicon export --format ''"), "words cmu\n");
    EXPECT_EQ(CompleteInBash(scratch, "tessarin align a.wav --model ''"), "\n")
        << "bash goes on with files by itself";
}

TEST(Describe, ManualTellsOfEachCommandThatTheHelpNames) {
    const std::string manual = RunTool("describe man").output;
    std::istringstream help(RunTool("--help").output);
    int numCommands = 0;
    for (std::string line; std::getline(help, line) && line != "Subcommands:";) {
    }
    for (std::string name; help >> name; ++numCommands) {
        std::string rest;
        std::getline(help, rest);
        EXPECT_THAT(manual, HasSubstr(".SS \"tessarin " + name));
    }
    EXPECT_GE(numCommands, 5);
    EXPECT_THAT(manual, AllOf(HasSubstr("\\fB\\-\\-fps\\fR"), Not(HasSubstr("describe"))));
}

} // namespace
