#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::UnorderedElementsAre;

constexpr const char* kFirst = "You are about to enter an echo test.";

/// A folder of short recordings to work on, and one for what is made of them.
class Batch : public testing::Test {
protected:
    void SetUp() override {
        const std::vector<int16_t> demo = SamplesOf(ReadFile(DemoRecording()));
        constexpr size_t kFirstSentence = 2 * 16000 + 8000;
        line.assign(demo.begin(), demo.begin() + kFirstSentence);
    }

    std::string In(const std::string& name) const { return scratch.Path("in/" + name); }
    std::string Out(const std::string& name) const { return scratch.Path("out/" + name); }

    void Put(const std::string& name, const std::string& content) const {
        fs::create_directories(fs::path(In(name)).parent_path());
        WriteFile(In(name), content);
    }
    void PutLine(const std::string& name) const {
        fs::create_directories(fs::path(In(name)).parent_path());
        WriteWav(In(name), line);
    }

    /// The report by the names of its lines.
    std::map<std::string, json> Report(const std::string& path) const {
        std::map<std::string, json> report;
        std::istringstream lines(ReadFile(path));
        for (std::string text; std::getline(lines, text);) {
            const json entry = json::parse(text);
            EXPECT_TRUE(report.emplace(entry.at("name"), entry).second);
        }
        return report;
    }

    /// Runs it over what was put, in the form that `more` has after the input.
    std::map<std::string, json> Run(const std::string& input, const std::string& more,
                                    int exitCode) const {
        const tool_run run =
            RunTool("batch " + input + " --out " + scratch.Path("out") + " -q " + more);
        EXPECT_EQ(run.exitCode, exitCode) << run.errors;
        return Report(Out("report.jsonl"));
    }

    std::string Folder() const { return scratch.Path("in"); }

    const ScratchFolder scratch;
    std::vector<int16_t> line; ///< the first sentence of the demo
};

TEST_F(Batch, AFolderBecomesWhatAlignAndRecognizeMakeOfItsRecordings) {
    PutLine("act1/one.wav");
    Put("act1/one.txt", kFirst);
    PutLine("act2/one.wav");
    Put("act2/one.LAB", kFirst);
    PutLine("heard.wav");
    const auto report = Run(Folder(), "--format json --format srt --format smil --jobs 2", 0);
    ASSERT_EQ(report.size(), 3u);
    const std::string one = In("act1/one");
    EXPECT_EQ(ReadFile(Out("act1/one.json")),
              RunTool("align " + one + ".wav -f " + one + ".txt").output);
    EXPECT_EQ(ReadFile(Out("act1/one.srt")),
              RunTool("align " + one + ".wav --format srt -f " + one + ".txt").output);
    const std::string smil = ReadFile(Out("act1/one.smil")); // refers to files from where it is
    RunTool("align " + one + ".wav -f " + one + ".txt -o " + Out("act1/one.smil"));
    EXPECT_EQ(smil, ReadFile(Out("act1/one.smil")));
    EXPECT_EQ(ReadFile(Out("heard.json")), RunTool("recognize " + In("heard.wav")).output);
    const json& entry = report.at("act1/one");
    EXPECT_EQ(entry.at("verdict"), "good");
    EXPECT_EQ(entry.at("words"), 8);
    EXPECT_EQ(entry.at("text"), kFirst);
    EXPECT_EQ(entry.at("outputs"), (json{"act1/one.json", "act1/one.srt", "act1/one.smil"}));
    EXPECT_GT(entry.at("level_db"), -40.0);
    EXPECT_EQ(entry.at("duration_ms"), 2500);
    EXPECT_EQ(report.at("act2/one").at("verdict"), "good"); // its text was found, too
    EXPECT_FALSE(report.at("heard").contains("verdict"));
    EXPECT_THAT(ReadFile(Out("report.html")), HasSubstr("act1/one.json"));
}

