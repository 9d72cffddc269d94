#include <cstring>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "shipped_data.h"
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

/// Samples of three channels in the width `bits`, and what they are as 16 bits.
tessarin::test::bytes ThreeChannels(uint16_t bits) {
    tessarin::test::ByteBuilder data;
    for (const int value : {1, 10, 100, 2, 20, 110}) {
        bits == 8 ? data.U8(static_cast<uint8_t>(128 + value))
                  : data.U16(static_cast<uint16_t>(value * 256));
    }
    return tessarin::test::RiffFile(
        "WAVE", {tessarin::test::RiffChunk("fmt ", tessarin::test::PcmFormat(22050, bits, 3)),
                 tessarin::test::RiffChunk("data", data.Take())});
}

TEST(DataSources, ReadAllChannelsAtOnceIntoTheRoomThereIs) {
    for (const uint16_t bits : {uint16_t{8}, uint16_t{16}}) {
        SCOPED_TRACE(bits);
        const TempFile file(ThreeChannels(bits), ".wav");
        uint32_t count = 0;
        ASSERT_EQ(GetPCMChannelCount(file.Path(), &count), 0);
        EXPECT_EQ(count, 3u);
        IPCMDataSource* channels[] = {Untouched(), Untouched(), Untouched(), Untouched()};
        count = 0;
        EXPECT_EQ(CreateMultiChannelPCMDataSources(file.Path(), nullptr, channels, 2, &count), 3);
        EXPECT_EQ(count, 3u);
        EXPECT_THAT(channels, ElementsAre(nullptr, nullptr, Untouched(), Untouched()));

        ASSERT_EQ(CreateMultiChannelPCMDataSources(file.Path(), nullptr, channels, 4, &count), 0);
        EXPECT_EQ(count, 3u);
        EXPECT_EQ(channels[3], nullptr);
        IPCMDataSource* oneByOne[3] = {};
        ASSERT_EQ(CreateMultiChannelPCMDataSource(file.Path(), nullptr, oneByOne), 0);
        EXPECT_THAT(Samples(*channels[2]), ElementsAre(100 * 256, 110 * 256));
        for (size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(Samples(*channels[i]), Samples(*oneByOne[i]));
            EXPECT_EQ(channels[i]->GetSampleRate(), 22050u << 16);
            DestroyPCMDataSource(channels[i]);
            DestroyPCMDataSource(oneByOne[i]);
        }
    }
}

TEST(DataSources, FailuresLeaveNothingBehind) {
    IPCMDataSource* out[] = {Untouched(), Untouched()};
    const PCMFormat format = {16000u << 16, 16, 1};
    EXPECT_EQ(CreatePCMDataSource("no-such-file.wav", &format, nullptr, out), 10);
    EXPECT_EQ(out[0], nullptr);
    out[0] = Untouched();
    EXPECT_EQ(CreateMultiChannelPCMDataSource("no-such-file.wav", nullptr, out), 10);
    EXPECT_THAT(out, ElementsAre(nullptr, nullptr));
    out[0] = Untouched();
    uint32_t count = 7;
    EXPECT_EQ(CreateMultiChannelPCMDataSources("no-such-file.wav", nullptr, out, 1, &count), 10);
    EXPECT_EQ(out[0], nullptr);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(GetPCMChannelCount("no-such-file.wav", &count), 10);
    EXPECT_EQ(GetPCMChannelCount(nullptr, &count), 2);
    EXPECT_EQ(GetPCMChannelCount("no-such-file.wav", nullptr), 2);
    EXPECT_EQ(CreateMultiChannelPCMDataSources(nullptr, nullptr, nullptr, 1, &count), 2);
    EXPECT_EQ(CreateMultiChannelPCMDataSources(nullptr, nullptr, out, 2, nullptr), 2);
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

/// The energies of a recording of loud speech, 400 ms of quiet, a click of 100 ms, 400 ms of quiet
/// and loud speech, an observation each 10 ms.
std::vector<float> GatedEnergies(float thresholdDb, float percentile, int32_t rampMs,
                                 int32_t minQuietMs, int32_t maxBlipMs) {
    std::vector<int16_t> samples;
    for (const auto& [ms, amplitude] :
         {std::pair{1000, 9000}, {400, 50}, {100, 9000}, {400, 50}, {1000, 9000}}) {
        for (int i = 0; i < ms * 16; ++i) {
            samples.push_back(static_cast<int16_t>(i % 8 < 4 ? amplitude : -amplitude));
        }
    }
    const TempFile file(tessarin::test::WavFile(16000, 1, samples), ".wav");
    const shipped_model shipped;
    tessarin::IObservationStream* stream = nullptr;
    EXPECT_EQ(CreateObservationStreamFromAudioFile(file.Path(), shipped.model, &stream), 0);
    EXPECT_EQ(AddNoiseGate(stream, thresholdDb, percentile, rampMs, minQuietMs, maxBlipMs), 0);
    stream->SetProcessingFlags(2); // decibels
    std::vector<float> energies(stream->GetNumObservations());
    std::vector<float> features(64);
    for (float& energy : energies) {
        EXPECT_EQ(stream->GetObservation(features.data(), &energy), 0);
    }
    DestroyObservationStream(stream);
    return energies;
}

TEST(NoiseGate, TakesItsSettingsInOrder) {
    constexpr float kSilent = 1.0f;
    const auto gated = GatedEnergies(-30.0f, 0.9f, 40, 500, 200);
    EXPECT_LT(gated[115], kSilent) << "the ramp is short";
    EXPECT_GT(gated[145], 50.0f) << "the quiet around the click is too short for it to go";
    EXPECT_GT(gated[101], kSilent) << "there is a ramp";
    EXPECT_LT(GatedEnergies(-30.0f, 0.9f, 40, 300, 200)[145], kSilent);
    EXPECT_GT(GatedEnergies(-30.0f, 0.9f, 40, 300, 90)[145], 50.0f);
    EXPECT_LT(GatedEnergies(0.0f, 0.9f, 40, 300, 90)[115], kSilent) << "by the percentile";
    EXPECT_EQ(AddNoiseGate(nullptr, -30.0f, 0.0f, 0, 0, 0), 6);
}

} // namespace
