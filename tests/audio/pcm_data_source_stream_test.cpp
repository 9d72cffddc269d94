#include "audio/files/pcm_data_source_stream.h"

#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "audio/files/pcm_data_source.h"
#include "memory_stream.h"

namespace tessarin {
namespace {

using test::MonoStream;
using testing::ElementsAre;

struct PcmDataSourceStream : testing::Test {
    PcmDataSourceStream() {
        std::vector<int16_t> samples(200);
        for (size_t i = 0; i < samples.size(); ++i) {
            samples[i] = static_cast<int16_t>(i);
        }
        EXPECT_EQ(source.LoadFromPCMStream(MonoStream(16000, samples).get(), nullptr), 0);
    }

    static std::vector<int16_t> Read(IQuibPCMStream& stream, int32_t bytes) {
        std::vector<int16_t> samples(static_cast<size_t>(bytes));
        const int32_t delivered = stream.Read(samples.data(), bytes);
        samples.resize(static_cast<size_t>(delivered) / 2);
        return samples;
    }

    CPCMDataSource source;
};

TEST_F(PcmDataSourceStream, ReadsFromTheStartOfItsRange) {
    CPCMDataSourceStream stream(&source);
    EXPECT_THAT(Read(stream, 5), ElementsAre(0, 1)); // whole samples
    stream.SetRange(100, 50);
    EXPECT_THAT(Read(stream, 2), ElementsAre(2)) << "until it starts again";
    EXPECT_EQ(stream.Start(), 0);
    EXPECT_THAT(Read(stream, 6), ElementsAre(100, 101, 102));
    EXPECT_THAT(Read(stream, 2), ElementsAre(103));
}

TEST_F(PcmDataSourceStream, ReadsOnBeyondTheRangeToTheEndOfTheSource) {
    CPCMDataSourceStream stream(&source);
    stream.SetRange(100, 50);
    stream.Start();
    EXPECT_EQ(Read(stream, 1000).size(), 100u);
    EXPECT_EQ(Read(stream, 1000).size(), 0u);
}

// Kept: the size counts samples, although that of other streams counts bytes.
TEST_F(PcmDataSourceStream, GivesItsSizeInSamplesAndHoldsItToTheSource) {
    constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
    struct range {
        int32_t start, count, firstSample;
        uint32_t size;
    };
    CPCMDataSourceStream stream(&source);
    EXPECT_EQ(stream.GetSize(), 200u);
    for (const range& r : {range{100, 50, 100, 50}, range{150, kMost, 150, 50},
                           range{200, 10, 0, 10}, range{-5, 10, 0, 10}, range{5, -10, 5, 0}}) {
        SCOPED_TRACE(testing::Message() << r.start << " " << r.count);
        stream.SetRange(r.start, r.count);
        EXPECT_EQ(stream.GetSize(), r.size);
        stream.Start();
        EXPECT_THAT(Read(stream, 2), ElementsAre(r.firstSample));
    }
}

TEST_F(PcmDataSourceStream, IsSilentWithoutASource) {
    CPCMDataSourceStream stream(nullptr);
    PCMFormat format{1, 1, 1};
    stream.GetFormat(&format);
    EXPECT_EQ(format.channels, 0);
    EXPECT_EQ(stream.GetSize(), 0u);
    EXPECT_EQ(stream.Start(), 0);
    EXPECT_THAT(Read(stream, 8), ElementsAre());
    stream.SetRange(3, 4);
    stream.SetSource(&source);
    EXPECT_THAT(Read(stream, 4), ElementsAre(0, 1));
    EXPECT_EQ(stream.Read(nullptr, 4), 0);
    EXPECT_THAT(Read(stream, 0), ElementsAre());
}

TEST_F(PcmDataSourceStream, WritesNoFormatToNull) {
    CPCMDataSourceStream(&source).GetFormat(nullptr);
    EXPECT_EQ(source.GetFormat(nullptr), kInvalidArgument);
}

} // namespace
} // namespace tessarin
