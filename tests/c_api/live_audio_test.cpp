#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tessarin/owned.h"
#include "tessarin/tessarin_c.h"

namespace {

using tessarin::Out;
using model_handle = tessarin::flat::model_owner;
using audio_handle = tessarin::flat::audio_owner;
using live_handle = std::unique_ptr<tessarin_live, tessarin::destroyer<tessarin_free_live>>;

model_handle OpenModel() {
    model_handle model;
    EXPECT_EQ(tessarin_create_model_from_file(TESSARIN_SOURCE_DIR "/data/en-us.model", Out(model)),
              TESSARIN_OK);
    return model;
}

/// The 16-bit samples of the demo recording, of 16 kHz.
std::string DemoSamples() {
    audio_handle audio;
    EXPECT_EQ(tessarin_create_audio_from_file(TESSARIN_SOURCE_DIR "/data/demo/echo-test.wav", 1,
                                              Out(audio)),
              TESSARIN_OK);
    uint32_t count = 0;
    const int16_t* const samples = tessarin_get_audio_samples(audio.get(), &count);
    return {reinterpret_cast<const char*>(samples), count * sizeof *samples};
}

/// What a live run gives, joined, and whether it has no gaps.
struct joined {
    void Add(const tessarin_live_stretch& stretch) {
        EXPECT_EQ(stretch.start_ms, endMs);
        endMs = stretch.end_ms;
        for (uint32_t i = 0; i < stretch.phoneme_count; ++i) {
            const tessarin_live_phoneme& each = stretch.phonemes[i];
            EXPECT_EQ(each.start_ms, phonemesEndMs);
            phonemesEndMs = each.end_ms;
            lines.push_back(std::string(each.label) + " " + std::to_string(each.start_ms));
        }
        for (uint32_t i = 0; i < stretch.frame_count; ++i) {
            EXPECT_EQ(stretch.frames[i].start_ms, framesEndMs);
            framesEndMs = stretch.frames[i].end_ms;
            for (int32_t k = 0; k < stretch.frames[i].count; ++k) {
                weights += static_cast<double>(stretch.frames[i].weights[k].weight);
            }
            ++numFrames;
        }
    }

