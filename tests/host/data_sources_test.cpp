#include <cstring>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/riff_builder.h"
#include "support/temp_file.h"
#include "tessarin/tessarin.h"

namespace {

using tessarin::IPCMDataSource;
using tessarin::IPCMDataSourceStream;
using tessarin::PCMFormat;
using tessarin::test::TempFile;
using testing::ElementsAre;
using testing::ElementsAreArray;

IPCMDataSource* Untouched() {
    return reinterpret_cast<IPCMDataSource*>(1);
}

std::vector<int16_t> Samples(IPCMDataSource& source) {
    std::vector<int16_t> samples(static_cast<size_t>(source.GetNumSamples()));
    uint32_t count = static_cast<uint32_t>(samples.size());
    EXPECT_EQ(source.ReadSamplesInt16(samples.data(), 0, &count, 1), 0);
    return samples;
}

TEST(DataSources, ReadTheFirstChannelAtTheRateThatIsAsked) {
    std::vector<int16_t> interleaved;
    for (int16_t i = 0; i < 800; ++i) {
        interleaved.push_back(i);
        interleaved.push_back(static_cast<int16_t>(-i));
    }
    const TempFile file(tessarin::test::WavFile(8000, 2, interleaved), ".wav");
    IPCMDataSource* source = Untouched();
    const PCMFormat same = {8000u << 16, 8, 7};
    ASSERT_EQ(CreatePCMDataSource(file.Path(), &same, nullptr, &source), 0);
    const std::vector<int16_t> samples = Samples(*source);
    ASSERT_EQ(samples.size(), 800u);
    EXPECT_EQ(samples[799], 799) << "equal rates leave the samples as they are";
    EXPECT_EQ(source->GetBytesPerFrame(), 2u);
    DestroyPCMDataSource(source);

    const PCMFormat twice = {16000u << 16, 16, 1};
    ASSERT_EQ(CreatePCMDataSource(file.Path(), &twice, nullptr, &source), 0);
    EXPECT_EQ(source->GetNumSamples(), 1600);
    DestroyPCMDataSource(source);
}

TEST(DataSources, ReadEachChannelIntoItsOwnPlace) {
    const std::vector<int16_t> interleaved = {1, 10, 100, 2, 20, 200};
    const TempFile three(tessarin::test::WavFile(22050, 3, interleaved), ".wav");
    IPCMDataSource* channels[] = {Untouched(), Untouched(), Untouched(), Untouched()};
    ASSERT_EQ(CreateMultiChannelPCMDataSource(three.Path(), nullptr, channels), 0);
    EXPECT_THAT(Samples(*channels[0]), ElementsAre(1, 2));
    EXPECT_THAT(Samples(*channels[1]), ElementsAre(10, 20));
    EXPECT_THAT(Samples(*channels[2]), ElementsAre(100, 200));
    EXPECT_EQ(channels[2]->GetSampleRate(), 22050u << 16);
    EXPECT_EQ(channels[3], Untouched());
    for (int i = 0; i < 3; ++i) {
        DestroyPCMDataSource(channels[i]);
    }

    const TempFile mono(tessarin::test::WavFile(22050, 1, interleaved), ".wav");
    channels[1] = Untouched();
    ASSERT_EQ(CreateMultiChannelPCMDataSource(mono.Path(), nullptr, channels), 0);
    EXPECT_EQ(channels[1], nullptr);
    EXPECT_THAT(Samples(*channels[0]), ElementsAreArray(interleaved));
    DestroyPCMDataSource(channels[0]);
}

TEST(DataSources, FailuresLeaveNothingBehind) {
    IPCMDataSource* out[] = {Untouched(), Untouched()};
    const PCMFormat format = {16000u << 16, 16, 1};
    EXPECT_EQ(CreatePCMDataSource("no-such-file.wav", &format, nullptr, out), 10);
    EXPECT_EQ(out[0], nullptr);
    out[0] = Untouched();
    EXPECT_EQ(CreateMultiChannelPCMDataSource("no-such-file.wav", nullptr, out), 10);
    EXPECT_THAT(out, ElementsAre(nullptr, nullptr));
    EXPECT_EQ(CreatePCMDataSourceFromQuibStream(nullptr, nullptr, out), 2);

    const TempFile file(tessarin::test::WavFile(8000, 1, std::vector<int16_t>(80)), ".wav");
    const PCMFormat noRate = {8000, 16, 1}; // forgot the fixed point
    EXPECT_EQ(CreatePCMDataSource(file.Path(), &noRate, nullptr, out), 2);
    EXPECT_EQ(CreatePCMDataSource(file.Path(), nullptr, nullptr, out), 2);
    EXPECT_EQ(CreatePCMDataSource(nullptr, &format, nullptr, out), 2);
    EXPECT_EQ(out[0], nullptr);

    EXPECT_EQ(CreatePCMDataSource(file.Path(), &format, nullptr, nullptr), 2);
    EXPECT_EQ(CreateMultiChannelPCMDataSource(file.Path(), nullptr, nullptr), 2);
    EXPECT_EQ(CreatePCMDataSourceFromQuibStream(nullptr, nullptr, nullptr), 2);
    EXPECT_EQ(CreatePCMDataSourceStream(nullptr, nullptr), 2);
    DestroyPCMDataSource(nullptr);
    EXPECT_EQ(DestroyPCMDataSourceStream(nullptr), 0);
}

TEST(DataSources, AStreamOverASourceMakesAnother) {
    const std::vector<int16_t> samples = {1, 2, 3, 4, 5, 6};
    const TempFile file(tessarin::test::WavFile(8000, 1, samples), ".wav");
    IPCMDataSource* source = nullptr;
    const PCMFormat format = {8000u << 16, 16, 1};
    ASSERT_EQ(CreatePCMDataSource(file.Path(), &format, nullptr, &source), 0);
    IPCMDataSourceStream* stream = nullptr;
    ASSERT_EQ(CreatePCMDataSourceStream(source, &stream), 0);
    stream->SetRange(2, 4);
    IPCMDataSource* part = nullptr;
    ASSERT_EQ(CreatePCMDataSourceFromQuibStream(stream, nullptr, &part), 0);
    // Kept: the stream counts samples, and what reads it takes them for bytes.
    EXPECT_THAT(Samples(*part), ElementsAre(3, 4));
    DestroyPCMDataSource(part);
    EXPECT_EQ(DestroyPCMDataSourceStream(stream), 0);
    DestroyPCMDataSource(source);
}

} // namespace