TEST_F(Batch, WhatIsDamagedIsReportedAndStopsNothing) {
    PutLine("good.wav");
    Put("good.txt", kFirst);
    Put("empty.wav", "");
    Put("prose.wav", "This is not a recording.");
    Put("cut.wav", ReadFile(In("good.wav")).substr(0, 44));
    PutLine("blank.wav");
    Put("blank.txt", " \n");
    PutLine("binary.wav");
    Put("binary.txt", std::string("a\0b\0\0\0c", 7));
    PutLine("grid.wav");
    Put("grid.TextGrid", "not a grid");
    Put("list.csv", "audio,text,options\n"
                    "good.wav,,\n"
                    "gone.wav,Hello.,\n"
                    "grid.wav,Hello there.,--beam 7\n");
    const auto report = Run(Folder(), "", 3);
    const std::map<std::string, std::string> reasons = {
        {"empty", "empty file"},      {"prose", "text file"},   {"cut", "no samples"},
        {"blank", "is empty"},        {"binary", "plain text"}, {"gone", "gone.wav"},
        {"grid", "options --beam 7"},
    };
    for (const auto& [name, reason] : reasons) {
        SCOPED_TRACE(name);
        EXPECT_EQ(report.at(name).at("status"), "failed");
        EXPECT_THAT(std::string(report.at(name).at("reason")), HasSubstr(reason));
        EXPECT_FALSE(fs::exists(Out(name + ".json")));
    }
    EXPECT_EQ(report.at("good").at("status"), "done");
    EXPECT_EQ(report.size(), reasons.size() + 1);
}

TEST_F(Batch, HearsLinesWithoutATextAsTheirVoicesAsk) {
    PutLine("a.wav");
    Put("l.csv", "audio,name,options,text\n"
                 "a.wav,on,--adapt on,\n"
                 "a.wav,off,--adapt off,\n"
                 "a.wav,usual,,\n"
                 "a.wav,said,--adapt on,You are about to enter an echo test.\n");
    Run(In("l.csv"), "--adapt on", 0);
    const std::string fitted = ReadFile(Out("on.json"));
    EXPECT_EQ(fitted, RunTool("recognize --adapt on " + In("a.wav")).output);
    EXPECT_THAT(fitted, HasSubstr("\"adaptation\""));
    EXPECT_EQ(ReadFile(Out("usual.json")), fitted);
    for (const char* name : {"off.json", "said.json"}) {
        EXPECT_THAT(ReadFile(Out(name)), Not(HasSubstr("\"adaptation\"")));
    }
}

TEST_F(Batch, RefusesBeforeTheWorkWhatNoLineCanHave) {
    PutLine("a.wav");
    Put("other.gltf", R"({"asset":{"version":"2.0"}})");
    for (const std::string& bad :
         {std::string("--pages 2"), std::string("--match 1"), "--into " + In("other.gltf"),
          std::string("--tolerance 0.1 --common-keys")}) {
        const tool_run run =
            RunTool("batch " + Folder() + " --out " + scratch.Path("out") + " " + bad);
        EXPECT_EQ(run.exitCode, 1) << bad << run.errors;
        EXPECT_FALSE(fs::exists(Out("a.json"))) << bad;
    }
}

