#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

/// Two words with a pause, the first with a mark that XML and labels must not take as theirs.
constexpr const char* kRows = "start_ms\tend_ms\ttype\ttext\n0\t100\tphoneme\tx\n"
                              "100\t200\tphoneme\tNG\n200\t350\tphoneme\tr\n350\t400\tphoneme\tx\n"
                              "400\t600\tphoneme\tER\n100\t350\tword\tR&<D\n400\t600\tword\ter\n";

std::string Animate(const std::string& options, const std::string& timings = kRows) {
    const tool_run run = RunTool("animate - " + options, timings);
    EXPECT_EQ(run.exitCode, 0) << options << ": " << run.errors;
    return run.output;
}

TEST(AnnotationFiles, PhonemesAreWrittenInTheAlphabetThatIsAskedFor) {
    const struct {
        const char* alphabet;
        const char* velar;
        const char* vowel;
    } cases[] = {{"labels", "NG", "ER"},
                 {"ipa", "\u014B", "\u025D"},
                 {"arpabet", "NG", "ER"},
                 {"sampa", "N", "3`"}};
    for (const auto& [alphabet, velar, vowel] : cases) {
        SCOPED_TRACE(alphabet);
        const std::string option = std::string(" --output-alphabet ") + alphabet;
        EXPECT_THAT(Animate("--format tsv" + option),
                    HasSubstr(std::string("100\t200\tphoneme\t") + velar + "\t"));
        EXPECT_THAT(Animate("--format textgrid" + option),
                    HasSubstr(std::string("text = \"") + vowel + "\""));
        EXPECT_THAT(Animate("--format phoneme-labels" + option),
                    HasSubstr(std::string("0.400\t0.600\t") + vowel + "\n"));
        EXPECT_THAT(Animate("--format csv" + option), HasSubstr(vowel));
        const json result = json::parse(Animate("--format json" + option));
        EXPECT_EQ(result["phonemes"][1]["label"], "NG");
        EXPECT_EQ(result["phonemes"][1].value("symbol", "NG"), velar);
    }
    // What is written can be read.
    for (const char* alphabet : {"arpabet", "sampa"}) {
        const std::string again =
            Animate(std::string("--format tsv --alphabet ") +
                        (alphabet == std::string("sampa") ? "sampa" : "auto"),
                    Animate(std::string("--format tsv --output-alphabet ") + alphabet));
        EXPECT_EQ(again, Animate("--format tsv")) << alphabet;
    }
}

TEST(AnnotationFiles, LabelsOfAudacityAreOneALine) {
    EXPECT_EQ(Animate("--format word-labels"), "0.100\t0.350\tR&<D\n0.400\t0.600\ter\n");
    EXPECT_EQ(Animate("--format phoneme-labels"),
              "0.100\t0.200\tNG\n0.200\t0.350\tr\n0.400\t0.600\tER\n");
}

TEST(AnnotationFiles, ElanHasTiersThatNameTheirTimes) {
    const std::string eaf = Animate("--format eaf --output-alphabet ipa");
    EXPECT_THAT(eaf, HasSubstr("<ANNOTATION_VALUE>R&amp;&lt;D</ANNOTATION_VALUE>"));
    EXPECT_THAT(eaf, HasSubstr("<ANNOTATION_VALUE>\u025D</ANNOTATION_VALUE>"));
    EXPECT_THAT(eaf, HasSubstr("<TIME_SLOT TIME_SLOT_ID=\"ts1\" TIME_VALUE=\"100\"/>"));
    EXPECT_THAT(eaf, Not(HasSubstr("MEDIA_DESCRIPTOR"))) << "there is no recording";
}

TEST(AnnotationFiles, SmilSpeaksTheWordsOfItsPage) {
    const ScratchFolder scratch;
    Animate("-o " + scratch.Path("line.smil") + " -o " + scratch.Path("line.xhtml"));
    const std::string smil = ReadFile(scratch.Path("line.smil"));
    EXPECT_THAT(smil, HasSubstr("<text src=\"line.xhtml#w2\"/>"));
    EXPECT_THAT(smil, HasSubstr("clipBegin=\"0.400s\" clipEnd=\"0.600s\""));
    EXPECT_THAT(ReadFile(scratch.Path("line.xhtml")),
                HasSubstr("<span id=\"w1\">R&amp;&lt;D</span>\n<span id=\"w2\">er</span>"));
}

} // namespace
