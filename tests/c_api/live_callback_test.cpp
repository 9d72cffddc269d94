#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_budget.h"
#include "tessarin/owned.h"
#include "tessarin/tessarin_c.h"

namespace {

using tessarin::Out;
using live_handle = tessarin::flat::live_owner;
using weights = std::array<float, TESSARIN_VISEME_COUNT>;

/// Begins to count the blocks of memory that this thread asks for, in the library as well.
void StartCounting() {
    tessarin::test::AllocationBudget() = std::numeric_limits<int>::max();
}

int CountAllocations() {
    return std::numeric_limits<int>::max() - tessarin::test::AllocationBudget();
}

/// The beginning of the demo recording, of 16 kHz, which fits into the ring as a whole.
std::vector<int16_t> DemoSamples(uint32_t ms) {
    tessarin::flat::audio_owner audio;
    EXPECT_EQ(tessarin_create_audio_from_file(TESSARIN_SOURCE_DIR "/data/demo/echo-test.wav", 1,
                                              Out(audio)),
              TESSARIN_OK);
    uint32_t count = 0;
    const int16_t* const samples = tessarin_get_audio_samples(audio.get(), &count);
    return {samples, samples + 16 * ms};
}

/// The samples in a format, with another channel of noise.
std::string Stereo(const std::vector<int16_t>& samples, uint32_t format) {
    std::string bytes;
    uint32_t noise = 1;
    const auto append = [&](int16_t sample) {
        const float asFloat = static_cast<float>(sample) / 32768.0f;
        const char asByte = static_cast<char>(sample / 256 + 128);
        switch (format) {
        case TESSARIN_FLOAT:
            bytes.append(reinterpret_cast<const char*>(&asFloat), sizeof asFloat);
            break;
        case TESSARIN_UINT8:
            bytes += asByte;
            break;
        default:
            bytes.append(reinterpret_cast<const char*>(&sample), sizeof sample);
            break;
        }
    };
    for (const int16_t sample : samples) {
        append(sample);
        noise = noise * 1664525 + 1013904223;
        append(static_cast<int16_t>(noise >> 16));
    }
    return bytes;
}

live_handle OpenLive(uint32_t format, uint32_t channels, int32_t delayMs) {
    tessarin::flat::model_owner model;
    EXPECT_EQ(tessarin_create_model_from_file(TESSARIN_SOURCE_DIR "/data/en-us.model", Out(model)),
              TESSARIN_OK);
    tessarin_live_options options{};
    options.size = sizeof options;
    options.format = format;
    options.channels = channels;
    options.delay_ms = delayMs;
    live_handle live;
    EXPECT_EQ(tessarin_create_live(model.get(), &options, Out(live)), TESSARIN_OK);
    return live;
}

std::vector<tessarin_live_frame> Finish(tessarin_live* live) {
    tessarin_live_stretch stretch;
    EXPECT_EQ(tessarin_finish_live(live, &stretch), TESSARIN_OK);
    return {stretch.frames, stretch.frames + stretch.frame_count};
}

std::string Bytes(const std::vector<tessarin_live_frame>& frames) {
    return {reinterpret_cast<const char*>(frames.data()), frames.size() * sizeof frames[0]};
}

TEST(LiveCallback, GivesTheSameAsOtherPushesAndAllocatesNothing) {
    constexpr uint32_t kMs = 1900;
    const std::vector<int16_t> samples = DemoSamples(kMs);
    tessarin::flat::model_owner model;
    for (const uint32_t format : {TESSARIN_INT16, TESSARIN_FLOAT, TESSARIN_UINT8}) {
        SCOPED_TRACE(format);
        const std::string bytes = Stereo(samples, format);
        const live_handle other = OpenLive(format, 2, 10000);
        ASSERT_EQ(tessarin_push_live_audio(other.get(), bytes.data(),
                                           static_cast<uint32_t>(bytes.size())),
                  TESSARIN_OK);
        const std::vector<tessarin_live_frame> expected = Finish(other.get());

        const live_handle live = OpenLive(format, 2, 10000);
        StartCounting();
        for (uint32_t ms = 0; ms < kMs; ms += 10) {
            EXPECT_EQ(tessarin_push_live_samples(live.get(), &bytes[bytes.size() / kMs * ms], 160),
                      TESSARIN_OK);
        }
        EXPECT_EQ(CountAllocations(), 0);
        const std::vector<tessarin_live_frame> frames = Finish(live.get());
        EXPECT_NEAR(static_cast<double>(frames.size()), 57, 1);
        EXPECT_EQ(Bytes(frames), Bytes(expected));
        EXPECT_EQ(tessarin_push_live_samples(live.get(), bytes.data(), 1), TESSARIN_NOT_AVAILABLE);
    }
    // The counter sees what the library does where it may replace its memory.
#ifndef _WIN32
    StartCounting();
    const live_handle live = OpenLive(TESSARIN_INT16, 1, 0);
    EXPECT_GT(CountAllocations(), 10);
#endif
}

TEST(LiveCallback, WeightsAreThoseOfTheFrames) {
    const std::vector<int16_t> samples = DemoSamples(1900);
    const live_handle live = OpenLive(TESSARIN_INT16, 1, 10000);
    weights given;
    int64_t atMs = 0;
    ASSERT_EQ(tessarin_push_live_samples(live.get(), samples.data(),
                                         static_cast<uint32_t>(samples.size())),
              TESSARIN_OK);
    const std::vector<tessarin_live_frame> frames = Finish(live.get());
    tessarin_shapes* made = nullptr;
    ASSERT_EQ(tessarin_create_shapes("visemes", &made), TESSARIN_OK);
    const tessarin::flat::shapes_owner shapes(made);
    ASSERT_EQ(tessarin_get_shape_count(made), uint32_t{TESSARIN_VISEME_COUNT});
    for (const tessarin_live_frame& each : frames) {
        tessarin_frame frame{0, 0, each.count, {}};
        std::memcpy(frame.weights, each.weights, sizeof frame.weights);
        std::array<double, TESSARIN_VISEME_COUNT> expected{};
        ASSERT_EQ(tessarin_mix_shapes(made, &frame, 1, expected.data()), TESSARIN_OK);
        const int64_t middleMs = (each.start_ms + each.end_ms) / 2;
        ASSERT_EQ(tessarin_take_live_weights(live.get(), middleMs, given.data(), &atMs),
                  TESSARIN_OK);
        EXPECT_EQ(atMs, middleMs);
        EXPECT_THAT(given, testing::Pointwise(testing::FloatNear(1e-6f), expected));
    }
    // A time before the end of the audio.
    weights before;
    ASSERT_EQ(tessarin_take_live_weights(live.get(), -500, before.data(), &atMs), TESSARIN_OK);
    EXPECT_EQ(atMs, 1400);
    ASSERT_EQ(tessarin_take_live_weights(live.get(), 1400, given.data(), nullptr), TESSARIN_OK);
    EXPECT_EQ(before, given);
}

TEST(LiveCallback, ReportsWhatWasLost) {
    const std::vector<int16_t> samples = DemoSamples(2500);
    const live_handle live = OpenLive(TESSARIN_INT16, 1, 0);
    EXPECT_EQ(tessarin_push_live_samples(live.get(), samples.data(), 16 * 1990), TESSARIN_OK);
    EXPECT_EQ(tessarin_get_lost_live_ms(live.get()), 0);
    EXPECT_EQ(tessarin_push_live_samples(live.get(), samples.data(), 16 * 20),
              TESSARIN_OUT_OF_RANGE);
    EXPECT_EQ(tessarin_push_live_samples(live.get(), samples.data(), 16 * 490),
              TESSARIN_OUT_OF_RANGE);
    EXPECT_EQ(tessarin_get_lost_live_ms(live.get()), 500);
    tessarin_live_stretch stretch;
    EXPECT_EQ(tessarin_finish_live(live.get(), &stretch), TESSARIN_OK);
    EXPECT_EQ(stretch.end_ms, 2000);
}

TEST(LiveCallback, FeedsAGameOnAnotherThread) {
    const std::vector<int16_t> samples = DemoSamples(1900); // never more than there is room for
    const live_handle live = OpenLive(TESSARIN_INT16, 1, 0);
    std::thread card([&] {
        for (size_t at = 0; at < samples.size(); at += 160) {
            tessarin_push_live_samples(live.get(), &samples[at], 160);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    weights now;
    float mostSpeech = 0;
    int64_t newestMs = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (newestMs < 1600 && std::chrono::steady_clock::now() < end) {
        const int64_t lastMs = newestMs;
        ASSERT_EQ(
            tessarin_take_live_weights(live.get(), TESSARIN_LIVE_NEWEST, now.data(), &newestMs),
            TESSARIN_OK);
        EXPECT_GE(newestMs, lastMs);
        EXPECT_NEAR(std::accumulate(now.begin(), now.end(), 0.0f), 1.0f, 1e-4f);
        mostSpeech = std::max(mostSpeech, 1.0f - now[0]);
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
    card.join();
    EXPECT_GE(newestMs, 1600);
    EXPECT_GT(mostSpeech, 0.9f);
    EXPECT_EQ(tessarin_get_lost_live_ms(live.get()), 0);
}

TEST(LiveCallback, RefusesNull) {
    weights given;
    given.fill(7);
    EXPECT_EQ(tessarin_take_live_weights(nullptr, 0, given.data(), nullptr),
              TESSARIN_INVALID_ARGUMENT);
    EXPECT_THAT(given, testing::Each(0.0f));
    const live_handle live = OpenLive(TESSARIN_INT16, 1, 0);
    EXPECT_EQ(tessarin_take_live_weights(live.get(), 0, nullptr, nullptr),
              TESSARIN_INVALID_ARGUMENT);
    EXPECT_EQ(tessarin_push_live_samples(live.get(), nullptr, 5), TESSARIN_INVALID_ARGUMENT);
    EXPECT_EQ(tessarin_get_lost_live_ms(nullptr), 0);
}

} // namespace
