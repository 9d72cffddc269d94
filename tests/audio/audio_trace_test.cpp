#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "audio/files/nist_sphere_rdr_stream.h"
#include "audio/files/wav_rdr_stream.h"
#include "audio/pcm_pre_emph_stream.h"
#include "audio/quib_stream.h"
#include "audio/resampled_pcm_stream.h"
#include "host_stream.h"
#include "memory_stream.h"
#include "support/logged_lines.h"
#include "support/riff_builder.h"
#include "support/temp_file.h"

namespace tessarin {
namespace {

using test::LoggedLines;
using testing::ElementsAre;

TEST(AudioTrace, NamesWhatTheReadersDo) {
    const test::TempFile wav(test::WavFile(16000, 1, std::vector<int16_t>(3)), ".wav");
    EXPECT_THAT(LoggedLines([&wav] {
                    CWavRdrStream stream;
                    EXPECT_EQ(stream.Open(wav.Path()), 0);
                    EXPECT_EQ(stream.Start(), 0);
                    EXPECT_NE(stream.Open("no-such.wav"), 0);
                    CNistSphereRdrStream silent;
                    EXPECT_EQ(silent.Open("no-such.sph"), 10);
                }),
                ElementsAre("Enter: CWavRdrStream::Open", "Leave: CWavRdrStream::Open",
                            "Enter: CWavRdrStream::Start", "Leave: CWavRdrStream::Start",
                            "Enter: CWavRdrStream::Open", "Enter: CWavRdrStream::Close",
                            "Leave: CWavRdrStream::Close", "Leave: CWavRdrStream::Open"));

    test::HostStream host({16000, 16, 1}, {});
    EXPECT_THAT(LoggedLines([&host] {
                    CQuibStream stream;
                    EXPECT_EQ(stream.Open2(&host), 0);
                    EXPECT_EQ(stream.Start(), 0);
                    EXPECT_EQ(stream.Close(), 0);
                }),
                ElementsAre("Enter: CQuibStream::Open2", "Enter: CQuibStream::Open",
                            "Leave: CQuibStream::Open", "Leave: CQuibStream::Open2",
                            "Enter: CQuibStream::Start", "Leave: CQuibStream::Start",
                            "Enter: CQuibStream::Close", "Leave: CQuibStream::Close"));
}

TEST(AudioTrace, NamesTheResamplerAndItsRates) {
    const auto source = test::MonoStream(48000, {});
    EXPECT_THAT(LoggedLines([&source] {
                    const PCMFormat target = test::Format(16000, 16, 1);
                    CResampledPCMStream resampled;
                    EXPECT_EQ(resampled.Instantiate(source.get(), &target, 1, 0.8f), 0);
                    CPCMPreEmphStream silent;
                    EXPECT_EQ(silent.Instantiate(&resampled, 1, 0.97f), 0);
                }),
                ElementsAre("Enter: CResampledPCMStream::Instantiate",
                            "Enter: CResampler::Instantiate48000 16000",
                            "Leave: CResampler::Instantiate",
                            "Leave: CResampledPCMStream::Instantiate"));
}

} // namespace
} // namespace tessarin
