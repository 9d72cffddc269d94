#include <cmath>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

using table = std::vector<std::vector<std::string>>;

table ReadTable(const std::string& text, char separator) {
    table rows;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream cells(line);
        rows.emplace_back();
        for (std::string cell; std::getline(cells, cell, separator);) {
            rows.back().push_back(cell);
        }
    }
    return rows;
}

/// A closed sound, an open one and a pause, with room for both.
constexpr const char* kMapa = "_ 200\nm 90\nAA 200\np 80\nAA 240\n_ 200\n";

std::string Animate(const std::string& options, const std::string& timings = kMapa) {
    const tool_run run = RunTool("animate - " + options, timings);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    return run.output;
}

TEST(Outputs, OneRunWritesManyFilesByTheirEndings) {
    const ScratchFolder scratch;
    const std::map<std::string, std::string> firstLines = {
        {"a.json", "{"},
        {"a.tsv", "start_ms\tend_ms\ttype\ttext\tscore\ttext_offset\ttext_length"},
        {"a.TextGrid", "File type = \"ooTextFile\""},
        {"a.VTT", "WEBVTT"},
        {"a.csv", "time_ms,AA,m,p,x"},
        {"a.visemes.csv", "time_ms,sil,PP,FF,TH,DD,kk,CH,SS,nn,RR,aa,E,ih,oh,ou"},
        {"a.vrm.csv", "time_ms,aa,ih,ou,ee,oh"},
        {"a.switches.tsv", "0.00\tX"},
        {"a.switches.json", "{"},
        {"a.xml", "<?xml version=\"1.0\" encoding=\"utf-8\"?>"},
        {"a.dat", "MohoSwitch1"},
    };
    std::string options;
    for (const auto& [name, line] : firstLines) {
        options += " -o " + scratch.Path(name);
    }
    EXPECT_EQ(Animate(options), "");
    for (const auto& [name, line] : firstLines) {
        SCOPED_TRACE(name);
        const std::string text = ReadFile(scratch.Path(name));
        EXPECT_EQ(text.substr(0, text.find('\n')), line);
    }
    EXPECT_EQ(ReadFile(scratch.Path("a.tsv")), Animate("--format tsv"));
}

TEST(Outputs, SaysWhichOutputItCannotMakeBeforeTheWork) {
    const ScratchFolder scratch;
    WriteFile(scratch.Path("bad.shapes"), "set visemes\nshapes A B\n\nAA C\n");
    const struct {
        std::string options;
        int exitCode;
        const char* message;
    } cases[] = {
        {"-o x.wav", 1, "x.wav: its extension does not select a format; name one with --format"},
        {"-o - -o - -o - --format json --format tsv", 1, "--format: give one for all outputs"},
        {"--format shapes", 1, "--format shapes: name a map of shapes with --shapes"},
        {"--shapes " + scratch.Path("bad.shapes"), 2, "bad.shapes: line 4: there is no shape C"},
        {"--shapes none.shapes", 2, "none.shapes: cannot be opened"},
        {"--gain pq=1", 1, "--gain pq=1: give PHONEMES=LEVEL"},
        {"--gain p=-1", 1, "--gain p=-1"},
        {"--strength loud", 1, "--strength loud: give subtle, normal, strong"},
        {"--strength vowels=5", 1, "--strength vowels=5"},
        {"--quantize 900-100", 1, "--quantize 900-100: give FROM-TO in milliseconds"},
    };
    for (const auto& [options, exitCode, message] : cases) {
        const tool_run run = RunTool("animate - " + options, kMapa);
        EXPECT_EQ(run.exitCode, exitCode) << options;
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, HasSubstr(message));
    }
}

TEST(Outputs, WeightsOfShapesAreThoseOfTheirPhonemes) {
    const table curves = ReadTable(Animate("--format csv"), ',');
    const table visemes = ReadTable(Animate("--format visemes"), ',');
    ASSERT_EQ(curves.size(), visemes.size());
    ASSERT_GT(curves.size(), 20u);
    const auto cell = [](const std::vector<std::string>& row, size_t column) {
        return std::stod(row.at(column));
    };
    for (size_t row = 1; row < curves.size(); ++row) {
        EXPECT_EQ(curves[row][0], visemes[row][0]);
        EXPECT_NEAR(cell(visemes[row], 2), cell(curves[row], 2) + cell(curves[row], 3), 2e-4);
        EXPECT_NEAR(cell(visemes[row], 11), cell(curves[row], 1), 1e-4) << "aa";
        double sum = 0;
        for (size_t column = 1; column < visemes[row].size(); ++column) {
            sum += cell(visemes[row], column);
        }
        EXPECT_NEAR(sum, 1.0, 2e-3);
    }
}

