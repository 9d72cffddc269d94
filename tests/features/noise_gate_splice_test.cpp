#include "features/noise_gate_splice.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "audio/pcm_pre_emph_stream.h"
#include "audio/resampled_pcm_stream.h"
#include "features/scripted_pcm_stream.h"
#include "features/spectral_stream.h"
#include "features/test_descriptors.h"
#include "support/signals.h"

namespace tessarin {
namespace {

using testing::ElementsAre;

/// Noise with a quiet stretch in the middle.
std::vector<float> SpokenTwice() {
    std::vector<float> samples = test::WhiteNoise(24000, 9000.0f, 3);
    for (size_t i = 8000; i < 16000; ++i) {
        samples[i] /= 300.0f;
    }
    return samples;
}

std::vector<std::string> StageNames(const CSpectralStream& stream) {
    std::vector<std::string> names;
    for (CPCMRdrStream* stage = stream.GetSource(); stage != nullptr && names.size() < 9;
         stage = stage->GetSourceStream()) {
        names.emplace_back(stage->GetStreamName());
    }
    return names;
}

/// A chain of members, taken apart before they go.
struct chain {
    explicit chain(bool withResampler, bool withEmphasis) : reader(SpokenTwice()) {
        test::SetMelBands(descriptor, 24);
        const PCMFormat target{16000u << 16, 16, 1};
        CPCMRdrStream* last = &reader;
        if (withResampler) {
            EXPECT_EQ(resampler.Instantiate(last, &target, 1, 0.8f), 0);
            last = &resampler;
        }
        if (withEmphasis) {
            EXPECT_EQ(emphasis.Instantiate(last, 1, 0.9f), 0);
            last = &emphasis;
        }
        EXPECT_EQ(spectral.Init2(last, 1, &descriptor), 0);
        spectral.SetProcessingFlags(kDecibelEnergy);
        last->Start();
    }
    ~chain() {
        spectral.SetSource(nullptr);
        static_cast<void>(emphasis.SetSourceStream(nullptr));
        static_cast<void>(resampler.SetSourceStream(nullptr));
    }

    error_code Gate() { return InsertNoiseGate(spectral, -30.0f, 0.0f, 0, 0, 0); }

    test::ScriptedPcmStream reader;
    CResampledPCMStream resampler;
    CPCMPreEmphStream emphasis;
    CSpectralFeatureDescriptor descriptor;
    CSpectralStream spectral;
};

/// The energies of all observations, in decibels.
std::vector<float> Energies(CSpectralStream& stream) {
    std::vector<float> energies(stream.GetNumObservations());
    float features[kObservationScratch];
    for (float& energy : energies) {
        EXPECT_EQ(stream.GetObservation(features, &energy), 0);
    }
    return energies;
}

TEST(InsertNoiseGate, StandsWhereTheAudioHasTheRateOfTheAnalysis) {
    chain whole(true, true);
    ASSERT_EQ(whole.Gate(), 0);
    EXPECT_THAT(StageNames(whole.spectral),
                ElementsAre("PreEmph", "NoiseGateNonRT", "Resample", "AudioReader"));
    chain withoutEmphasis(true, false);
    ASSERT_EQ(withoutEmphasis.Gate(), 0);
    EXPECT_THAT(StageNames(withoutEmphasis.spectral),
                ElementsAre("NoiseGateNonRT", "Resample", "AudioReader"));
    chain reader(false, false);
    ASSERT_EQ(reader.Gate(), 0);
    EXPECT_THAT(StageNames(reader.spectral), ElementsAre("NoiseGateNonRT", "AudioReader"));
}

TEST(InsertNoiseGate, SilencesWhatIsAnalysed) {
    chain plain(true, true);
    chain gated(true, true);
    ASSERT_EQ(gated.Gate(), 0);
    const auto before = Energies(plain.spectral);
    const auto after = Energies(gated.spectral);
    ASSERT_EQ(before.size(), after.size());
    EXPECT_EQ(before[20], after[20]);
    EXPECT_GT(before[75], 20.0f);
    EXPECT_LT(after[75], 1.0f);
    gated.spectral.Restart(); // which listens and gates again
    EXPECT_EQ(Energies(gated.spectral), after);
}

TEST(InsertNoiseGate, FindsNoPlace) {
    CSpectralStream empty;
    EXPECT_EQ(InsertNoiseGate(empty, -30.0f, 0, 0, 0, 0), kNotAvailable);
    chain unconnected(false, true);
    static_cast<void>(unconnected.emphasis.SetSourceStream(nullptr));
    EXPECT_EQ(unconnected.Gate(), kNotAvailable);

    /// A host's stage that is its own source.
    struct loop : test::ScriptedPcmStream {
        loop() : ScriptedPcmStream({}) {}
        CPCMRdrStream* GetSourceStream() override { return this; }
    } ring;
    chain looped(false, false);
    looped.spectral.SetSource(&ring);
    EXPECT_EQ(looped.Gate(), kNotAvailable);
}

} // namespace
} // namespace tessarin
