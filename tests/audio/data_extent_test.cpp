#include "audio/files/data_extent.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "audio/files/audio_file_registry.h"
#include "audio/files/pcm_data_source.h"
#include "audio/non_rtdb_noise_gate_stream.h"
#include "audio/resampled_pcm_stream.h"
#include "memory_stream.h"
#include "sphere_builder.h"
#include "support/riff_builder.h"
#include "support/temp_file.h"

namespace tessarin {
namespace {

using test::ByteBuilder;
using test::bytes;
using test::PcmFormat;
using test::RiffChunk;
using test::TempFile;

constexpr uint32_t kClaimedBytes = 0x7FFFFFF0;
constexpr uint32_t kHeld = 32; // sample frames in the file

bytes BoastfulWav(uint16_t bits) {
    return ByteBuilder()
        .Text("RIFF")
        .U32(kClaimedBytes)
        .Text("WAVE")
        .Bytes(RiffChunk("fmt ", PcmFormat(16000, bits, 1)))
        .Text("data")
        .U32(kClaimedBytes)
        .Bytes(bytes(kHeld * bits / 8, 0x40))
        .Take();
}

struct boast {
    const char* extension;
    bytes content;
    uint32_t claimed; ///< samples
};

/// Files of a hundred bytes that claim gigabytes.
std::vector<boast> Boasts() {
    return {{".wav", BoastfulWav(16), kClaimedBytes / 2},
            {".wav", BoastfulWav(24), kClaimedBytes / 3},
            {".sph", test::SphereFile("sample_count -i 1073741820\n", bytes(kHeld * 2, 0x40)),
             1073741820}};
}

counted_ptr<CPCMRdrStream> Opened(const TempFile& file) {
    CPCMRdrStream* opened = nullptr;
    EXPECT_EQ(OpenAudioFileStream(file.Path(), &opened), 0);
    return counted_ptr<CPCMRdrStream>::Adopt(opened);
}

TEST(DataExtent, ReadersKeepTheClaimAndKnowWhatIsHeld) {
    for (const boast& each : Boasts()) {
        SCOPED_TRACE(each.extension);
        const TempFile file(each.content, each.extension);
        const auto reader = Opened(file);
        EXPECT_EQ(reader->GetNumSamples(), each.claimed);
        EXPECT_EQ(reader->GetHeldSamples(), kHeld);
        EXPECT_EQ(test::ReadAllFloats(*reader, 10).size(), kHeld);

        CResampledPCMStream resampled;
        const PCMFormat target = test::Format(8000, 16, 1);
        ASSERT_EQ(resampled.Instantiate(reader.get(), &target, 1, 0.8f), 0);
        EXPECT_EQ(resampled.GetHeldSamples(), kHeld / 2);
        EXPECT_GT(resampled.GetNumSamples(), each.claimed / 3);
    }
}

TEST(DataExtent, GateAndLoaderTakeRoomForWhatIsHeld) {
    for (const boast& each : Boasts()) {
        SCOPED_TRACE(each.extension);
        const TempFile file(each.content, each.extension);
        const auto reader = Opened(file);
        NonRTDBNoiseGateStream gate;
        ASSERT_EQ(gate.Instantiate(reader.get(), 1, -90.0f, 0, 0, 0, 0), 0);
        EXPECT_EQ(gate.Start(), 0);
        EXPECT_EQ(test::ReadAllFloats(gate, 100).size(), kHeld);

        CPCMDataSource source;
        EXPECT_EQ(source.LoadFromPCMStream(reader.get(), nullptr), 0);
        EXPECT_EQ(source.GetNumSamples(), kHeld);
        EXPECT_EQ(source.GetByteLength(), kHeld * 2);
    }
}

TEST(DataExtent, WholeFilesHoldWhatTheyClaim) {
    const TempFile file(test::WavFile(44100, 1, std::vector<int16_t>(1000)), ".wav");
    const auto reader = Opened(file);
    EXPECT_EQ(reader->GetHeldSamples(), 1000u);
    CResampledPCMStream resampled;
    const PCMFormat target = test::Format(16000, 16, 1);
    ASSERT_EQ(resampled.Instantiate(reader.get(), &target, 1, 0.8f), 0);
    EXPECT_EQ(resampled.GetHeldSamples(), resampled.GetNumSamples());
}

} // namespace
} // namespace tessarin