TEST(Outputs, AUsersMapTakesThePlaceOfTheBuiltInOne) {
    const ScratchFolder scratch;
    WriteFile(scratch.Path("two.shapes"), "# mine\nset switches\nshapes shut open\nclosed shut\n"
                                          "rest shut\nAA open\nm shut\np shut\n");
    const std::string mine = "--shapes " + scratch.Path("two.shapes");
    EXPECT_THAT(Animate(mine + " --format switches-tsv"),
                AllOf(HasSubstr("\topen\n"), testing::Not(HasSubstr("D"))));
    EXPECT_THAT(Animate(mine + " --format shapes"), testing::StartsWith("time_ms,shut,open\n"));
    EXPECT_THAT(Animate(mine + " --format visemes"), testing::StartsWith("time_ms,sil,PP"));
}

TEST(Outputs, SwitchesCloseTheLipsAndHold) {
    std::vector<std::string> shapes;
    for (const auto& row : ReadTable(Animate("--format switches-tsv"), '\t')) {
        shapes.push_back(row.at(1));
    }
    EXPECT_THAT(shapes, ElementsAre("X", "A", "D", "A", "D", "X", "X"));

    const std::string fast = "_ 100\ns 40\nAA 40\ns 40\nIY 40\np 40\ns 40\nAA 40\n_ 100\n";
    const table held = ReadTable(Animate("--format switches-tsv --hold 130", fast), '\t');
    bool isClosed = false;
    for (size_t i = 1; i + 1 < held.size(); ++i) {
        const double lasted = std::stod(held[i][0]) - std::stod(held[i - 1][0]);
        const bool closes = held[i][1] == "A";
        EXPECT_TRUE(lasted >= 0.125 || closes) << held[i][0];
        isClosed = isClosed || closes;
    }
    EXPECT_TRUE(isClosed) << "no hold suppresses closed lips";
}

TEST(Outputs, SwitchesEndWithTheRecordingNotWithItsLastFrame) {
    const auto timings = [](int durationMs) {
        return R"({"phonemes": [{"label": "AA", "start_ms": 0, "end_ms": 1003}], "duration_ms": )" +
               std::to_string(durationMs) + "}";
    };
    for (const std::string fps : {"24", "30", "60"}) {
        SCOPED_TRACE(fps);
        const auto write = [&](const std::string& format, int durationMs) {
            return Animate("--fps " + fps + " --format switches-" + format, timings(durationMs));
        };
        EXPECT_THAT(write("tsv", 1003), testing::EndsWith("\n1.003\tX\n"));
        EXPECT_THAT(write("xml", 1003),
                    AllOf(HasSubstr("<duration>1.003</duration>"), HasSubstr("end=\"1.003\"")));
        const json document = json::parse(write("json", 1003));
        EXPECT_EQ(document["metadata"]["duration"], 1.003);
        EXPECT_EQ(document["mouthCues"].back()["end"], 1.003);

        double before = 0.0;
        for (const auto& row : ReadTable(write("tsv", 1000), '\t')) {
            EXPECT_TRUE(std::stod(row[0]) > before || row[0] == "0.00") << row[0];
            before = std::stod(row[0]);
        }
        EXPECT_EQ(before, 1.0);
    }
    // A length that the phonemes contradict is not believed.
    EXPECT_THAT(Animate("--format switches-tsv", R"({"phonemes": [
        {"label": "AA", "start_ms": 0, "end_ms": 500}, {"label": "m", "start_ms": 500,
        "end_ms": 900}], "duration_ms": 100})"),
                HasSubstr("\tA\n"));
}

TEST(Outputs, ControlsReachTheTrack) {
    const auto track = [](const std::string& options) { return json::parse(Animate(options)); };
    const json plain = track("");
    EXPECT_EQ(plain["version"], 1);
    EXPECT_NE(plain["frames"], track("--smooth")["frames"]);
    EXPECT_NE(track("--smooth")["frames"], track("--smooth --slope 0.05")["frames"]);
    EXPECT_EQ(track("--fps 10")["frames"][1]["start_ms"], 100);
    const json single = track("--max-shapes 1");
    for (const json& frame : single["frames"]) {
        EXPECT_EQ(frame["weights"].size(), 1u);
    }
    const auto weightOfM = [](const json& result) {
        double most = 0;
        for (const json& frame : result["frames"]) {
            most = std::max(most, frame["weights"].value("m", 0.0));
        }
        return most;
    };
    EXPECT_GT(weightOfM(track("--plain --gain m=1.5")), weightOfM(track("--plain")) + 0.1);
    EXPECT_LT(weightOfM(track("--strength lips=0.5")), weightOfM(plain) - 0.1);
    EXPECT_EQ(weightOfM(track("--strength subtle")), weightOfM(plain)) << "lips close fully";

    // Curves with common keys: what one curve has as a key, every curve around it has.
    const json common = track("--common-keys")["curves"];
    size_t keys = 0;
    for (const json& curve : common) {
        keys += curve["keys"].size();
    }
    EXPECT_GT(common.size(), plain["curves"].size());
    EXPECT_GT(keys, 0u);

    const json stretch = track("--quantize 300-450:1")["stretches"];
    ASSERT_EQ(stretch.size(), 1u);
    EXPECT_EQ(stretch[0]["weights"].begin().key(), "AA");
}

