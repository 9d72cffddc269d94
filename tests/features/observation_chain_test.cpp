#include "features/observation_chain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numbers>
#include <vector>

#include "audio/host_stream.h"
#include "audio/memory_stream.h"
#include "features/analysed_speech.h"
#include "support/riff_builder.h"
#include "support/temp_file.h"

namespace tessarin {
namespace {

/// A host that delivers a tone of 16 bits on the first of its channels.
struct HostTone final : test::HostStream {
    HostTone(uint32_t rateHz, uint16_t channels, double hz = 500)
        : HostStream({rateHz, 16, channels}, Samples(rateHz, channels, hz)) {}
    error_code Start() override {
        HostStream::Start();
        return startCode;
    }
    static test::bytes Samples(uint32_t rateHz, uint16_t channels, double hz) {
        std::vector<int16_t> samples;
        for (const float sample : test::Sine(rateHz, hz, rateHz, 8000)) {
            samples.push_back(static_cast<int16_t>(sample));
            samples.insert(samples.end(), channels - 1u, int16_t{0});
        }
        return test::Int16Bytes(samples);
    }

    error_code startCode = kNoError;
};

TEST(ObservationChain, FitsAnyAudioToTheModel) {
    struct audio {
        uint32_t rateHz;
        uint16_t channels;
    };
    for (const audio& each : {audio{16000, 1}, audio{8000, 1}, audio{44100, 2}, audio{48000, 3}}) {
        SCOPED_TRACE(each.rateHz);
        test::analysis model;
        HostTone host(each.rateHz, each.channels);
        std::unique_ptr<CSpectralStream> stream;
        ASSERT_EQ(OpenObservationChain(&host, model.descriptor, stream), kNoError);
        EXPECT_FLOAT_EQ(stream->GetSampleRate(), 16000.0f);
        EXPECT_NEAR(stream->GetNumObservations(), 100, 1);
        std::vector<float> features(15);
        float energy = 0;
        for (int i = 0; i < 50; ++i) {
            ASSERT_EQ(stream->GetObservation(features.data(), &energy), kNoError);
        }
        std::vector<float> bands(24);
        uint32_t count = 0;
        ASSERT_EQ(stream->GetBandEnergies(bands.data(), &count), kNoError);
        const auto loudest = std::max_element(bands.begin(), bands.end()) - bands.begin();
        const tagBandFilter& band = model.descriptor.bands[static_cast<int32_t>(loudest)];
        EXPECT_LT(band.low, 500.0f);
        EXPECT_GT(band.high, 500.0f);
        // Only a converted signal goes through the filter and its design gain of 0.9; the window
        // takes a part of a sine's energy in either case.
        const float gain = each.rateHz == 16000 ? 1.0f : 0.9f;
        EXPECT_NEAR(energy / gain, 8000 * std::sqrt(0.4 * 0.9885), 150);
    }
}

TEST(ObservationChain, CutsOffAtFourFifthsOfTheBand) {
    const test::analysis model;
    const auto energyOf = [&](double hz) {
        HostTone host(48000, 1, hz);
        std::unique_ptr<CSpectralStream> stream;
        EXPECT_EQ(OpenObservationChain(&host, model.descriptor, stream), kNoError);
        std::vector<float> features(15);
        float energy = 0;
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(stream->GetObservation(features.data(), &energy), kNoError);
        }
        return energy;
    };
    EXPECT_NEAR(energyOf(6400) / energyOf(500), 0.5, 0.05); // half way between pass and stop
}

TEST(ObservationChain, Emphasizes) {
    test::analysis flat;
    test::analysis emphasized;
    emphasized.descriptor.preEmphasis = 0.97f;
    HostTone host(16000, 1);
    const auto energyOf = [&](const test::analysis& model) {
        std::unique_ptr<CSpectralStream> stream;
        EXPECT_EQ(OpenObservationChain(&host, model.descriptor, stream), kNoError);
        std::vector<float> features(15);
        float energy = 0;
        EXPECT_EQ(stream->GetObservation(features.data(), &energy), kNoError);
        return energy;
    };
    const double turn = 2 * std::numbers::pi * 500 / 16000;
    const double gain = std::sqrt(1 + 0.97 * 0.97 - 2 * 0.97 * std::cos(turn));
    const float plain = energyOf(flat);
    EXPECT_NEAR(energyOf(emphasized) / plain, gain, 0.01);
}

TEST(ObservationChain, RefusesARateThatIsNone) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float rate : {0.0f, -16000.0f, nan, -infinity, 0.5f}) {
        test::analysis model;
        model.descriptor.sampleRate = rate;
        HostTone host(16000, 1);
        std::unique_ptr<CSpectralStream> stream;
        EXPECT_EQ(OpenObservationChain(&host, model.descriptor, stream), kInvalidArgument) << rate;
        EXPECT_EQ(stream, nullptr);
    }
    for (const float rate : {1e9f, infinity}) {
        test::analysis model;
        model.descriptor.sampleRate = rate;
        HostTone host(16000, 1);
        std::unique_ptr<CSpectralStream> stream;
        EXPECT_EQ(OpenObservationChain(&host, model.descriptor, stream), kNoError) << rate;
        EXPECT_NEAR(stream->GetSampleRate(), 65536.0f, 1.0f);
    }
}

TEST(ObservationChain, OpensWhatCannotBeAnalysedAndAnswersWhenItIsRead) {
    test::analysis model;
    model.descriptor.windowSize = 500;
    HostTone host(16000, 1);
    std::unique_ptr<CSpectralStream> stream;
    ASSERT_EQ(OpenObservationChain(&host, model.descriptor, stream), kNoError);
    std::vector<float> features(15);
    float energy = 0;
    EXPECT_EQ(stream->GetObservation(features.data(), &energy), kInvalidArgument);
}

TEST(ObservationChain, HasNoObservationsOfAudioThatAFileOnlyClaims) {
    test::bytes content = test::WavFile(16000, 1, std::vector<int16_t>(800, 100));
    content[42] = content[43] = 0x7F; // the size of the data is 2 GB
    const test::TempFile file(content, ".wav");
    test::analysis model;
    std::unique_ptr<CSpectralStream> stream;
    ASSERT_EQ(OpenObservationChain(file.Path(), model.descriptor, stream), kNoError);
    EXPECT_EQ(stream->GetNumObservations(), 5u);
}

TEST(ObservationChain, PassesTheCodeOfAnInputThatDoesNotOpen) {
    test::analysis model;
    std::unique_ptr<CSpectralStream> stream;
    EXPECT_EQ(OpenObservationChain("no such file.wav", model.descriptor, stream), kFileNotFound);
    EXPECT_EQ(OpenObservationChain(static_cast<IQuibPCMStream*>(nullptr), model.descriptor, stream),
              kInvalidArgument);
    HostTone host(16000, 1);
    host.startCode = kFileInUse;
    EXPECT_EQ(OpenObservationChain(&host, model.descriptor, stream), kFileInUse);
    EXPECT_EQ(stream, nullptr);
}

} // namespace
} // namespace tessarin
