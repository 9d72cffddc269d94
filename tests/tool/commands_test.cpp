#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int kRate = 16000;

/// A tone that glides for half a second, and a second of silence.
std::vector<int16_t> Glide(double fromHz, double toHz) {
    std::vector<int16_t> samples(kRate * 3 / 2);
    double phase = 0.0;
    for (int i = 0; i < kRate / 2; ++i) {
        phase += 2 * std::numbers::pi * (fromHz + (toHz - fromHz) * 2 * i / kRate) / kRate;
        samples[static_cast<size_t>(i)] = static_cast<int16_t>(8000 * std::sin(phase));
    }
    return samples;
}

std::string Bytes(const std::vector<int16_t>& samples) {
    return {reinterpret_cast<const char*>(samples.data()), samples.size() * sizeof(samples[0])};
}

/// The samples of the demo recording.
std::string DemoSamples() {
    return ReadFile(DemoRecording()).substr(44);
}

/// The fields of a table, a list for each line.
std::vector<std::vector<std::string>> Fields(const std::string& table) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        std::vector<std::string>& row = rows.emplace_back();
        std::istringstream fields(line);
        for (std::string field; std::getline(fields, field, '\t');) {
            row.push_back(field);
        }
    }
    return rows;
}

/// Samples of a rising and a falling glide.
struct glides {
    glides() {
        WriteWav(scratch.Path("up.wav"), Glide(300, 3000));
        WriteWav(scratch.Path("down.wav"), Glide(3000, 300));
        // The same again, not quite alike.
        WriteWav(scratch.Path("up again.wav"), Glide(350, 2800));
    }
    std::string Quoted(const std::string& name) const { return "'" + scratch.Path(name) + "'"; }
    std::string Record() const {
        return "--record 'go up=" + scratch.Path("up.wav") + "' down=" + scratch.Path("down.wav") +
               " ";
    }

    ScratchFolder scratch;
};

TEST(Commands, TheTextThatIsSaidWins) {
    const ScratchFolder scratch;
    const std::string list = scratch.Path("commands.txt");
    WriteFile(list, "\xEF\xBB\xBF# what the house can do\n\n  open the garage door \r\n" +
                        ReadFile(DemoText()) + "\nlights off = l AY t s, AO f\n");
    const std::string arguments =
        "commands " + list + " " + DemoRecording() + " " + DemoRecording();
    const tool_run run = RunTool(arguments);
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const auto rows = Fields(run.output);
    ASSERT_EQ(rows.size(), 3u) << run.output;
    EXPECT_THAT(rows[0], ElementsAre("audio", "command", "score"));
    const std::string said = ReadFile(DemoText());
    const std::string text = said.substr(0, said.find_last_not_of("\r\n") + 1);
    EXPECT_THAT(rows[1], ElementsAre(DemoRecording(), text, rows[1][2]));
    EXPECT_EQ(rows[2], rows[1]);

    const std::string file = scratch.Path("result");
    const tool_run asJson = RunTool(arguments + " --format json -o " + file);
    ASSERT_EQ(asJson.exitCode, 0) << asJson.errors;
    EXPECT_EQ(asJson.output, "");
    const std::string lines = ReadFile(file);
    const json first = json::parse(lines.substr(0, lines.find('\n')));
    EXPECT_EQ(first["command"], text);
    EXPECT_NEAR(first["score"].get<double>(), std::stod(rows[1][2]), 1.0);
}

TEST(Commands, TheTextThatIsSaidLiveWins) {
    const ScratchFolder scratch;
    const std::string list = scratch.Path("commands.txt");
    WriteFile(list, "you are about to leave\nyou are about to enter an echo test\necho\n");
    const std::string sentence = DemoSamples().substr(0, 2 * kRate * 24 / 10); // to the first pause
    const std::string silence(2 * kRate, '\0');
    const tool_run run = RunTool("commands " + list + " --live", sentence + silence + sentence);
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const auto rows = Fields(run.output);
    ASSERT_EQ(rows.size(), 3u) << run.output;
    EXPECT_THAT(rows[0], ElementsAre("end_ms", "command", "score"));
    EXPECT_EQ(rows[1][1], "you are about to enter an echo test");
    EXPECT_EQ(rows[2][1], rows[1][1]);
    EXPECT_EQ(rows[2][0], "5800") << "the end of the audio ends an utterance";
}

TEST(Commands, AreFoundBySamples) {
    const glides audio;
    const std::string file = audio.scratch.Path("samples");
    // What has no name after --record is to be recognized.
    const tool_run run = RunTool("commands " + audio.Record() + audio.Quoted("up again.wav") + " " +
                                 audio.Quoted("down.wav") + " --save " + file);
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const auto rows = Fields(run.output);
    ASSERT_EQ(rows.size(), 3u) << run.output;
    EXPECT_THAT(rows[0], ElementsAre("audio", "command", "distance"));
    EXPECT_EQ(rows[1][1], "go up");
    EXPECT_GT(std::stod(rows[1][2]), 0.0);
    EXPECT_THAT(rows[2], ElementsAre(audio.scratch.Path("down.wav"), "down", "0"));

    const std::string load = "commands --load " + file + " ";
    EXPECT_EQ(RunTool(load + audio.Quoted("up again.wav") + " " + audio.Quoted("down.wav")).output,
              run.output);

    // More samples for more commands, or for one that is there.
    const tool_run more = RunTool(load + "--save " + file +
                                  " --record 'go up=" + audio.scratch.Path("up again.wav") + "'");
    ASSERT_EQ(more.exitCode, 0) << more.errors;
    EXPECT_EQ(more.output, "");
    const auto nearer = Fields(RunTool(load + audio.Quoted("up again.wav")).output);
    ASSERT_EQ(nearer.size(), 2u);
    EXPECT_THAT(nearer[1], ElementsAre(audio.scratch.Path("up again.wav"), "go up", "0"));
}