    int64_t endMs = 0;
    int64_t phonemesEndMs = 0;
    int64_t framesEndMs = 0;
    int numFrames = 0;
    double weights = 0;
    std::vector<std::string> lines;
};

/// Pushes all of `bytes` in blocks of `blockSize`, with takes in between.
joined Follow(tessarin_live* live, const std::string& bytes, size_t blockSize) {
    constexpr int64_t kMostWaitingMs = 12000;
    joined all;
    tessarin_live_stretch stretch;
    for (size_t at = 0; at < bytes.size(); at += blockSize) {
        const size_t size = std::min(blockSize, bytes.size() - at);
        EXPECT_EQ(tessarin_push_live_audio(live, bytes.data() + at, static_cast<uint32_t>(size)),
                  TESSARIN_OK);
        do {
            EXPECT_EQ(tessarin_take_live(live, &stretch), TESSARIN_OK);
            all.Add(stretch);
            if (stretch.waiting_ms > kMostWaitingMs) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        } while (stretch.waiting_ms > kMostWaitingMs);
    }
    EXPECT_EQ(tessarin_finish_live(live, &stretch), TESSARIN_OK);
    EXPECT_EQ(stretch.waiting_ms, 0);
    all.Add(stretch);
    EXPECT_EQ(tessarin_push_live_audio(live, bytes.data(), 2), TESSARIN_NOT_AVAILABLE);
    EXPECT_EQ(tessarin_take_live(live, &stretch), TESSARIN_OK);
    EXPECT_EQ(stretch.start_ms, stretch.end_ms);
    EXPECT_EQ(stretch.phoneme_count + stretch.frame_count, 0u);
    return all;
}

live_handle OpenLive(const tessarin_live_options* options) {
    live_handle live;
    // The model goes first, as it may.
    EXPECT_EQ(tessarin_create_live(OpenModel().get(), options, Out(live)), TESSARIN_OK);
    return live;
}

TEST(LiveAudio, AllOfItIsHeardAndHasFrames) {
    const std::string whole = DemoSamples();
    const joined all = Follow(OpenLive(nullptr).get(), whole, 320);
    EXPECT_EQ(all.endMs, static_cast<int64_t>(whole.size()) / 32);
    EXPECT_EQ(all.phonemesEndMs, all.endMs) << "the last one, too";
    EXPECT_GT(all.lines.size(), 100u);
    EXPECT_NEAR(static_cast<double>(all.numFrames), static_cast<double>(all.endMs) * 0.03, 2);
    EXPECT_NEAR(all.weights, all.numFrames, 1e-2);
}

TEST(LiveAudio, IsTheSameHoweverItsSamplesCome) {
    constexpr size_t kCount = 5 * 16000;
    const std::string whole = DemoSamples().substr(0, 2 * kCount);
    std::string floats;
    std::string stereo;
    for (size_t i = 0; i < kCount; ++i) {
        int16_t word = 0;
        std::memcpy(&word, whole.data() + 2 * i, sizeof word);
        const float sample = static_cast<float>(word) / 32768.0f;
        floats.append(reinterpret_cast<const char*>(&sample), sizeof sample);
        stereo += whole.substr(2 * i, 2) + whole.substr(2 * (kCount - 1 - i), 2);
    }
    // What is final does not depend on the time of a take when everything is weighed to the end.
    tessarin_live_options options{};
    options.size = sizeof options;
    options.delay_ms = 10000;
    const joined inBlocks = Follow(OpenLive(&options).get(), whole, 333);
    EXPECT_EQ(inBlocks.endMs, 5000);
    EXPECT_GT(inBlocks.lines.size(), 30u);
    EXPECT_EQ(Follow(OpenLive(&options).get(), whole, whole.size()).lines, inBlocks.lines);
    options.format = TESSARIN_FLOAT;
    EXPECT_EQ(Follow(OpenLive(&options).get(), floats, 1001).lines, inBlocks.lines);
    options.format = TESSARIN_INT16;
    options.channels = 2;
    EXPECT_EQ(Follow(OpenLive(&options).get(), stereo, 1001).lines, inBlocks.lines);
}

TEST(LiveAudio, RefusesWhatItCannotFollow) {
    const model_handle model = OpenModel();
    tessarin_live_options good{};
    good.size = sizeof good;
    const auto codeOf = [&](auto change) {
        tessarin_live_options options = good;
        change(options);
        tessarin_live* live = reinterpret_cast<tessarin_live*>(&options);
        const int32_t code = tessarin_create_live(model.get(), &options, &live);
        EXPECT_EQ(live, nullptr);
        return code;
    };
    EXPECT_EQ(codeOf([](auto& o) { o.size -= 4; }), TESSARIN_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf([](auto& o) { o.format = 3; }), TESSARIN_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf([](auto& o) { o.rate_hz = 3999; }), TESSARIN_OUT_OF_RANGE);
    EXPECT_EQ(codeOf([](auto& o) { o.channels = 1025; }), TESSARIN_OUT_OF_RANGE);
    EXPECT_EQ(codeOf([](auto& o) { o.delay_ms = 19; }), TESSARIN_OUT_OF_RANGE);
    EXPECT_EQ(codeOf([](auto& o) { o.overlap_ms = -1; }), TESSARIN_OUT_OF_RANGE);
    EXPECT_EQ(codeOf([](auto& o) { o.frame_rate = std::nanf(""); }), TESSARIN_OUT_OF_RANGE);
    tessarin_live* live = nullptr;
    ASSERT_EQ(tessarin_create_live(model.get(), &good, &live), TESSARIN_OK);
    const live_handle owner(live);
    tessarin_live_stretch stretch;
    EXPECT_EQ(tessarin_push_live_audio(live, &good, 1u << 31), TESSARIN_OUT_OF_RANGE);
    EXPECT_EQ(tessarin_push_live_audio(live, nullptr, 2), TESSARIN_INVALID_ARGUMENT);
    EXPECT_EQ(tessarin_take_live(nullptr, &stretch), TESSARIN_INVALID_ARGUMENT);
    EXPECT_EQ(stretch.phonemes, nullptr);
    EXPECT_EQ(tessarin_take_live(live, nullptr), TESSARIN_INVALID_ARGUMENT);
    EXPECT_EQ(tessarin_finish_live(live, &stretch), TESSARIN_OK) << "of nothing";
    EXPECT_EQ(stretch.end_ms, 0);
}

TEST(GatedAudio, IsSilentWhereItWasQuiet) {
    // 200 ms of loud tone, 400 ms of quiet with a click in it, 200 ms of loud tone.
    std::vector<int16_t> samples(8 * 800);
    for (size_t i = 0; i < samples.size(); ++i) {
        const bool isLoud = i < 1600 || i >= 4800 || (i >= 3200 && i < 3280);
        samples[i] = static_cast<int16_t>((i % 2 == 0 ? 1 : -1) * (isLoud ? 16384 : 16));
    }
    tessarin_audio* made = nullptr;
    ASSERT_EQ(tessarin_create_audio_from_int16(samples.data(),
                                               static_cast<uint32_t>(samples.size()), 8000, &made),
              TESSARIN_OK);
    const audio_handle audio(made);
    const auto gate = [&](tessarin_gate_options options, float* levelDb) {
        tessarin_audio* out = nullptr;
        EXPECT_EQ(tessarin_create_gated_audio(audio.get(), &options, levelDb, &out), TESSARIN_OK);
        const audio_handle gated(out);
        uint32_t count = 0;
        const int16_t* first = tessarin_get_audio_samples(out, &count);
        EXPECT_EQ(tessarin_get_audio_rate_hz(out), 8000u);
        return std::vector<int16_t>(first, first + count);
    };
    tessarin_gate_options options{};
    options.size = sizeof options;
    options.threshold_db = -40;
    std::vector<int16_t> expected = samples;
    std::fill(expected.begin() + 1600, expected.begin() + 3200, int16_t{0});
    std::fill(expected.begin() + 3280, expected.begin() + 4800, int16_t{0});
    EXPECT_EQ(gate(options, nullptr), expected) << "too little quiet around the click";
    std::fill(expected.begin() + 1600, expected.begin() + 4800, int16_t{0});
    options.min_quiet_ms = 150;
    EXPECT_EQ(gate(options, nullptr), expected);
    options.threshold_db = 0;
    options.percentile = 0.6f; // the 50th of 80 levels is a loud one
    float levelDb = 0;
    gate(options, &levelDb);
    EXPECT_NEAR(levelDb, -6.02f, 0.01f);

    constexpr auto kSize = static_cast<uint32_t>(sizeof options);
    const tessarin_gate_options refused[] = {{kSize, 1, 0, 0, 0, 0},
                                             {kSize, 0, 1.5f, 0, 0, 0},
                                             {kSize, -40, 0, -1, 0, 0},
                                             {kSize, std::nanf(""), 0, 0, 0, 0}};
    for (const tessarin_gate_options& bad : refused) {
        EXPECT_EQ(tessarin_create_gated_audio(audio.get(), &bad, nullptr, &made),
                  TESSARIN_OUT_OF_RANGE);
        EXPECT_EQ(made, nullptr);
    }
    options.size = 0;
    EXPECT_EQ(tessarin_create_gated_audio(audio.get(), &options, nullptr, &made),
              TESSARIN_INVALID_ARGUMENT);
}

} // namespace
