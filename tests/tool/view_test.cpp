#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sndfile.h>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

/// What stands between the tag that begins with `open` and `</script>`, from `from` on.
std::string ScriptText(const std::string& page, const std::string& open, size_t* from) {
    const size_t tag = page.find(open, *from);
    if (tag == std::string::npos) {
        return {};
    }
    const size_t begin = page.find('>', tag) + 1;
    *from = page.find("</script>", begin);
    return page.substr(begin, *from - begin);
}

std::string ResultText(const std::string& page) {
    size_t from = 0;
    return ScriptText(page, "<script type=\"application/json\"", &from);
}

std::string DecodeBase64(const std::string& text) {
    static const std::string kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        const size_t digit = kDigits.find(c);
        if (digit == std::string::npos) {
            EXPECT_EQ(c, '=');
            continue;
        }
        bits = bits << 6 | static_cast<uint32_t>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xff);
        }
    }
    return bytes;
}

struct wav_content {
    int rate = 0;
    int format = 0;
    std::vector<int16_t> samples;
};

/// The audio of a page as the audio library reads it.
wav_content PageAudio(const std::string& page) {
    std::string bytes;
    size_t from = 0;
    for (std::string text;
         text = ScriptText(page, "<script type=\"text/plain\"", &from), !text.empty();) {
        EXPECT_EQ(text.size() % 4, 0u);
        bytes += DecodeBase64(text);
    }
    const ScratchFolder scratch;
    WriteFile(scratch.Path("page.wav"), bytes);
    SF_INFO info{};
    SNDFILE* file = sf_open(scratch.Path("page.wav").c_str(), SFM_READ, &info);
    if (file == nullptr) {
        ADD_FAILURE() << sf_strerror(nullptr);
        return {};
    }
    EXPECT_EQ(info.channels, 1);
    wav_content content{info.samplerate, info.format,
                        std::vector<int16_t>(static_cast<size_t>(info.frames))};
    sf_read_short(file, content.samples.data(), info.frames);
    sf_close(file);
    return content;
}

/// A tone of 440 Hz with the amplitude 8000, the second channel of 880 Hz.
std::string WriteTone(const ScratchFolder& scratch, int rate, int channels, double seconds) {
    const std::string path = scratch.Path("tone.wav");
    std::vector<int16_t> samples;
    for (int i = 0; i < static_cast<int>(seconds * rate); ++i) {
        for (int channel = 1; channel <= channels; ++channel) {
            const double turns = 440.0 * channel * i / rate;
            samples.push_back(
                static_cast<int16_t>(std::lround(8000 * std::sin(2 * std::numbers::pi * turns))));
        }
    }
    WriteWav(path, samples, static_cast<uint32_t>(rate), static_cast<uint16_t>(channels));
    return path;
}

/// The amplitude of a frequency.
double Amplitude(const wav_content& audio, double hz) {
    double re = 0;
    double im = 0;
    for (size_t i = 0; i < audio.samples.size(); ++i) {
        const double angle = 2 * std::numbers::pi * hz * static_cast<double>(i) / audio.rate;
        re += audio.samples[i] * std::cos(angle);
        im += audio.samples[i] * std::sin(angle);
    }
    return 2 * std::hypot(re, im) / static_cast<double>(audio.samples.size());
}

/// A result with nothing in it but a word.
json ResultOf(const std::string& word) {
    return {{"version", 1},
            {"audio", ""},
            {"duration_ms", 1000},
            {"code", 0},
            {"message", ""},
            {"phonemes", json::array()},
            {"words",
             {{{"text", word},
               {"start_ms", 0},
               {"end_ms", 500},
               {"text_offset", 0},
               {"text_length", word.size()}}}},
            {"events", json::array()},
            {"frames", json::array()},
            {"curves", json::array()},
            {"stretches", json::array()}};
}

TEST(View, CarriesWhatAlignWritesAndTheRecording) {
    const std::string arguments = DemoRecording() + " --text-file " + DemoText();
    const tool_run view = RunTool("view " + arguments);
    ASSERT_EQ(view.exitCode, 0) << view.errors;
    const tool_run align = RunTool("align " + arguments);
    EXPECT_EQ(json::parse(ResultText(view.output)), json::parse(align.output));

    const wav_content audio = PageAudio(view.output);
    EXPECT_EQ(audio.rate, 16000);
    EXPECT_EQ(audio.samples, SamplesOf(ReadFile(DemoRecording())));

    const ScratchFolder scratch;
    WriteFile(scratch.Path("timings.json"), align.output);
    const tool_run given = RunTool("view " + DemoRecording() + " --timings " +
                                   scratch.Path("timings.json") + " -o " + scratch.Path("page"));
    ASSERT_EQ(given.exitCode, 0) << given.errors;
    EXPECT_EQ(ReadFile(scratch.Path("page")), view.output);
}

TEST(View, RecognizesWhenNothingIsKnownOfTheWords) {
    const tool_run view = RunTool("view --fps 25 " + DemoRecording());
    ASSERT_EQ(view.exitCode, 0) << view.errors;
    const tool_run recognize = RunTool("recognize --fps 25 " + DemoRecording());
    EXPECT_EQ(json::parse(ResultText(view.output)), json::parse(recognize.output));
}

