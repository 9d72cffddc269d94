#include "audio/files/pcm_data_source.h"

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host_stream.h"
#include "memory_stream.h"
#include "support/recording_sink.h"

namespace tessarin {
namespace {

using test::bytes;
using test::Format;
using test::HostStream;
using test::Int16Bytes;
using test::MemoryStream;
using test::MonoStream;
using test::recording_sink;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Pair;

/// A source with the samples of `content`, in any readable format.
std::unique_ptr<CPCMDataSource> Source(PCMFormat format, bytes content) {
    HostStream host(format, std::move(content));
    auto source = std::make_unique<CPCMDataSource>();
    EXPECT_EQ(source->LoadFromQuibStream(&host, nullptr), 0);
    return source;
}

std::unique_ptr<CPCMDataSource> MonoSource(const std::vector<int16_t>& samples) {
    return Source(Format(16000, 16, 1), Int16Bytes(samples));
}

std::vector<int16_t> Samples(CPCMDataSource& source) {
    std::vector<int16_t> samples(static_cast<size_t>(source.GetNumSamples()));
    uint32_t count = static_cast<uint32_t>(samples.size());
    EXPECT_EQ(source.ReadSamplesInt16(samples.data(), 0, &count, 1), 0);
    return samples;
}

std::vector<int16_t> Ramp(size_t count) {
    std::vector<int16_t> ramp(count);
    for (size_t i = 0; i < count; ++i) {
        ramp[i] = static_cast<int16_t>(i);
    }
    return ramp;
}

TEST(PcmDataSource, ConvertsBetweenSamplesBytesAndTime) {
    constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
    const auto source = Source(Format(16000, 16, 2), bytes(400));
    EXPECT_EQ(source->GetNumSamples(), 100);
    EXPECT_EQ(source->MsToSamples(1000), 16000);
    EXPECT_EQ(source->MsToSamples(-1000), -16000);
    EXPECT_EQ(source->MsToSamples(kMost), kMost);
    EXPECT_DOUBLE_EQ(source->SamplesToMs(16000), 1000.0);
    EXPECT_EQ(source->BytesToSamples(403), 100);
    EXPECT_EQ(source->SamplesToBytes(100), 400);
    EXPECT_EQ(source->SamplesToBytes(kMost), kMost);
    EXPECT_EQ(Source(Format(22050, 8, 1), bytes(4))->MsToSamples(1), 22); // of 22.05

    const CPCMDataSource empty;
    EXPECT_EQ(empty.BytesToSamples(7), 0);
    EXPECT_EQ(empty.SamplesToMs(7), 0.0);
}

TEST(PcmDataSource, TakesARateInPlainHz) {
    EXPECT_EQ(Source({44100, 16, 1}, bytes(4))->GetSampleRate(), 44100u << 16);
}

TEST(PcmDataSource, ReadsUpToTheLastSample) {
    const auto source = MonoSource(Ramp(8));
    int16_t buffer[10] = {};
    uint32_t count = 10;
    EXPECT_EQ(source->ReadSamples(buffer, 7, &count, 1), 0);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(buffer[0], 7);
    for (const int32_t start : {8, 9, -1, std::numeric_limits<int32_t>::min()}) {
        SCOPED_TRACE(start);
        count = 10;
        EXPECT_EQ(source->ReadSamples(buffer, start, &count, 0), 3);
        EXPECT_EQ(count, 0u);
    }
    count = std::numeric_limits<uint32_t>::max();
    EXPECT_EQ(source->ReadSamples(buffer, 1, &count, 5), 0) << "mono has but one channel to give";
    EXPECT_EQ(count, 7u);
    EXPECT_EQ(source->ReadSamples(nullptr, 0, &count, 1), 2);
}

TEST(PcmDataSource, WidensEightBitsInPlace) {
    const auto source = Source(Format(8000, 8, 1), {128, 0, 255, 129});
    EXPECT_THAT(Samples(*source), ElementsAre(0, -32768, 32512, 256));
    float values[4];
    uint32_t count = 3;
    EXPECT_EQ(source->ReadSamplesFloat(values, 1, &count, 1), 0);
    EXPECT_THAT(std::vector<float>(values, values + count), ElementsAre(-32768, 32512, 256));

    const auto stereo = Source(Format(8000, 8, 2), {128, 0, 255, 129});
    count = 2;
    EXPECT_EQ(stereo->ReadSamplesFloat(values, 0, &count, 0), 0);
    EXPECT_THAT(values, ElementsAre(0, -32768, 32512, 256));
}

// Kept: reading one channel of several writes into the source; see the interface.
TEST(PcmDataSource, ReadingOneChannelOfSeveralWritesIntoTheSource) {
    const auto source = Source(Format(16000, 16, 2), Int16Bytes({1, 2, 3, 4, 5, 6}));
    std::vector<int16_t> buffer = {10, 20, 30, 40, 50, 60};
    uint32_t count = 9;
    EXPECT_EQ(source->ReadSamples(buffer.data(), 1, &count, 2), 0);
    EXPECT_EQ(count, 2u);
    EXPECT_THAT(buffer, ElementsAre(10, 20, 30, 40, 50, 60));
    EXPECT_THAT(bytes(source->GetData(), source->GetData() + 12),
                ElementsAreArray(Int16Bytes({1, 2, 3, 10, 30, 6})));

    const auto narrow = Source(Format(16000, 8, 3), {1, 2, 3, 4, 5, 6});
    bytes values = {10, 20, 30, 40, 50, 60};
    count = 2;
    EXPECT_EQ(narrow->ReadSamples(values.data(), 0, &count, 3), 0);
    EXPECT_THAT(bytes(narrow->GetData(), narrow->GetData() + 6), ElementsAre(1, 2, 10, 40, 5, 6));
    for (const int32_t channel : {4, -1}) {
        count = 2;
        EXPECT_EQ(narrow->ReadSamples(values.data(), 0, &count, channel), 3);
        EXPECT_EQ(count, 0u);
    }
}

TEST(PcmDataSource, WritesTruncatedSamplesInASymmetricRange) {
    const auto source = MonoSource(std::vector<int16_t>(6, 7));
    const float values[] = {40000.0f, -40000.0f, 1.9f, -1.9f, std::nanf("")};
    EXPECT_EQ(source->WriteSamplesFloat(values, 0, 5), 0);
    EXPECT_THAT(Samples(*source), ElementsAre(32767, -32767, 1, -1, 0, 7));
    EXPECT_EQ(source->WriteSamplesFloat(values, 5, 5), 0) << "cut at the end";
    EXPECT_EQ(Samples(*source)[5], 32767);
    EXPECT_EQ(source->WriteSamplesFloat(values, 6, 1), 3);
    EXPECT_EQ(source->WriteSamplesFloat(values, -1, 1), 3);
    EXPECT_EQ(source->WriteSamplesFloat(values, 0, -1), 3);
    EXPECT_EQ(Source(Format(8000, 8, 1), bytes(4))->WriteSamplesFloat(values, 0, 1), 6);
    EXPECT_EQ(Source(Format(8000, 16, 2), bytes(4))->WriteSamplesFloat(values, 0, 1), 6);
}

TEST(PcmDataSource, CopiesAreIndependent) {
    const auto source = MonoSource({1, 2, 3});
    IPCMDataSource* const clone = source->Clone();
    ASSERT_NE(clone, nullptr);
    const float nine = 9.0f;
    source->WriteSamplesFloat(&nine, 0, 1);

    const auto copy = Source(Format(8000, 8, 2), bytes(40));
    EXPECT_EQ(copy->CopyFrom(clone), 0);
    EXPECT_EQ(copy->CopyFrom(copy.get()), 0);
    EXPECT_THAT(Samples(*copy), ElementsAre(1, 2, 3));
    EXPECT_EQ(copy->GetSampleRate(), 16000u << 16);
    clone->Destroy();

    // Kept: hosts know any failure of a copy by code 7.
    EXPECT_EQ(copy->CopyFrom(nullptr), 7);
    EXPECT_EQ(copy->GetNumSamples(), 0);
    EXPECT_EQ(copy->GetData(), nullptr);
}

TEST(PcmDataSource, LoadsAChainInTheBlocksOfTheFrontEnd) {
    const auto stream = MonoStream(16000, Ramp(1000));
    CPCMDataSource source;
    recording_sink sink;
    ASSERT_EQ(source.LoadFromPCMStream(stream.get(), &sink), 0);
    EXPECT_THAT(Samples(source), ElementsAreArray(Ramp(1000)));
    EXPECT_THAT(sink.calls, ElementsAre(Pair(352, 1000), Pair(512, 1000), Pair(672, 1000),
                                        Pair(832, 1000), Pair(992, 1000), Pair(1000, 1000)));
}

TEST(PcmDataSource, LoadsAHostStreamBlockAfterBlock) {
    HostStream host(Format(16000, 16, 1), Int16Bytes(Ramp(5000)));
    CPCMDataSource source;
    recording_sink sink;
    ASSERT_EQ(source.LoadFromQuibStream(&host, &sink), 0);
    EXPECT_THAT(Samples(source), ElementsAreArray(Ramp(5000)));
    EXPECT_THAT(sink.calls, ElementsAre(Pair(4128, 10000), Pair(8256, 10000), Pair(10000, 10000)));
}

TEST(PcmDataSource, StreamsThatPromiseTooMuchLeaveZeros) {
    struct PromisingStream : HostStream {
        using HostStream::HostStream;
        uint32_t GetSize() override { return HostStream::GetSize() + 5; }
    };
    PromisingStream host(Format(16000, 16, 1), Int16Bytes({1, 2}));
    CPCMDataSource source;
    ASSERT_EQ(source.LoadFromQuibStream(&host, nullptr), 0);
    EXPECT_EQ(source.GetByteLength(), 9);
    EXPECT_THAT(Samples(source), ElementsAre(1, 2, 0, 0));

    for (const int32_t answer : {-1, 0, 1000000}) { // the last is held to what was asked
        SCOPED_TRACE(answer);
        host.answer = answer;
        EXPECT_EQ(source.LoadFromQuibStream(&host, nullptr), 0);
        EXPECT_THAT(Samples(source), Each(0));
    }
}

// Kept: a load that was cancelled or failed on the way succeeds with nothing in the source.
TEST(PcmDataSource, LoadsThatDoNotFinishGiveAnEmptySource) {
    const auto expectEmpty = [](CPCMDataSource& source, error_code code) {
        EXPECT_EQ(code, 0);
        EXPECT_EQ(source.GetNumSamples(), 0);
        EXPECT_EQ(source.GetByteLength(), 0);
        int16_t sample;
        uint32_t count = 1;
        EXPECT_EQ(source.ReadSamples(&sample, 0, &count, 0), 3);
        EXPECT_EQ(source.WriteSamplesFloat(nullptr, 0, 0), 2);
    };
    CPCMDataSource source;
    recording_sink sink(1);
    const auto stream = MonoStream(16000, Ramp(1000));
    expectEmpty(source, source.LoadFromPCMStream(stream.get(), &sink));
    EXPECT_EQ(stream->reads, 2);

    HostStream host(Format(16000, 16, 1), Int16Bytes(Ramp(5000)));
    expectEmpty(source, source.LoadFromQuibStream(&host, &sink));

    stream->readsUntilFailure = 1;
    expectEmpty(source, source.LoadFromPCMStream(stream.get(), nullptr));
}

TEST(PcmDataSource, RefusesWhatItCannotHold) {
    struct HugeStream : HostStream {
        using HostStream::HostStream;
        uint32_t GetSize() override { return 0x80000000u; }
    };
    CPCMDataSource source;
    HugeStream huge(Format(16000, 16, 1), {});
    EXPECT_EQ(source.LoadFromQuibStream(&huge, nullptr), 1);
    EXPECT_EQ(source.GetByteLength(), 0);
    for (const PCMFormat& format : {PCMFormat{16000, 16, 0}, PCMFormat{16000, 24, 1}}) {
        HostStream host(format, bytes(6));
        EXPECT_EQ(source.LoadFromQuibStream(&host, nullptr), 12);
        MemoryStream stream(format, bytes(6));
        EXPECT_EQ(source.LoadFromPCMStream(&stream, nullptr), 12);
    }
    EXPECT_EQ(source.LoadFromQuibStream(nullptr, nullptr), 2);
    EXPECT_EQ(source.LoadFromPCMStream(nullptr, nullptr), 2);
}

} // namespace
} // namespace tessarin
