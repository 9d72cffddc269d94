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

std::vector<json> Lines(const std::string& output) {
    std::vector<json> lines;
    std::istringstream stream(output);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(json::parse(line));
    }
    return lines;
}

struct heard {
    explicit heard(const std::string& output) {
        for (const json& line : Lines(output)) {
            EXPECT_EQ(line["start_ms"], endMs);
            endMs = line["end_ms"];
            for (const json& phoneme : line["phonemes"]) {
                EXPECT_EQ(phoneme["start_ms"], phonemeEndMs); // without a gap
                phonemeEndMs = phoneme["end_ms"];
                labels.push_back(phoneme["label"]);
            }
            for (const json& frame : line["frames"]) {
                EXPECT_EQ(frame["start_ms"], frameEndMs);
                frameEndMs = frame["end_ms"];
                double sum = 0;
                for (const auto& [label, weight] : frame["weights"].items()) {
                    sum += weight.get<double>();
                }
                EXPECT_NEAR(sum, 1.0, 2e-3);
                ++frames;
            }
        }
    }

    int64_t endMs = 0;
    int64_t phonemeEndMs = 0;
    int64_t frameEndMs = 0;
    int frames = 0;
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
        EXPECT_LE(std::abs(all.frameEndMs - audioMs), 34);
        EXPECT_NEAR(all.frames,
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
    // Ctrl-C while audio still comes: what was heard is told, and the exit is a clean one.
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

/// Samples of a WAV file with a header of 44 bytes.
std::vector<int16_t> Samples(const std::string& wav) {
    std::vector<int16_t> samples((wav.size() - 44) / 2);
    std::copy_n(wav.data() + 44, samples.size() * 2, reinterpret_cast<char*>(samples.data()));
    return samples;
}

TEST(Gate, SilencesTheQuietPartsAndNothingElse) {
    const ScratchFolder scratch;
    const std::string out = scratch.Path("gated.wav");
    const auto before = Samples(ReadFile(DemoRecording()));
    const tool_run run = RunTool("gate " + DemoRecording() + " -o " + out + " --gate -45 --ramp 0");
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const auto after = Samples(ReadFile(out));
    ASSERT_EQ(after.size(), before.size());
    size_t silenced = 0;
    for (size_t i = 0; i < after.size(); ++i) {
        ASSERT_TRUE(after[i] == before[i] || after[i] == 0);
        silenced += after[i] == 0 && before[i] != 0 ? 1 : 0;
    }
    EXPECT_GT(silenced, 1600u);
    EXPECT_LT(silenced, after.size() / 2);
    EXPECT_EQ(RunTool("gate " + DemoRecording() + " -o " + out).exitCode, 0);
    for (const std::string gate : {"5", "x", "-30,2", "-30,", "0,-1"}) {
        SCOPED_TRACE(gate);
        EXPECT_EQ(RunTool("gate " + DemoRecording() + " -o " + out + " --gate=" + gate).exitCode,
                  1);
        EXPECT_EQ(RunTool("recognize " + DemoRecording() + " --gate=" + gate).exitCode, 1);
    }
    const tool_run plain = RunTool("recognize -q --format tsv " + DemoRecording());
    const tool_run gated = RunTool("recognize -q --format tsv --gate=-30 " + DemoRecording());
    EXPECT_EQ(gated.exitCode, 0);
    EXPECT_NE(plain.output, gated.output);
}

} // namespace