TEST(Commands, SamplesAreKeptAsTheLibraryKnowsThem) {
    const glides audio;
    const std::string file = audio.scratch.Path("samples");
    ASSERT_EQ(RunTool("commands " + audio.Record() + "--save " + file).exitCode, 0);
    const std::string content = ReadFile(file);
    uint32_t header[5]; // version, id, observations, features, floats of each
    std::memcpy(header, content.data(), sizeof(header));
    EXPECT_EQ(header[0], 0u);
    EXPECT_EQ(header[1], 1u);
    EXPECT_EQ(header[4], header[3] + 2);
    const size_t second = 20 + size_t{header[2]} * header[4] * 4;
    std::memcpy(header, content.data() + second, sizeof(header));
    EXPECT_EQ(header[1], 2u);
    const size_t names = second + 20 + size_t{header[2]} * header[4] * 4;
    ASSERT_EQ(content.substr(names), std::string("namego up\0down\0", 15));

    // What a host wrote without names is named by its ids.
    WriteFile(file, content.substr(0, names));
    const auto rows =
        Fields(RunTool("commands --load " + file + " " + audio.Quoted("down.wav")).output);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1][1], "2");

    for (const size_t size : {size_t{0}, size_t{10}, size_t{200}, second, second + 3, names - 1,
                              names + 2, names + 6, content.size() - 1}) {
        SCOPED_TRACE(size);
        WriteFile(file, content.substr(0, size));
        const tool_run run = RunTool("commands --load " + file + " " + audio.Quoted("down.wav"));
        EXPECT_EQ(run.exitCode, size == second ? 0 : 2);
        EXPECT_THAT(run.errors, HasSubstr(size == second ? "" : file));
    }
    std::string broken = content;
    broken[12] = 99; // features
    WriteFile(file, broken);
    EXPECT_EQ(RunTool("commands --load " + file + " " + audio.Quoted("down.wav")).exitCode, 2);
}

TEST(Commands, AreHeardLiveUtteranceByUtterance) {
    const glides audio;
    const std::string silence(kRate * 2, '\0');
    const std::string input =
        silence + Bytes(Glide(300, 3000)) + Bytes(Glide(3000, 300)) + Bytes(Glide(350, 2800));
    const tool_run run = RunTool("commands " + audio.Record() + "--live", input);
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const auto rows = Fields(run.output);
    ASSERT_EQ(rows.size(), 4u) << run.output;
    EXPECT_THAT(rows[0], ElementsAre("end_ms", "command", "distance"));
    const char* const names[] = {"go up", "down", "go up"};
    for (int i = 0; i < 3; ++i) {
        const int endOfTone = 1500 * (i + 1);
        EXPECT_EQ(rows[static_cast<size_t>(i) + 1][1], names[i]);
        EXPECT_NEAR(std::stoi(rows[static_cast<size_t>(i) + 1][0]), endOfTone + 350, 300);
    }
    EXPECT_EQ(RunTool("commands " + audio.Record() + "--live").output,
              "end_ms\tcommand\tdistance\n");
}

TEST(Commands, WhatCannotBeDoneIsTold) {
    const glides audio;
    const std::string list = audio.scratch.Path("list");
    WriteFile(list, "yes\nno = QQ\n");
    const std::string empty = audio.scratch.Path("empty");
    WriteFile(empty, "# nothing\n\n");
    const std::string up = audio.Quoted("up.wav");
    const struct {
        std::string arguments;
        int exitCode;
        std::string message;
    } cases[] = {{"", 1, "no commands"},
                 {list, 1, "nothing to recognize"},
                 {list + " --live " + up, 1, "takes no recordings"},
                 {list + " --save x " + up, 1, "--save needs samples"},
                 {"--record " + up, 1, "nothing to recognize"},
                 {"--record =" + audio.scratch.Path("up.wav") + " " + up, 1, "name is missing"},
                 {list + " " + up, 2, "list:2"},
                 {empty + " " + up, 2, "has no commands"},
                 {list + "none " + up, 2, "listnone"},
                 {"--record a=none.wav " + up, 2, "none.wav"},
                 {audio.Record() + "none.wav", 2, "none.wav"},
                 {"--load " + list + " " + up, 2, list}};
    for (const auto& each : cases) {
        SCOPED_TRACE(each.arguments);
        const tool_run run = RunTool("commands " + each.arguments);
        EXPECT_EQ(run.exitCode, each.exitCode);
        EXPECT_THAT(run.errors, HasSubstr(each.message));
    }
}

} // namespace