double WeightAt(const json& keys, double ms) {
    for (size_t i = 0; i + 1 < keys.size(); ++i) {
        const double from = keys[i][0];
        const double to = keys[i + 1][0];
        if (ms >= from && ms <= to) {
            const double share = to > from ? (ms - from) / (to - from) : 0.0;
            return keys[i][1].get<double>() * (1 - share) + keys[i + 1][1].get<double>() * share;
        }
    }
    return 0.0;
}

TEST(Outputs, ReducedCurvesStayWithinTheTolerance) {
    const std::string options = "--fps 60 --smooth";
    const json all = json::parse(Animate(options))["curves"];
    const json reduced = json::parse(Animate(options + " --tolerance 0.05"))["curves"];
    ASSERT_EQ(all.size(), reduced.size());
    size_t keys = 0;
    size_t keptKeys = 0;
    for (size_t i = 0; i < all.size(); ++i) {
        keys += all[i]["keys"].size();
        keptKeys += reduced[i]["keys"].size();
        for (const json& key : all[i]["keys"]) {
            EXPECT_NEAR(WeightAt(reduced[i]["keys"], key[0]), key[1], 0.0502) << all[i]["label"];
        }
    }
    EXPECT_LT(keptKeys, keys * 3 / 4);
    EXPECT_EQ(RunTool("animate - --tolerance 0.1 --common-keys", kMapa).exitCode, 1);
}

TEST(Outputs, CaptionsEndWithSentencesAndPauses) {
    const std::string rows = "start_ms\tend_ms\ttype\ttext\n"
                             "0\t300\tphoneme\tAH\n"
                             "0\t300\tword\tone\n300\t600\tword\tR&D\n1400\t1600\tword\tthree\n";
    EXPECT_EQ(Animate("--format srt", rows), "1\n00:00:00,000 --> 00:00:01,000\none R&D\n\n"
                                             "2\n00:00:01,400 --> 00:00:01,600\nthree\n");
    EXPECT_EQ(Animate("--format vtt", rows),
              "WEBVTT\n\n00:00:00.000 --> 00:00:01.000\none <00:00:00.300>R&amp;D\n\n"
              "00:00:01.400 --> 00:00:01.600\nthree\n");
}

struct caption_line {
    std::string times;
    std::string text;
};

std::vector<caption_line> ReadSrt(const std::string& srt) {
    std::vector<caption_line> captions;
    std::istringstream lines(srt);
    for (std::string number, empty; std::getline(lines, number); std::getline(lines, empty)) {
        captions.emplace_back();
        std::getline(lines, captions.back().times);
        std::getline(lines, captions.back().text);
    }
    return captions;
}

/// The lines of a text whose words are 300 ms long and follow each other.
std::vector<std::string> CaptionsOf(const std::string& text) {
    std::string rows = "start_ms\tend_ms\ttype\ttext\n0\t300\tphoneme\tAH\n";
    std::istringstream words(text);
    int ms = 0;
    for (std::string word; words >> word; ms += 300) {
        rows += std::to_string(ms) + "\t" + std::to_string(ms + 300) + "\tword\t" + word + "\n";
    }
    std::vector<std::string> lines;
    for (const caption_line& each : ReadSrt(Animate("--format srt", rows))) {
        lines.push_back(each.text);
    }
    return lines;
}

TEST(Outputs, CaptionsBreakWhereASpeakerWould) {
    const std::vector<std::vector<std::string>> cases = {
        // no word is left alone, and lines are about even
        {"The quick brown fox jumped", "over the lazy sleepy dog."},
        {"If you want to come with us tomorrow,", "tell her before she goes to bed."},
        {"He told me about a house", "which nobody had seen for many years."},
        // a title's full stop ends nothing, and its name follows on the line
        {"We will never hear anything again", "of Mr. Featherstonehaugh Cholmondeley."},
        // sentences stay apart unless one is too short to read
        {"Come over here now.", "Do not be afraid."},
        {"Oh no! Wait for me."},
        // curled apostrophes, and letters of several bytes
        {"Nobody in this whole town believes", "they\xE2\x80\x99re even older than that."},
        {"\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9 \xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9"
         " \xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9 \xC3\xA9\xC3\xA9\xC3\xA9"},
        {std::string(50, 'a'), "is longer than any line."},
    };
    for (const std::vector<std::string>& lines : cases) {
        std::string text;
        for (const std::string& line : lines) {
            text += line + " ";
        }
        EXPECT_EQ(CaptionsOf(text), lines);
    }
}

