#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sndfile.h>
#include <soxr.h>

#include "tests/tools/run_tool.h"

namespace {

using nlohmann::json;

struct encoding {
    const char* file;
    int format;
    int rate;
    int channels;
    const char* arguments;
    int toleranceMs;
};

// A changed rate goes through another resampler and loses the engine's fixed design gain, and a
// lossy coder changes the signal, so these may move a boundary by a window or two.
constexpr encoding kEncodings[] = {
    {"pcm16.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 16000, 1, "", 0},
    {"pcm16_stereo.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 16000, 2, "", 0},
    {"second_channel.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 16000, 2, "--channel 2", 10},
    {"mix.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 16000, 2, "--channel mix", 10},
    {"pcm24.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 16000, 1, "", 10},
    {"pcm24_stereo.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 16000, 2, "", 0},
    {"pcm32.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_32, 16000, 1, "", 0},
    {"float.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 16000, 1, "", 0},
    {"extensible.wav", SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 16000, 1, "", 0},
    {"pcm16.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 16000, 1, "", 0},
    {"pcm16.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 16000, 1, "", 0},
    {"sphere.sph", SF_FORMAT_NIST | SF_FORMAT_PCM_16 | SF_ENDIAN_BIG, 16000, 1, "", 0},
    {"raw_name", SF_FORMAT_AU | SF_FORMAT_PCM_16, 16000, 1, "", 0},
    {"cd.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 1, "", 20},
    {"film.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 48000, 2, "", 20},
    {"high.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 96000, 2, "", 20},
    {"higher.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 192000, 1, "", 20},
    {"vorbis.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 16000, 1, "", 30},
    {"opus.ogg", SF_FORMAT_OGG | SF_FORMAT_OPUS, 48000, 1, "", 30},
    {"mpeg.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 44100, 1, "", 60},
};

std::vector<float> ReadDemo() {
    SF_INFO info{};
    SNDFILE* file = sf_open(DemoRecording().c_str(), SFM_READ, &info);
    EXPECT_NE(file, nullptr);
    EXPECT_EQ(info.samplerate, 16000);
    std::vector<float> samples(static_cast<size_t>(info.frames));
    sf_read_float(file, samples.data(), info.frames);
    sf_close(file);
    return samples;
}

std::vector<float> AtRate(const std::vector<float>& samples, int rate) {
    if (rate == 16000) {
        return samples;
    }
    std::vector<float> out(samples.size() * static_cast<size_t>(rate) / 16000 + 1);
    size_t written = 0;
    EXPECT_EQ(soxr_oneshot(16000, rate, 1, samples.data(), samples.size(), nullptr, out.data(),
                           out.size(), &written, nullptr, nullptr, nullptr),
              nullptr);
    out.resize(written);
    return out;
}

/// The second channel is the first, softened a little: other samples, same speech.
void WriteRecording(const std::string& path, const encoding& e, const std::vector<float>& mono) {
    SF_INFO info{};
    info.samplerate = e.rate;
    info.channels = e.channels;
    info.format = e.format;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    std::vector<float> interleaved;
    for (const float sample : AtRate(mono, e.rate)) {
        for (int channel = 0; channel < e.channels; ++channel) {
            interleaved.push_back(channel == 0 ? sample : 0.9f * sample);
        }
    }
    sf_writef_float(file, interleaved.data(),
                    static_cast<sf_count_t>(interleaved.size()) / e.channels);
    sf_close(file);
}

TEST(AlignFormats, EveryEncodingGivesTheSameWordsAtTheSameTimes) {
    const ScratchFolder scratch;
    const std::vector<float> demo = ReadDemo();
    const std::string text = " --text-file " + DemoText();
    const json reference = json::parse(RunTool("align " + DemoRecording() + text).output);
    ASSERT_FALSE(reference["words"].empty());
    for (const encoding& e : kEncodings) {
        SCOPED_TRACE(e.file);
        WriteRecording(scratch.Path(e.file), e, demo);
        const tool_run run =
            RunTool("align " + scratch.Path(e.file) + text + " " + std::string(e.arguments));
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        const json words = json::parse(run.output)["words"];
        ASSERT_EQ(words.size(), reference["words"].size());
        for (size_t i = 0; i < words.size(); ++i) {
            const json& expected = reference["words"][i];
            EXPECT_EQ(words[i]["text"], expected["text"]);
            EXPECT_NEAR(words[i]["start_ms"].get<int>(), expected["start_ms"].get<int>(),
                        e.toleranceMs)
                << expected["text"];
            EXPECT_NEAR(words[i]["end_ms"].get<int>(), expected["end_ms"].get<int>(), e.toleranceMs)
                << expected["text"];
        }
    }
}

} // namespace
