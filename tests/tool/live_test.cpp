#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

using json = nlohmann::json;

/// The samples of the demo recording, without its header.
std::string DemoSamples() {
    return ReadFile(DemoRecording()).substr(44);
}

struct heard {
    explicit heard(const std::string& output) {
        std::istringstream lines(output);
        for (std::string text; std::getline(lines, text);) {
            const json line = json::parse(text);
            EXPECT_EQ(line["start_ms"], endMs);
            endMs = line["end_ms"];
            for (const json& phoneme : line["phonemes"]) {
                EXPECT_EQ(phoneme["start_ms"], phonemeEndMs); // without a gap
                phonemeEndMs = phoneme["end_ms"];
                labels.push_back(phoneme["label"]);
            }
            frames += line["frames"].size();
        }
    }

    int64_t endMs = 0;
    int64_t phonemeEndMs = 0;
    size_t frames = 0;
    std::vector<std::string> labels;
};

TEST(Live, TellsAllThatCameOnStandardInput) {
    const std::string samples = DemoSamples();
    const auto audioMs = static_cast<int64_t>(samples.size() / 32);
    for (const std::string arguments : {"", "--delay 40", "--overlap 100", "--fps 60"}) {
        SCOPED_TRACE(arguments);
        const tool_run run = RunTool("live " + arguments, samples);
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        const heard all(run.output);
        EXPECT_EQ(all.endMs, audioMs);
        EXPECT_EQ(all.phonemeEndMs, all.endMs); // the last one too
        EXPECT_NEAR(static_cast<double>(all.frames),
                    static_cast<double>(all.endMs) * (arguments == "--fps 60" ? 0.06 : 0.03), 3);
        EXPECT_GT(all.labels.size(), static_cast<size_t>(audioMs / 200));
        EXPECT_EQ(std::adjacent_find(all.labels.begin(), all.labels.end()), all.labels.end());
    }
}

TEST(Live, HearsFilesOfAnyFormat) {
    const heard fromFile(RunTool("live --speed 1000 " + DemoRecording()).output);
    const ScratchFolder scratch;
    WriteFile(scratch.Path("raw"), DemoSamples());
    const heard fromRaw(
        RunTool("live --speed 1000 --raw 16000,16,1 " + scratch.Path("raw")).output);
    EXPECT_EQ(fromFile.endMs, fromRaw.endMs);
    EXPECT_GT(fromFile.labels.size(), 50u);
    const tool_run visemes =
        RunTool("live --format visemes --raw 8000,8,2", std::string(32001, 'x'));
    EXPECT_EQ(visemes.exitCode, 0) << visemes.errors;
    EXPECT_EQ(visemes.output.substr(0, 15), "time_ms,sil,PP,");
    EXPECT_NE(visemes.output.find("\n33,"), std::string::npos);
    EXPECT_GT(std::count(visemes.output.begin(), visemes.output.end(), '\n'), 55);
}

TEST(Live, EndsCleanly) {
    EXPECT_EQ(RunTool("live", "").exitCode, 0);
    EXPECT_EQ(RunTool("live --raw 16000,12,1").exitCode, 1);
    EXPECT_EQ(RunTool("live --raw 16000,16").exitCode, 1);
    EXPECT_EQ(RunTool("live /nowhere.wav").exitCode, 2);
    // Ctrl-C while audio still comes: what was heard is reported, and the exit is a clean one.
    const ScratchFolder scratch;
    WriteFile(scratch.Path("raw"), DemoSamples().substr(0, 64000));
    const std::string out = scratch.Path("out");
    const std::string code = scratch.Path("code");
    const std::string command =
        "( cat " + scratch.Path("raw") + "; exec sleep 40 ) 2>/dev/null | ( " + TESSARIN_TOOL +
        " live >" + out + " & tool=$!; for i in $(seq 300); do [ -s " + out +
        " ] && break; sleep 0.1; done; sleep 1; " + "kill -INT $tool; wait $tool; echo $? >" +
        code + " ) >/dev/null 2>&1 & " + "for i in $(seq 400); do [ -s " + code +
        " ] && break; sleep 0.1; done; true";
    ASSERT_EQ(std::system(("bash -c '" + command + "'").c_str()), 0);
    EXPECT_EQ(ReadFile(code), "0\n");
    EXPECT_GE(heard(ReadFile(out)).endMs, 2000);
}

TEST(Gate, ReachesTheSamplesAndTheSearch) {
    const ScratchFolder scratch;
    const std::string out = scratch.Path("gated.wav");
    const auto before = SamplesOf(ReadFile(DemoRecording()));
    const tool_run run = RunTool("gate " + DemoRecording() + " -o " + out + " --gate -45 --ramp 0");
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const auto after = SamplesOf(ReadFile(out));
    ASSERT_EQ(after.size(), before.size());
    for (size_t i = 0; i < after.size(); ++i) {
        ASSERT_TRUE(after[i] == before[i] || after[i] == 0);
    }
    EXPECT_GT(std::count(after.begin(), after.end(), 0), 16000);
    for (const std::string gate : {"5", "x", "-30,2", "-30,", "0,-1"}) {
        SCOPED_TRACE(gate);
        EXPECT_EQ(RunTool("gate " + DemoRecording() + " -o " + out + " --gate=" + gate).exitCode,
                  1);
        EXPECT_EQ(RunTool("recognize " + DemoRecording() + " --gate=" + gate).exitCode, 1);
    }
    EXPECT_NE(RunTool("recognize -q --format tsv " + DemoRecording()).output,
              RunTool("recognize -q --format tsv --gate=-30 " + DemoRecording()).output);
}

} // namespace
