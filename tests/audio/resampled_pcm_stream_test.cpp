#include "audio/resampled_pcm_stream.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "memory_stream.h"
#include "support/signals.h"

namespace tessarin {
namespace {

using test::Format;
using test::Int16Bytes;
using test::MemoryStream;
using test::MonoStream;
using test::ReadAllFloats;
using testing::Each;
using testing::ElementsAre;

constexpr float kCutoff = 0.8f;

std::vector<int16_t> NoiseSamples(size_t length) {
    const std::vector<float> noise = test::WhiteNoise(length, 20000.0f, 11);
    return {noise.begin(), noise.end()};
}

/// What a stream at `rateHz` gives at `targetHz`, read in blocks of `blockSize`.
std::vector<float> Resampled(uint32_t rateHz, uint32_t targetHz,
                             const std::vector<int16_t>& samples, uint32_t blockSize) {
    const auto source = MonoStream(rateHz, samples);
    CResampledPCMStream stage;
    const PCMFormat target = Format(targetHz, 8, 2);
    EXPECT_EQ(stage.Instantiate(source.get(), &target, 1, kCutoff), 0);
    EXPECT_EQ(stage.Start(), 0);
    return ReadAllFloats(stage, blockSize);
}

TEST(ResampledPcmStream, PresentsMonoAtTheTargetRate) {
    const auto source = MonoStream(44100, std::vector<int16_t>(44100));
    CResampledPCMStream stage;
    const PCMFormat target = Format(16000, 8, 2);
    ASSERT_EQ(stage.Instantiate(source.get(), &target, 1, kCutoff), 0);
    PCMFormat format{};
    EXPECT_EQ(stage.GetFormat(&format), 0);
    EXPECT_EQ(format.sampleRate, 16000u << 16);
    EXPECT_EQ(format.bitsPerSample, 16);
    EXPECT_EQ(format.channels, 1);
    EXPECT_STREQ(stage.GetStreamName(), "Resample");
    EXPECT_EQ(stage.GetNumSamples(), 16000u);
    const auto shorter = MonoStream(44100, std::vector<int16_t>(441));
    EXPECT_EQ(stage.SetSourceStream(shorter.get()), 0);
    EXPECT_EQ(stage.GetByteLength(), 320u); // follows the source
}

TEST(ResampledPcmStream, FillsEveryBlockButTheLast) {
    const std::vector<int16_t> samples = NoiseSamples(20000);
    for (const uint32_t rateHz : {8000u, 11025u, 16000u, 22050u, 44100u, 48000u}) {
        for (const uint32_t blockSize : {160u, 333u, 512u, 7000u}) {
            SCOPED_TRACE(testing::Message() << rateHz << " Hz, blocks of " << blockSize);
            const auto source = MonoStream(rateHz, samples);
            CResampledPCMStream stage;
            const PCMFormat target = Format(16000, 16, 1);
            stage.Instantiate(source.get(), &target, 1, kCutoff);
            const uint32_t length = stage.GetNumSamples();
            std::vector<float> block(blockSize + 1, -1e9f);
            uint32_t total = 0;
            uint32_t frames = blockSize;
            while (frames == blockSize) {
                ASSERT_EQ(stage.ReadChannelFloat(block.data(), &frames, 1), 0);
                ASSERT_EQ(block[blockSize], -1e9f);
                total += frames;
            }
            EXPECT_NEAR(total, length, 2.0);
        }
    }
}

TEST(ResampledPcmStream, SoundsTheSameInBlocksOfAnySize) {
    const std::vector<int16_t> samples = NoiseSamples(3000);
    // Rates that rise make several samples out of one, more than the end of a block may have room
    // for. Whole falling ratios begin again with each block, in multiples of the ratio.
    for (const uint32_t rateHz : {4000u, 8000u, 11025u, 22050u, 44100u, 48000u}) {
        const std::vector<float> whole = Resampled(rateHz, 16000, samples, 20000);
        for (const uint32_t blockSize : {99u, 160u, 161u, 1000u}) {
            SCOPED_TRACE(testing::Message() << rateHz << " Hz, blocks of " << blockSize);
            const std::vector<float> cut = Resampled(rateHz, 16000, samples, blockSize);
            ASSERT_LE(cut.size(), whole.size() + 1);
            ASSERT_GE(cut.size() + 1, whole.size());
            for (size_t i = 0; i < std::min(cut.size(), whole.size()); ++i) {
                ASSERT_EQ(cut[i], whole[i]) << i;
            }
        }
    }
}

TEST(ResampledPcmStream, SurplusEndsWithStart) {
    const auto source = MonoStream(8000, NoiseSamples(1000));
    CResampledPCMStream stage;
    const PCMFormat target = Format(24000, 16, 1);
    stage.Instantiate(source.get(), &target, 1, kCutoff);
    stage.Start();
    std::vector<float> first(100);
    uint32_t frames = 100;
    ASSERT_EQ(stage.ReadChannelFloat(first.data(), &frames, 1), 0);
    stage.Start();
    std::vector<float> again(100);
    ASSERT_EQ(stage.ReadChannelFloat(again.data(), &frames, 1), 0);
    EXPECT_EQ(again, first);
}

TEST(ResampledPcmStream, RequestTooShortForOneInputEndsTheRead) {
    const auto source = MonoStream(8000, NoiseSamples(1000));
    CResampledPCMStream stage;
    const PCMFormat target = Format(24000, 16, 1);
    stage.Instantiate(source.get(), &target, 1, kCutoff);
    std::vector<float> block(2);
    uint32_t frames = 2;
    EXPECT_EQ(stage.ReadChannelFloat(block.data(), &frames, 1), 0);
    EXPECT_EQ(frames, 0u);
}

TEST(ResampledPcmStream, AlwaysReadsItsOwnChannel) {
    auto stereo = counted_ptr<MemoryStream>::Adopt(
        new MemoryStream(Format(16000, 16, 2), Int16Bytes({1, -1, 2, -2, 3, -3})));
    CResampledPCMStream stage;
    const PCMFormat target = Format(16000, 16, 1);
    ASSERT_EQ(stage.Instantiate(stereo.get(), &target, 2, kCutoff), 0);
    std::vector<float> floats(1);
    uint32_t frames = 1;
    ASSERT_EQ(stage.ReadChannelFloat(floats.data(), &frames, 1), 0);
    EXPECT_THAT(floats, ElementsAre(-1));
    std::vector<int16_t> words(1);
    ASSERT_EQ(stage.ReadChannel(words.data(), &frames, 1), 0);
    EXPECT_THAT(words, ElementsAre(-2));
    ASSERT_EQ(stage.ReadBlock(words.data(), &frames), 0);
    EXPECT_THAT(words, ElementsAre(-3));
}

TEST(ResampledPcmStream, RefusesWhatItCannotConnect) {
    MemoryStream stereo(Format(16000, 16, 2), {});
    MemoryStream still({0, 16, 1}, {});
    CResampledPCMStream stage;
    const PCMFormat target = Format(16000, 16, 1);
    std::vector<float> floats(4);
    uint32_t frames = 4;
    EXPECT_EQ(stage.ReadChannelFloat(floats.data(), &frames, 1), 2);
    EXPECT_EQ(stage.Instantiate(nullptr, &target, 1, kCutoff), 2);
    EXPECT_EQ(stage.Instantiate(&stereo, nullptr, 1, kCutoff), 2);
    EXPECT_EQ(stage.Instantiate(&stereo, &target, 0, kCutoff), 2);
    EXPECT_EQ(stage.Instantiate(&still, &target, 1, kCutoff), 2);
    const auto mono = MonoStream(16000, {1, 2});
    EXPECT_EQ(stage.Instantiate(mono.get(), &target, 0, kCutoff), 0);
    EXPECT_EQ(stage.SetSourceStream(&stereo), 2);
    EXPECT_EQ(stage.GetSourceStream(), mono.get());
    EXPECT_EQ(stage.Instantiate(&stereo, &target, 3, kCutoff), 0);
    frames = 4;
    EXPECT_EQ(stage.ReadChannelFloat(floats.data(), &frames, 1), 2); // there is no channel 3
    EXPECT_EQ(frames, 0u);
}

TEST(ResampledPcmStream, PassesFailuresOn) {
    for (const int32_t failing : {0, 1}) { // the first read, or that of the last sample
        SCOPED_TRACE(failing);
        const auto source = MonoStream(44100, NoiseSamples(10000));
        CResampledPCMStream stage;
        const PCMFormat target = Format(16000, 16, 1);
        stage.Instantiate(source.get(), &target, 1, kCutoff);
        source->readsUntilFailure = failing;
        std::vector<int16_t> words(333);
        uint32_t frames = 333;
        EXPECT_EQ(stage.ReadChannelInt16(words.data(), &frames, 1), failing == 0 ? 12 : 0);
        EXPECT_EQ(frames, failing == 0 ? 0u : 333u);
        frames = 333;
        EXPECT_EQ(stage.ReadBlock(words.data(), &frames), failing == 0 ? 0 : 12);
        frames = 0x7FFFFFFF;
        EXPECT_EQ(stage.ReadBlock(words.data(), &frames), 1);
        EXPECT_EQ(frames, 0u);
    }
}

} // namespace
} // namespace tessarin
