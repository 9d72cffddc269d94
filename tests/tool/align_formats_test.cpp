#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sndfile.h>
#include <soxr.h>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;

/// What the encoding keeps of the recording.
enum class fidelity {
    kExact,  ///< every sample
    kScaled, ///< every sample, but for a rounding or a softer second channel
    kHeard,  ///< another rate, whose conversion ends the band at 6.4 kHz, or a lossy coder
};

struct encoding {
    const char* file;
    int format;
    int rate;
    int channels;
    const char* arguments;
    fidelity keeps;
};

constexpr encoding kEncodings[] = {
    {"pcm16.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 16000, 1, "", fidelity::kExact},
    {"stereo.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 16000, 2, "", fidelity::kExact},
    {"right.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 16000, 2, "--channel 2", fidelity::kScaled},
    {"mix.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 16000, 2, "--channel mix", fidelity::kScaled},
    {"pcm24.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 16000, 1, "", fidelity::kScaled},
    {"stereo24.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 16000, 2, "", fidelity::kExact},
    {"pcm32.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_32, 16000, 1, "", fidelity::kExact},
    {"float.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 16000, 1, "", fidelity::kExact},
    {"extensible.wav", SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 16000, 1, "", fidelity::kExact},
    {"pcm16.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 16000, 1, "", fidelity::kExact},
    {"pcm16.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 16000, 1, "", fidelity::kExact},
    {"big_endian.sph", SF_FORMAT_NIST | SF_FORMAT_PCM_16 | SF_ENDIAN_BIG, 16000, 1, "",
     fidelity::kExact},
    {"no_extension", SF_FORMAT_AU | SF_FORMAT_PCM_16, 16000, 1, "", fidelity::kExact},
    {"cd.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 1, "", fidelity::kHeard},
    {"film.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 48000, 2, "", fidelity::kHeard},
    {"high.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 96000, 2, "", fidelity::kHeard},
    {"higher.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 192000, 1, "", fidelity::kHeard},
    {"vorbis.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 16000, 1, "", fidelity::kHeard},
    {"opus.ogg", SF_FORMAT_OGG | SF_FORMAT_OPUS, 48000, 1, "", fidelity::kHeard},
    {"mpeg.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 44100, 1, "", fidelity::kHeard},
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

/// The differences of all starts and ends of words, in milliseconds.
std::vector<int> Differences(const json& words, const json& expected) {
    std::vector<int> differences;
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(words[i]["text"], expected[i]["text"]);
        for (const char* time : {"start_ms", "end_ms"}) {
            differences.push_back(
                std::abs(words[i][time].get<int>() - expected[i][time].get<int>()));
        }
    }
    return differences;
}

/// A lost tenth of a second, or a time scale that is off by a hundredth, fails this; a doubtful
/// boundary that another sound of the recording moves does not.
void ExpectHeardAlike(const std::vector<int>& differences) {
    const auto near = std::count_if(differences.begin(), differences.end(),
                                    [](int difference) { return difference <= 30; });
    EXPECT_GE(static_cast<double>(near), 0.8 * static_cast<double>(differences.size()));
    EXPECT_LE(*std::max_element(differences.begin(), differences.end()), 250);
}

TEST(AlignFormats, EveryEncodingGivesTheSameWordsAtTheSameTimes) {
    const ScratchFolder scratch;
    const std::vector<float> demo = ReadDemo();
    const std::string text = " --text-file " + DemoText();
    const json reference = json::parse(RunTool("align " + DemoRecording() + text).output)["words"];
    ASSERT_GT(reference.size(), 20u);
    for (const encoding& e : kEncodings) {
        SCOPED_TRACE(e.file);
        WriteRecording(scratch.Path(e.file), e, demo);
        const tool_run run =
            RunTool("align " + scratch.Path(e.file) + text + " " + std::string(e.arguments));
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        const json words = json::parse(run.output)["words"];
        ASSERT_EQ(words.size(), reference.size());
        const std::vector<int> differences = Differences(words, reference);
        switch (e.keeps) {
        case fidelity::kExact:
            EXPECT_EQ(*std::max_element(differences.begin(), differences.end()), 0);
            break;
        case fidelity::kScaled:
            EXPECT_LE(*std::max_element(differences.begin(), differences.end()), 30);
            break;
        case fidelity::kHeard:
            ExpectHeardAlike(differences);
            break;
        }
    }
}

} // namespace
