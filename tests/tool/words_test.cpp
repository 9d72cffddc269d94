#include <algorithm>
#include <string>

#include <gmock/gmock.h>

#include "tool/run_tool.h"

namespace {

using testing::HasSubstr;

/// The phonemes of the first word of a text, with further arguments.
std::string PhonemesOf(const std::string& text, const std::string& arguments) {
    const tool_run run = RunTool("transcribe --text '" + text + "' " + arguments);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    const size_t line = run.output.find('\n') + 1;
    const size_t end = run.output.find('\n', line);
    const size_t tab = run.output.rfind('\t', end);
    return run.output.substr(tab + 1, end - tab - 1);
}

TEST(UserWords, CountInPlaceOfTheLexiconsInTheirOwnOrder) {
    const ScratchFolder scratch;
    const std::string words = scratch.Path("words.txt");
    WriteFile(words,
              "tomato=tOWmAAtOW \r\nNVIDY(2)  N V IH1 D IY\nTomato=tAHmEYtOW\nzo\xC3\xAB=zOW\n");
    const std::string text = scratch.Path("lexicon.txt");
    WriteFile(text, "TOMATO=t\nTOMATO=m\nROW=rOW\n");
    for (const std::string& arguments :
         {"--words " + words, "--words " + words + " --lexicon " + text}) {
        SCOPED_TRACE(arguments);
        EXPECT_EQ(PhonemesOf("Tomato", arguments), "tOWmAAtOW|tAHmEYtOW");
        EXPECT_EQ(PhonemesOf("Zo\xC3\xAB", arguments), "zOW");
        EXPECT_EQ(PhonemesOf("Nvidy", arguments), "nvIHdIY");
    }
    EXPECT_EQ(PhonemesOf("tomato", "--lexicon " + text), "t|m");
    WriteFile(words, "tomato=tOW\n");
    EXPECT_EQ(PhonemesOf("tomato", "--lexicon " + text + " --words " + words), "tOW")
        << "not a neighbour of what the text begins with";
    EXPECT_EQ(PhonemesOf("tomato", ""), "tAHmEYtOW|tAHmAAtOW");
}

TEST(UserWords, AreRefusedWithTheirPlaceWhenTheyAreNoPronunciations) {
    const ScratchFolder scratch;
    const std::string words = scratch.Path("words.txt");
    WriteFile(words, "ROW=rOW\n\nHELLO=hello\n");
    const tool_run run = RunTool("transcribe --text a --words " + words);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, HasSubstr(words + ": line 3: hello are not phonemes"));
    EXPECT_EQ(RunTool("transcribe --text a --words " + scratch.Path("none")).exitCode, 2);
}

TEST(UserWords, AreWarnedOfWhenNoTextAsksForThem) {
    const ScratchFolder scratch;
    const std::string words = scratch.Path("words.txt");
    const std::string text = scratch.Path("lexicon.txt");
    WriteFile(words, "Zo\xC3\xAB=zOW\nCoca-Cola=kOWk\nO'Brian's=OWb\nNew York=nyUW\n");
    WriteFile(text, "ROW=rOW\n");
    for (const std::string& lexicon : {std::string(), " --lexicon " + text}) {
        const tool_run run = RunTool("transcribe --text O\\'Brian\\'s --words " + words + lexicon);
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_THAT(run.output, HasSubstr("OWb"));
        EXPECT_THAT(run.errors, HasSubstr("line 2: Coca-Cola changes nothing"));
        EXPECT_THAT(run.errors, HasSubstr("line 4: New York changes nothing"));
        EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 2) << run.errors;
    }
}

TEST(LexiconOption, TellsALexiconFileThatIsBrokenFromAText) {
    const ScratchFolder scratch;
    const std::string file = scratch.Path("words.lexicon");
    WriteFile(file, "TCID\2");
    EXPECT_THAT(RunTool("transcribe --text a --lexicon " + file).errors, HasSubstr("(code 21)"));
    WriteFile(file, std::string("TCID\2\0E", 7));
    EXPECT_THAT(RunTool("transcribe --text a --lexicon " + file).errors, HasSubstr("(code 12)"));
}

} // namespace
