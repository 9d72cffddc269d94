#include "audio/quib_stream.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host_stream.h"

namespace tessarin {
namespace {

using test::HostStream;
using testing::ElementsAre;

TEST(QuibStream, RateIsPlainHzBelow55001AndFixedPointFromThere) {
    struct rate {
        uint32_t reported, presented;
    };
    for (const rate& r : {rate{22050, 22050u << 16}, rate{55000, 55000u << 16}, rate{55001, 55001},
                          rate{22050u << 16, 22050u << 16}, rate{0, 0}}) {
        SCOPED_TRACE(r.reported);
        HostStream host({r.reported, 16, 1}, std::vector<uint8_t>(8));
        CQuibStream stream;
        ASSERT_EQ(stream.Open(&host), 0);
        EXPECT_EQ(stream.GetSampleRate(), r.presented);
        EXPECT_EQ(stream.GetNumSamples(), 4u);
    }
}

TEST(QuibStream, RefusesFormatsThatItCannotPresent) {
    for (const PCMFormat& format : {PCMFormat{16000, 24, 1}, PCMFormat{16000, 0, 1},
                                    PCMFormat{16000, 16, 0}, PCMFormat{16000, 8, 0}}) {
        SCOPED_TRACE(testing::Message() << format.bitsPerSample << " bits");
        HostStream host(format, std::vector<uint8_t>(8));
        CQuibStream stream;
        EXPECT_EQ(stream.Open2(&host), 12);
        EXPECT_EQ(host.references, 1);
        uint8_t buffer[16];
        uint32_t frames = 4;
        EXPECT_EQ(stream.ReadBlock(buffer, &frames), 0);
        EXPECT_EQ(frames, 0u);
    }
}

TEST(QuibStream, ReadsWholeFrames) {
    HostStream host({16000, 16, 2}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    CQuibStream stream;
    ASSERT_EQ(stream.Open(&host), 0);
    std::vector<uint8_t> buffer(12, 0);
    uint32_t frames = 3;
    ASSERT_EQ(stream.ReadBlock(buffer.data(), &frames), 0);
    EXPECT_EQ(frames, 2u); // and a half
    frames = 3;
    ASSERT_EQ(stream.ReadBlock(buffer.data(), &frames), 0);
    EXPECT_EQ(frames, 0u);
    EXPECT_EQ(stream.Start(), 0);
    frames = 1;
    ASSERT_EQ(stream.ReadBlock(buffer.data(), &frames), 0);
    EXPECT_THAT(std::vector<uint8_t>(buffer.begin(), buffer.begin() + 4), ElementsAre(1, 2, 3, 4));
}

TEST(QuibStream, OddAnswersOfTheHostAreTamed) {
    HostStream host({16000, 16, 1}, std::vector<uint8_t>(100));
    CQuibStream stream;
    ASSERT_EQ(stream.Open(&host), 0);
    uint8_t buffer[8];
    host.answer = -1; // the end, not an error
    uint32_t frames = 4;
    EXPECT_EQ(stream.ReadBlock(buffer, &frames), 0);
    EXPECT_EQ(frames, 0u);
    host.answer = 1000000; // more than was asked for
    frames = 4;
    EXPECT_EQ(stream.ReadBlock(buffer, &frames), 0);
    EXPECT_EQ(frames, 4u);
    host.answer = 0;
    frames = 0xFFFFFFFF; // asked for as the most that a signed count can say
    EXPECT_EQ(stream.ReadBlock(buffer, &frames), 0);
    EXPECT_EQ(host.lastAsked, 0x7FFFFFFE);
}

TEST(QuibStream, OnlyOpen2HoldsAReference) {
    HostStream host({16000, 16, 1}, {});
    {
        CQuibStream stream;
        stream.Open(&host);
        EXPECT_EQ(host.references, 1);
        stream.Open2(&host);
        EXPECT_EQ(host.references, 2);
        stream.Open2(&host);
        EXPECT_EQ(host.references, 2);
        EXPECT_EQ(stream.Close(), 0);
        EXPECT_EQ(host.references, 2);
    }
    EXPECT_EQ(host.references, 1);
}

TEST(QuibStream, WithoutASourceEverythingAnswers2) {
    CQuibStream stream;
    EXPECT_EQ(stream.Open(nullptr), 2);
    EXPECT_EQ(stream.Open2(nullptr), 2);
    EXPECT_EQ(stream.Start(), 2);
    uint32_t frames = 5;
    EXPECT_EQ(stream.ReadBlock(nullptr, &frames), 2);
    EXPECT_EQ(frames, 0u);
    EXPECT_EQ(stream.SetSourceStream(&stream), 6);
    EXPECT_EQ(stream.GetSourceStream(), nullptr);
    EXPECT_STREQ(stream.GetStreamName(), "AudioReader");
}

} // namespace
} // namespace tessarin
