#include <cmath>
#include <cstring>
#include <filesystem>
#include <numbers>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/picture.h"
#include "tool/run_tool.h"

namespace {

using testing::HasSubstr;

constexpr int kRate = 16000;

struct spectrum_picture : picture {
    /// The brightest place of a column, from 0 at the bottom of the spectrum to 1 at its top.
    double Peak(int x) const {
        constexpr int kTop = 84;
        constexpr int kRows = 320;
        int best = 0;
        for (int row = 0; row < kRows; ++row) {
            best = Brightness(x, kTop + row) > Brightness(x, kTop + best) ? row : best;
        }
        return 1.0 - static_cast<double>(best) / (kRows - 1);
    }
};

/// A second of each tone.
std::vector<int16_t> Tones(const std::vector<double>& frequencies) {
    std::vector<int16_t> samples;
    for (const double hz : frequencies) {
        for (int i = 0; i < kRate; ++i) {
            samples.push_back(
                static_cast<int16_t>(8000 * std::sin(2 * std::numbers::pi * hz * i / kRate)));
        }
    }
    return samples;
}

TEST(Spectrogram, ShowsTonesAtTheirTimesAndFrequencies) {
    const ScratchFolder scratch;
    const std::string audio = scratch.Path("tones.wav");
    WriteWav(audio, Tones({1000, 6000, 3000}));
    const tool_run run = RunTool("spectrogram " + audio + " -o - --scale 100");
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const spectrum_picture all = {ReadPng(run.output)};
    constexpr int kLeft = 44;
    EXPECT_EQ(all.width, kLeft + 300 + 18);
    const double expected[] = {1.0 / 8, 6.0 / 8, 3.0 / 8};
    for (int second = 0; second < 3; ++second) {
        EXPECT_NEAR(all.Peak(kLeft + second * 100 + 50), expected[second], 0.02);
    }

    const tool_run part =
        RunTool("spectrogram " + audio + " -o - --scale 100 --from 1500 --to 2500 --top 4000");
    const spectrum_picture middle = {ReadPng(part.output)};
    EXPECT_EQ(middle.width, kLeft + 100 + 18);
    EXPECT_NEAR(middle.Peak(kLeft + 75), 3.0 / 4, 0.02);
}

TEST(Spectrogram, DrawsTheBoundariesThatAreKnown) {
    const ScratchFolder scratch;
    const std::string audio = scratch.Path("tone.wav");
    WriteWav(audio, Tones({2000}));
    WriteFile(scratch.Path("known.json"),
              R"({"phonemes": [{"label": "AH", "start_ms": 200, "end_ms": 700}],
                  "words": [{"text": "Łódź", "start_ms": 200, "end_ms": 700}]})");
    const tool_run run = RunTool("spectrogram " + audio + " -o " + scratch.Path("out.png") +
                                 " --scale 100 --timings " + scratch.Path("known.json"));
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const spectrum_picture drawn = {ReadPng(ReadFile(scratch.Path("out.png")))};
    const int y = 84 + 10; // where the tone is silent
    EXPECT_GT(drawn.Brightness(44 + 20, y), 600);
    EXPECT_GT(drawn.Brightness(44 + 70, y), 600);
    EXPECT_LT(drawn.Brightness(44 + 45, y), 200);
}

TEST(Spectrogram, AlignsATextAndTellsWhenItIsLost) {
    const ScratchFolder scratch;
    const std::string out = scratch.Path("out.png");
    EXPECT_EQ(
        RunTool("spectrogram " + DemoRecording() + " --text-file " + DemoText() + " -o " + out)
            .exitCode,
        0);
    const spectrum_picture aligned = {ReadPng(ReadFile(out))};
    EXPECT_EQ(aligned.height, 474) << "with a row for phonemes and one for words";
    const tool_run lost = RunTool("spectrogram " + DemoRecording() + " --text-file " + DemoText() +
                                  " --to 6000 -o " + out);
    EXPECT_EQ(lost.exitCode, 2);
    EXPECT_EQ(ReadPng(ReadFile(out)).width, 44 + 1500 + 18) << "the picture is there all the same";
    EXPECT_EQ(RunTool("spectrogram " + DemoRecording() + " --text a --timings b -o c").exitCode, 1);
}

TEST(Cut, KeepsTheSamplesOfEveryChannel) {
    std::vector<int16_t> interleaved;
    for (int i = 0; i < kRate; ++i) {
        interleaved.push_back(static_cast<int16_t>(i));
        interleaved.push_back(static_cast<int16_t>(-i));
    }
    const ScratchFolder scratch;
    const std::string audio = scratch.Path("both.wav");
    WriteWav(audio, interleaved, kRate, 2);
    const std::string range = " --from 250 --to 500 -o ";
    ASSERT_EQ(RunTool("cut " + audio + range + scratch.Path("cut.wav")).exitCode, 0);
    const std::string cut = ReadFile(scratch.Path("cut.wav"));
    const std::vector<int16_t> expected(interleaved.begin() + 8000, interleaved.begin() + 16000);
    ASSERT_GT(cut.size(), expected.size() * 2);
    EXPECT_EQ(cut.substr(cut.size() - expected.size() * 2),
              std::string(reinterpret_cast<const char*>(expected.data()), expected.size() * 2));

    const tool_run second = RunTool("cut " + audio + " --channel 2" + range + "-");
    ASSERT_EQ(second.exitCode, 0);
    int16_t first = 0;
    std::memcpy(&first, second.output.data() + second.output.size() - expected.size(), 2);
    EXPECT_EQ(first, -4000);
}

TEST(Cut, TellsWhatCannotBe) {
    const ScratchFolder scratch;
    const std::string to = " -o " + scratch.Path("cut.wav");
    const tool_run behind = RunTool("cut " + DemoRecording() + " --from 99999999" + to);
    EXPECT_EQ(behind.exitCode, 2);
    EXPECT_THAT(behind.errors, HasSubstr("lasts 21982 ms, so that nothing is left"));
    EXPECT_EQ(RunTool("cut " + DemoRecording() + " --from 500 --to 400" + to).exitCode, 1);
    EXPECT_EQ(RunTool("cut " + DemoRecording() + " --from -5" + to).exitCode, 1);
    EXPECT_EQ(RunTool("recognize " + DemoRecording() + " --from 99999999").exitCode, 2);
    EXPECT_EQ(RunTool("cut no-such-file.wav" + to).exitCode, 2);
    EXPECT_FALSE(std::filesystem::exists(scratch.Path("cut.wav")));
}

} // namespace