TEST(View, BringsAudioToOneChannelAndAtMostSixteenKilohertz) {
    struct recording {
        int rate;
        int channels;
        const char* arguments;
        int pageRate;
        double amplitude440;
        double amplitude880;
        double seconds = 2.5;
    };
    const recording recordings[] = {
        {8000, 1, "", 8000, 8000, 0},
        {16000, 1, "", 16000, 8000, 0, 250}, // pieces that must join without a seam
        {44100, 2, "", 16000, 8000, 0},
        {48000, 2, "--channel 2", 16000, 0, 8000},
        {192000, 2, "--channel mix", 16000, 4000, 4000},
    };
    for (const recording& each : recordings) {
        SCOPED_TRACE(each.rate);
        const ScratchFolder scratch;
        const std::string path = WriteTone(scratch, each.rate, each.channels, each.seconds);
        WriteFile(scratch.Path("timings"), ResultOf("tone").dump());
        const tool_run run = RunTool("view " + path + " --timings " + scratch.Path("timings") +
                                     " " + each.arguments);
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        const wav_content audio = PageAudio(run.output);
        EXPECT_EQ(audio.rate, each.pageRate);
        EXPECT_EQ(audio.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
        EXPECT_NEAR(static_cast<double>(audio.samples.size()), each.seconds * each.pageRate, 2.0);
        EXPECT_NEAR(Amplitude(audio, 440), each.amplitude440, 80);
        EXPECT_NEAR(Amplitude(audio, 880), each.amplitude880, 80);
    }
}

TEST(View, LetsNoTextOutOfItsPlace) {
    const ScratchFolder scratch;
    const std::string word = "</script><!--<script>{{audio}}&amp; \\u003c \"";
    WriteFile(scratch.Path("timings"), ResultOf(word).dump(1));
    const std::string path = scratch.Path("<b>&{{script}}.wav");
    WriteFile(path, ReadFile(DemoRecording()));
    const tool_run run = RunTool("view '" + path + "' --timings " + scratch.Path("timings"));
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(json::parse(ResultText(run.output)), ResultOf(word));
    EXPECT_THAT(run.output, HasSubstr("<title>&lt;b&gt;&amp;{{script}}.wav</title>"));
    EXPECT_THAT(run.output, Not(HasSubstr("<b>")));
}

TEST(View, FetchesNothing) {
    const tool_run run = RunTool("view " + DemoRecording());
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(run.output, HasSubstr("default-src 'none'"));
    for (const char* address : {"@import", "http://", "https://"}) {
        EXPECT_THAT(run.output, Not(HasSubstr(address)));
    }
    for (const std::string attribute : {" src=\"", " href=\"", "url("}) {
        for (size_t at = run.output.find(attribute); at != std::string::npos;
             at = run.output.find(attribute, at + 1)) {
            const std::string value = run.output.substr(at + attribute.size(), 40);
            EXPECT_TRUE(value.starts_with("data:") || value.starts_with('#')) << value;
        }
    }
}

TEST(View, TellsWhatItCannotShow) {
    const ScratchFolder scratch;
    const std::string timings = scratch.Path("timings");
    const auto errorsOf = [&](const json& result) {
        WriteFile(timings, result.dump());
        const tool_run run = RunTool("view " + DemoRecording() + " --timings " + timings);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.output, "");
        return run.errors;
    };
    const std::string expected = timings + ": is not JSON of align, recognize or animate";
    EXPECT_THAT(errorsOf(json::array()), HasSubstr(expected));
    for (const char* member : {"version", "code", "message", "phonemes", "words", "frames"}) {
        SCOPED_TRACE(member);
        json broken = ResultOf("word");
        broken.erase(member);
        EXPECT_THAT(errorsOf(broken), HasSubstr(expected));
        broken[member] = {{"text", {1}}};
        EXPECT_THAT(errorsOf(broken), HasSubstr(expected));
    }
    json empty = ResultOf("word");
    empty["curves"] = {{{"label", "AA"}, {"start_ms", 0}, {"end_ms", 9}, {"keys", json::array()}}};
    EXPECT_THAT(errorsOf(empty), HasSubstr(expected));

    EXPECT_EQ(RunTool("view").exitCode, 1);
    for (const char* other : {"--text a", "--fps 25", "--from 100", "--words a"}) {
        SCOPED_TRACE(other);
        const tool_run run = RunTool("view a.wav --timings a.json " + std::string(other));
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_THAT(run.errors, HasSubstr("excludes"));
    }
    const tool_run missing = RunTool("view " + scratch.Path("none.wav"));
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_THAT(missing.errors, HasSubstr("none.wav"));
}

// What was found up to there is what a user needs to see.
TEST(View, MakesThePageWhenTheSearchLosesTheText) {
    const ScratchFolder scratch;
    std::string foreign;
    for (int i = 0; i < 400; ++i) {
        foreign += "nobody ever uttered any such words in here ";
    }
    WriteFile(scratch.Path("foreign.txt"), foreign);
    const std::string arguments = DemoRecording() + " --text-file " + scratch.Path("foreign.txt");
    const tool_run align = RunTool("align " + arguments);
    const tool_run view = RunTool("view " + arguments);
    for (const tool_run& run : {align, view}) {
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_THAT(run.errors, HasSubstr("(code 8)"));
    }
    const json result = json::parse(ResultText(view.output));
    EXPECT_EQ(result["code"], 8);
    EXPECT_TRUE(std::ranges::any_of(result["words"], // the page strikes them out
                                    [](const json& word) { return word["said"] == false; }));
    EXPECT_EQ(result, json::parse(align.output));
}

} // namespace