TEST(Outputs, ShortCaptionsStayWhileNothingFollows) {
    const std::string rows = "start_ms\tend_ms\ttype\ttext\n0\t9000\tphoneme\tAH\n"
                             "0\t300\tword\tone\n1400\t1600\tword\ttwo\n"
                             "2300\t9000\tword\tthree\n9650\t9700\tword\tfour\n";
    std::vector<std::string> times;
    for (const caption_line& each : ReadSrt(Animate("--format srt", rows))) {
        times.push_back(each.times);
    }
    EXPECT_THAT(times,
                ElementsAre("00:00:00,000 --> 00:00:01,000", "00:00:01,400 --> 00:00:02,300",
                            "00:00:02,300 --> 00:00:09,000", "00:00:09,650 --> 00:00:09,700"));
}

TEST(Outputs, CaptionsOfATextHaveItsMarks) {
    for (const char* const options : {"", "--literal"}) {
        SCOPED_TRACE(options);
        const tool_run run =
            RunTool("align " TESSARIN_SOURCE_DIR "/data/demo/echo-test.wav --format srt " +
                        std::string(options) + " --text-file -",
                    "You are - about to enter an echo-test; in this mode everything "
                    "you say will be repeated back.");
        std::vector<std::string> lines;
        for (const caption_line& each : ReadSrt(run.output)) {
            lines.push_back(each.text);
        }
        EXPECT_EQ(lines.front().substr(0, 9), "You are -") << run.errors;
        EXPECT_THAT(lines, testing::Contains(HasSubstr("an echo-test;")));
    }
}

TEST(Outputs, TextGridsHaveNoGapsAndDoubleTheirQuotes) {
    const std::string rows = "start_ms\tend_ms\ttype\ttext\n100\t300\tphoneme\tAH\n"
                             "300\t400\tphoneme\tb\n150\t400\tword\tso \"called\"\n";
    const std::string grid = Animate("--format textgrid", rows);
    EXPECT_THAT(grid, HasSubstr("text = \"so \"\"called\"\"\""));
    EXPECT_THAT(grid, HasSubstr("intervals: size = 2"));
    EXPECT_THAT(grid, HasSubstr("intervals: size = 3"));
}

TEST(Outputs, AreWrittenWhereNothingCanStandBesideAndKeepLinks) {
    namespace fs = std::filesystem;
    const ScratchFolder scratch;
    // No file can be called after one of the longest name.
    const std::string track = scratch.Path(std::string(251, 'w') + ".tsv");
    const std::string lexicon = scratch.Path(std::string(247, 'w') + ".lexicon");
    const std::string said = "written in place, since its folder takes no new file";
    const auto animate = [](const std::string& path) {
        const tool_run run = RunTool("animate - -o " + path, kMapa);
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        return run.errors;
    };
    EXPECT_EQ(animate(track), "");
    EXPECT_THAT(animate(track), HasSubstr(said));
    WriteFile(lexicon, ReadFile(TESSARIN_SOURCE_DIR "/fuzz/corpus/lexicon_file/rules.lexicon"));
    const tool_run add = RunTool("lexicon add " + lexicon + " CAT kAEt");
    EXPECT_EQ(add.exitCode, 0);
    EXPECT_THAT(add.errors, HasSubstr(said));
    EXPECT_EQ(RunTool("lexicon find " + lexicon + " CAT").output, "CAT=kAEt\n");

    fs::create_symlink("made.tsv", scratch.Path("link.tsv"));
    EXPECT_EQ(animate(scratch.Path("link.tsv")), "");
    EXPECT_TRUE(fs::is_symlink(scratch.Path("link.tsv")));
    fs::create_hard_link(scratch.Path("made.tsv"), scratch.Path("twin.tsv"));
    WriteFile(scratch.Path("made.tsv"), "old");
    EXPECT_EQ(animate(scratch.Path("made.tsv")), "");
    EXPECT_EQ(ReadFile(scratch.Path("twin.tsv")), ReadFile(track));

    WriteFile(scratch.Path("timings"), kMapa);
    const std::string toStdout =
        "animate " + scratch.Path("timings") + " --format tsv -o /dev/stdout";
    RunTool(toStdout + " | cat >" + scratch.Path("piped") + "; true");
    EXPECT_EQ(ReadFile(scratch.Path("piped")), ReadFile(track)) << "a pipe";
    EXPECT_EQ(RunTool(toStdout).output, ReadFile(track)) << "a file";
}

} // namespace