TEST_F(Batch, ListsSayTheSameInEachOfTheirForms) {
    PutLine("a.wav");
    PutLine("b.wav");
    Put("own.txt", kFirst);
    const std::string text = std::string(kFirst);
    Put("l.csv", "Name,Audio,Text,text_file,speaker,note\r\n"
                 "first,a.wav,\"You are about,\n to enter an \"\"echo\"\" test.\",,Ann,x\r\n"
                 "second,b.wav,,own.txt,,\r\n");
    Put("l.tsv", "audio\tname\ttext\ttext_file\tspeaker\n"
                 "a.wav\tfirst\tYou are about, to enter an \"echo\" test.\t\tAnn\n"
                 "b.wav\tsecond\t\town.txt\n");
    Put("l.jsonl", json{{"audio", "a.wav"},
                        {"name", "first"},
                        {"speaker", "Ann"},
                        {"text", "You are about, to enter an \"echo\" test."}}
                           .dump() +
                       "\n\n" +
                       json{{"file", "b.wav"}, {"id", "second"}, {"text_file", "own.txt"}}.dump() +
                       "\n");
    for (const char* list : {"l.csv", "l.tsv", "l.jsonl"}) {
        SCOPED_TRACE(list);
        const auto report = Run(In(list), "--format tsv", 0);
        ASSERT_EQ(report.size(), 2u);
        EXPECT_EQ(report.at("first").at("speaker"), "Ann");
        EXPECT_EQ(report.at("first").at("words"), 8);
        EXPECT_EQ(report.at("second").at("text"), kFirst);
        EXPECT_EQ(report.at("second").at("verdict"), "good");
    }
    Put("bad.csv", "audio,text\na.wav,\"never closed\nb.wav,x\n");
    EXPECT_THAT(std::string(Run(In("bad.csv"), "", 3).at("line-1").at("reason")),
                HasSubstr("line 2: quotes"));
    Put("none.csv", "recording,text\na.wav,x\n");
    EXPECT_THAT(RunTool("batch " + In("none.csv") + " --out " + scratch.Path("out")).errors,
                HasSubstr("names no column audio"));
}

TEST_F(Batch, NoTwoLinesShareAnOutput) {
    PutLine("a.wav");
    PutLine("a.aiff.wav");
    PutLine("A.flac"); // whatever is in it
    Put("l.jsonl", R"({"audio":"a.wav"})"
                   "\n"
                   R"({"audio":"A.flac"})"
                   "\n"
                   R"({"audio":"a.wav","name":"b"})"
                   "\n"
                   R"({"audio":"a.wav","name":"B"})"
                   "\n"
                   R"({"audio":"a.wav","name":"../c"})"
                   "\n");
    const auto report = Run(In("l.jsonl"), "", 3);
    EXPECT_EQ(report.at("a.wav").at("outputs"), json{"a.wav.json"});
    EXPECT_EQ(report.at("A.flac").at("outputs"), json{"A.flac.json"});
    EXPECT_EQ(report.at("b").at("outputs"), json{"b.json"});
    EXPECT_THAT(std::string(report.at("B-line-4").at("reason")), HasSubstr("line 3"));
    EXPECT_THAT(std::string(report.at("line-5").at("reason")), HasSubstr("../c"));
    EXPECT_EQ(RunTool("batch " + Folder() + " --out " + Folder()).exitCode, 1);
}

TEST_F(Batch, ResumeMakesAgainWhatIsNotThereOrWouldDiffer) {
    for (const char* name : {"a", "b", "c", "d"}) {
        PutLine(std::string(name) + ".wav");
        Put(std::string(name) + ".txt", kFirst);
    }
    Run(Folder(), "", 0);
    const std::string report = ReadFile(Out("report.jsonl"));
    const std::string whole = ReadFile(Out("b.json"));
    const auto ageOf = [this](const char* name) { return fs::last_write_time(Out(name)); };
    const auto kept = ageOf("a.json");
    fs::remove(Out("b.json"));
    WriteFile(Out("c.json"), std::string(ReadFile(Out("c.json")).size(), '\0'));
    Put("d.txt", "You are about to enter.");
    // The end of the journal is what a killed process leaves.
    WriteFile(Out("journal.jsonl"), ReadFile(Out("journal.jsonl")) + "{\"line\":2,\"na");
    Run(Folder(), "--resume", 0);
    EXPECT_EQ(ageOf("a.json"), kept);
    EXPECT_EQ(ReadFile(Out("b.json")), whole);
    EXPECT_THAT(ReadFile(Out("c.json")), HasSubstr("phonemes"));
    EXPECT_NE(Report(Out("report.jsonl")).at("d").at("verdict"), "good");
    Put("d.txt", kFirst);
    Run(Folder(), "--resume", 0);
    EXPECT_EQ(ReadFile(Out("report.jsonl")), report);
    EXPECT_EQ(ageOf("a.json"), kept);
    Run(Folder(), "--resume --fps 24", 0); // all would differ
    EXPECT_NE(ageOf("a.json"), kept);
}

