#include "audio/files/pcm_rdr_stream.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "memory_stream.h"

namespace tessarin {
namespace {

using test::bytes;
using test::Format;
using test::Int16Bytes;
using test::MemoryStream;
using testing::ElementsAre;

TEST(PcmRdrStream, FloatReadTakesOneChannelOrAll) {
    MemoryStream stream(Format(16000, 16, 2), Int16Bytes({1, -2, 3, -4, 5, -6}));
    std::vector<float> samples(6, 99.0f);
    uint32_t frames = 2;
    ASSERT_EQ(stream.ReadChannelFloat(samples.data(), &frames, 2), 0);
    EXPECT_EQ(frames, 2u);
    EXPECT_THAT(samples, ElementsAre(-2, -4, 99, 99, 99, 99));
    stream.Start();
    frames = 4; // one more than there is
    ASSERT_EQ(stream.ReadChannelFloat(samples.data(), &frames, 0), 0);
    EXPECT_EQ(frames, 3u);
    EXPECT_THAT(samples, ElementsAre(1, -2, 3, -4, 5, -6));
    frames = 4;
    EXPECT_EQ(stream.ReadChannelFloat(samples.data(), &frames, 1), 0);
    EXPECT_EQ(frames, 0u);
}

TEST(PcmRdrStream, EightBitSamplesFillTheSameRange) {
    MemoryStream stream(Format(8000, 8, 2), {128, 0, 255, 127});
    std::vector<float> floats(4);
    uint32_t frames = 2;
    ASSERT_EQ(stream.ReadChannelFloat(floats.data(), &frames, 0), 0);
    EXPECT_THAT(floats, ElementsAre(0, -32768, 32512, -256));
    stream.Start();
    frames = 2;
    ASSERT_EQ(stream.ReadChannelFloat(floats.data(), &frames, 1), 0);
    EXPECT_THAT(floats, ElementsAre(0, 32512, 32512, -256));
}

TEST(PcmRdrStream, MonoReadGoesStraightToTheBlock) {
    MemoryStream stream(Format(16000, 16, 1), Int16Bytes({10, 20, 30, 40}));
    std::vector<int16_t> samples(2);
    for (const int first : {10, 30}) {
        uint32_t frames = 2;
        ASSERT_EQ(stream.ReadChannel(samples.data(), &frames, 1), 0);
        EXPECT_EQ(frames, 2u);
        EXPECT_THAT(samples, ElementsAre(first, first + 10));
    }
}

TEST(PcmRdrStream, SecondChannelReadOfABlockSizeReadsNothing) {
    MemoryStream stream(Format(16000, 16, 2), Int16Bytes({1, 2, 3, 4, 5, 6, 7, 8}));
    std::vector<int16_t> samples(3, 99);
    uint32_t frames = 2;
    ASSERT_EQ(stream.ReadChannel(samples.data(), &frames, 2), 0);
    EXPECT_THAT(samples, ElementsAre(2, 4, 99));

    samples.assign(3, 99);
    ASSERT_EQ(stream.ReadChannel(samples.data(), &frames, 2), 0);
    EXPECT_EQ(frames, 2u);
    EXPECT_EQ(stream.reads, 1);
    EXPECT_THAT(samples, ElementsAre(99, 99, 99));

    frames = 3; // a longer block reads again, from where the first one ended
    ASSERT_EQ(stream.ReadChannel(samples.data(), &frames, 2), 0);
    EXPECT_EQ(frames, 2u);
    EXPECT_THAT(samples, ElementsAre(6, 8, 99));

    stream.Start(); // the float read does not share the short cut
    std::vector<float> floats(2);
    frames = 2;
    ASSERT_EQ(stream.ReadChannelFloat(floats.data(), &frames, 2), 0);
    EXPECT_THAT(floats, ElementsAre(2, 4));
}

TEST(PcmRdrStream, SixteenBitReadWidensAsManyValuesAsFrames) {
    MemoryStream mono(Format(8000, 8, 1), {0, 128, 255});
    std::vector<int16_t> samples(4, 0);
    uint32_t frames = 3;
    ASSERT_EQ(mono.ReadChannelInt16(samples.data(), &frames, 1), 0);
    EXPECT_THAT(samples, ElementsAre(-32768, 0, 32512, 0));

    // All channels of two frames are four bytes, of which two are widened over themselves.
    MemoryStream stereo(Format(8000, 8, 2), {0, 128, 1, 129});
    samples.assign(4, 0x5555);
    frames = 2;
    ASSERT_EQ(stereo.ReadChannelInt16(samples.data(), &frames, 0), 0);
    EXPECT_THAT(samples, ElementsAre(-32768, 0, 0x5555, 0x5555));
}

TEST(PcmRdrStream, RefusesChannelsAndSizesThatItDoesNotHave) {
    MemoryStream stream(Format(16000, 16, 2), Int16Bytes({1, 2}));
    std::vector<float> floats(4);
    uint32_t frames = 1;
    EXPECT_EQ(stream.ReadChannelFloat(floats.data(), &frames, 3), 2);
    EXPECT_EQ(frames, 0u);
    frames = 1;
    EXPECT_EQ(stream.ReadChannel(floats.data(), &frames, 3), 2);
    EXPECT_EQ(frames, 0u);
    for (const uint32_t huge : {0x20000000u, 0xFFFFFFFFu}) {
        frames = huge;
        EXPECT_EQ(stream.ReadChannelFloat(floats.data(), &frames, 1), 1);
        EXPECT_EQ(frames, 0u);
        frames = huge;
        EXPECT_EQ(stream.ReadChannel(floats.data(), &frames, 1), 1);
        EXPECT_EQ(frames, 0u);
    }
    frames = 1; // and reads on as if nothing had happened
    EXPECT_EQ(stream.ReadChannelFloat(floats.data(), &frames, 2), 0);
    EXPECT_EQ(floats[0], 2.0f);
}

TEST(PcmRdrStream, WithoutAFormatEveryReadIsTheEnd) {
    MemoryStream stream({}, {});
    std::vector<float> floats(4);
    for (const uint32_t channel : {1u, 2u}) {
        uint32_t frames = 4;
        EXPECT_EQ(stream.ReadChannelFloat(floats.data(), &frames, channel), 0);
        EXPECT_EQ(frames, 0u);
        frames = 4;
        EXPECT_EQ(stream.ReadChannel(floats.data(), &frames, channel), 0);
        EXPECT_EQ(frames, 0u);
    }
}

TEST(PcmRdrStream, FailedReadLeavesNoFrames) {
    MemoryStream stream(Format(16000, 16, 2), Int16Bytes({1, 2}));
    std::vector<float> floats(4);
    stream.readsUntilFailure = 0;
    uint32_t frames = 1;
    EXPECT_EQ(stream.ReadChannelFloat(floats.data(), &frames, 1), 12);
    EXPECT_EQ(frames, 0u);
    stream.readsUntilFailure = 0;
    frames = 2;
    EXPECT_EQ(stream.ReadChannelInt16(reinterpret_cast<int16_t*>(floats.data()), &frames, 1), 12);
    EXPECT_EQ(frames, 0u);
}

} // namespace
} // namespace tessarin