TEST_F(Batch, ShardsAreTogetherTheWhole) {
    for (const char* name : {"a", "b", "c", "d", "e", "f"}) {
        PutLine(std::string(name) + ".wav");
        Put(std::string(name) + ".txt", kFirst);
    }
    Put("f.wav", "");
    const auto whole = Run(Folder(), "", 3);
    const std::string report = ReadFile(Out("report.jsonl"));
    const std::string three = " --out " + scratch.Path("three") + " -q ";
    std::set<std::string> seen;
    for (int k = 1; k <= 3; ++k) {
        if (k == 3) {
            const tool_run early = RunTool("batch --merge " + scratch.Path("three"));
            EXPECT_EQ(early.exitCode, 3);
            EXPECT_THAT(early.errors, HasSubstr("shard 3/3"));
        }
        RunTool("batch " + Folder() + three + "--shard " + std::to_string(k) + "/3");
        for (const auto& [name, entry] :
             Report(scratch.Path("three/report-" + std::to_string(k) + "-of-3.jsonl"))) {
            EXPECT_TRUE(seen.insert(name).second);
        }
    }
    EXPECT_EQ(seen.size(), whole.size());
    const tool_run merged =
        RunTool("batch --merge " + scratch.Path("three") + " --out " + scratch.Path("three"));
    EXPECT_EQ(merged.exitCode, 3); // f is still damaged
    EXPECT_THAT(merged.errors, Not(HasSubstr("no report of shard")));
    EXPECT_EQ(ReadFile(scratch.Path("three/report.jsonl")), report);
    RunTool("batch --merge " + scratch.Path("three") + " --out " + scratch.Path("all"));
    EXPECT_EQ(Report(scratch.Path("all/report.jsonl")).at("a").at("outputs"),
              json{"../three/a.json"});
    for (const char* bad : {"0/3", "4/3", "1", "1/0", "x"}) {
        EXPECT_EQ(RunTool("batch " + Folder() + three + "--shard " + bad).exitCode, 1) << bad;
    }
}

TEST_F(Batch, WordsThatTheLexiconLacksAreCorrectedForTheirLinesAlone) {
    PutLine("plain.wav");
    Put("plain.txt", kFirst);
    PutLine("odd.wav");
    Put("odd.txt", "You are about to enter an ekko test.");
    const auto report = Run(Folder(), "--pages flagged", 0);
    ASSERT_TRUE(report.at("odd").contains("unknown"));
    EXPECT_EQ(report.at("odd").at("unknown").at(0).at("word"), "ekko");
    EXPECT_FALSE(report.at("plain").contains("unknown"));
    EXPECT_THAT(ReadFile(Out("unknown-words.txt")), HasSubstr("\nEKKO="));
    // Only what is to be looked at has a page.
    EXPECT_EQ(report.at("odd").at("page"), "pages/odd.html");
    EXPECT_THAT(ReadFile(Out("pages/odd.html")), HasSubstr("<html"));
    EXPECT_FALSE(fs::exists(Out("pages/plain.html")));
    const auto kept = fs::last_write_time(Out("plain.json"));
    Put("own-words.txt", "EKKO=EHkOW\n");
    const auto again = Run(Folder(), "--only words --words " + In("own-words.txt"), 0);
    EXPECT_FALSE(again.at("odd").contains("unknown"));
    EXPECT_EQ(again.at("plain").at("verdict"), "good");
    EXPECT_EQ(fs::last_write_time(Out("plain.json")), kept);
    EXPECT_EQ(
        RunTool("batch " + Folder() + " --out " + scratch.Path("out") + " --only odd").exitCode,
        1); // neither a file nor a state
}

} // namespace
