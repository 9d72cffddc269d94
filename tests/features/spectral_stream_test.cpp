#include "features/spectral_stream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "features/analysed_speech.h"
#include "features/scripted_pcm_stream.h"
#include "support/signals.h"

namespace tessarin {
namespace {

using test::analysis;
using test::kBands;
using test::observations;
using test::ReadAll;
using test::ScriptedPcmStream;
using test::Speechlike;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::FloatNear;

/// The cepstra of the frame that begins at `begin`, by the definition and in double precision.
std::vector<double> PlainCepstra(const std::vector<float>& audio, size_t begin,
                                 const CSpectralFeatureDescriptor& descriptor) {
    const size_t size = static_cast<size_t>(descriptor.windowSize);
    std::vector<double> energies;
    std::vector<double> power;
    for (size_t bin = 0; bin < size / 2; ++bin) {
        std::complex<double> sum = 0;
        for (size_t i = 0; i < size; ++i) {
            const double turn = 2 * std::numbers::pi * double(i);
            const double weight = (25 - 21 * std::cos(turn / double(size - 1))) / 46;
            const double sample = begin + i < audio.size() ? audio[begin + i] : 0.0;
            sum += weight * std::polar(sample, turn * double(bin) / double(size));
        }
        power.push_back(std::norm(sum) / double(size));
    }
    const double width = descriptor.sampleRate / double(size);
    for (const tagBandFilter& band : descriptor.bands) {
        double sum = 0;
        double weights = 0;
        for (size_t bin = 0; bin < power.size(); ++bin) {
            const double f = double(bin) * width;
            const double weight =
                std::max(0.0, std::min((f - band.low) / (band.centre - band.low),
                                       (band.high - f) / (band.high - band.centre)));
            sum += weight * power[bin];
            weights += weight;
        }
        energies.push_back(sum / weights < 1 ? 0.0 : std::log10(sum / weights));
    }
    std::vector<double> cepstra;
    for (int j = 0; j < descriptor.numCepstra; ++j) {
        double sum = 0;
        for (size_t i = 0; i < energies.size(); ++i) {
            sum += std::cos((double(i) + 0.5) * std::numbers::pi * j / double(energies.size())) *
                   energies[i];
        }
        cepstra.push_back(sum);
    }
    return cepstra;
}

TEST(SpectralStream, GivesTheCepstraOfEachFrame) {
    analysis model;
    const std::vector<float> audio = Speechlike(2000);
    ScriptedPcmStream pcm(audio);
    CSpectralStream stream;
    ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
    for (size_t frame = 0; frame < 15; ++frame) { // the last ones reach beyond the audio
        std::vector<float> cepstra(20);
        float energy = 0;
        ASSERT_EQ(stream.CalcCepstrum(cepstra.data(), 8, &energy), kNoError);
        const std::vector<double> expected = PlainCepstra(audio, frame * 160, model.descriptor);
        for (size_t j = 0; j < expected.size(); ++j) {
            EXPECT_NEAR(cepstra[j], expected[j], 2e-3) << frame << ' ' << j;
        }
    }
}

TEST(SpectralStream, FindsNothingInSilence) {
    analysis model;
    ScriptedPcmStream pcm(std::vector<float>(16000, 0.0f));
    CSpectralStream stream;
    ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
    EXPECT_EQ(stream.GetNumObservations(), 100u);
    std::vector<float> bands(kBands, -1.0f);
    uint32_t count = 0;
    ASSERT_EQ(stream.GetBandEnergies(bands.data(), &count), kNoError);
    EXPECT_EQ(count, static_cast<uint32_t>(kBands));
    EXPECT_THAT(bands, Each(0.0f));

    stream.SetProcessingFlags(kDecibelEnergy);
    std::vector<float> features(15, -1.0f);
    float energy = -1.0f;
    ASSERT_EQ(stream.GetObservation(features.data(), &energy), kNoError);
    EXPECT_THAT(features, Each(0.0f));
    EXPECT_EQ(energy, 0.5f);
}

TEST(SpectralStream, GivesTheSameVectorsAfterARestart) {
    for (const int32_t features : {15, 16, 39}) {
        SCOPED_TRACE(features);
        analysis model;
        model.descriptor.numFeatures = features;
        model.descriptor.numCepstra = features == 39 ? 12 : 8;
        ScriptedPcmStream pcm(Speechlike(8000));
        CSpectralStream stream;
        ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
        const observations first = ReadAll(stream, features);
        float low = 0;
        float high = 0;
        stream.GetEnergyRange(&low, &high);
        EXPECT_LT(low, high);
        stream.Restart();
        EXPECT_EQ(ReadAll(stream, features), first);
        float lowAgain = 0;
        float highAgain = 0;
        stream.GetEnergyRange(&lowAgain, &highAgain);
        EXPECT_EQ(low, lowAgain);
        EXPECT_EQ(high, highAgain);
    }
}

TEST(SpectralStream, ForgetsTheAudioBeforeARestart) {
    analysis model;
    model.descriptor.flags |= kCalcSpectralMean;
    /// Audio that can be made silent.
    struct FadingStream : ScriptedPcmStream {
        FadingStream() : ScriptedPcmStream(Speechlike(3200)) {}
        error_code Start() override {
            ++starts;
            return ScriptedPcmStream::Start();
        }
        error_code ReadChannelFloat(float* buffer, uint32_t* frames, uint32_t from) override {
            const error_code code = ScriptedPcmStream::ReadChannelFloat(buffer, frames, from);
            if (isSilent) {
                std::fill_n(buffer, *frames, 0.0f);
            }
            return code;
        }
        bool isSilent = false;
        int starts = 0;
    } pcm;
    CSpectralStream stream;
    ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
    stream.SetProcessingFlags(kDecibelEnergy);
    const observations loud = ReadAll(stream, 15);
    EXPECT_EQ(pcm.starts, 1) << "the mean is taken of the whole audio first";
    float decibels = 0.0f;
    std::vector<float> cepstra(20);
    stream.Restart();
    ASSERT_EQ(stream.CalcCepstrum(cepstra.data(), 8, &decibels), kNoError);
    pcm.isSilent = true;
    stream.Restart();
    float low = 0.0f;
    float high = 0.0f;
    stream.GetEnergyRange(&low, &high);
    EXPECT_EQ(low, 1e33f);
    EXPECT_EQ(high, 0.0f);
    ASSERT_EQ(stream.CalcCepstrum(cepstra.data(), 8, &decibels), kNoError);
    EXPECT_EQ(decibels, 0.5f) << "the last loud sample is not one of the silence";
    pcm.isSilent = false;
    pcm.starts = 0;
    stream.Restart();
    EXPECT_EQ(ReadAll(stream, 15), loud);
    EXPECT_EQ(pcm.starts, 2) << "the mean is taken again";
}

TEST(SpectralStream, LeavesOutWhatIsNotAsked) {
    CSpectralStream stream;
    uint32_t size = 0;
    float energy = 0.0f;
    stream.GetFrameGeometry(&size, nullptr);
    EXPECT_EQ(size, 512u);
    stream.GetFrameGeometry(nullptr, &size);
    EXPECT_EQ(size, 256u);
    stream.GetEnergyRange(&energy, nullptr);
    EXPECT_EQ(energy, 1e33f);
    stream.GetEnergyRange(nullptr, &energy);
    EXPECT_EQ(energy, 0.0f);
}

TEST(SpectralStream, MeasuresEnergyBetweenTheNeighbouringFrames) {
    // Every difference is 10 in size, also across the borders of frames.
    std::vector<float> zigzag(4000);
    for (size_t i = 0; i < zigzag.size(); ++i) {
        zigzag[i] = i % 2 == 0 ? 5.0f : -5.0f;
    }
    analysis model;
    model.descriptor.numFeatures = 16;
    ScriptedPcmStream pcm(zigzag);
    CSpectralStream stream;
    ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
    stream.SetProcessingFlags(kDecibelEnergy);
    std::vector<float> features(16);
    float energy = 0;
    ASSERT_EQ(stream.GetObservation(features.data(), &energy), kNoError);
    EXPECT_NEAR(energy, 20.5f, 1e-4);
    EXPECT_NEAR(features[0], 20.5f / 20, 1e-5);
}

TEST(SpectralStream, MeasuresDecibelsInTheMiddleHop) {
    analysis model; // a window of 512 samples whose middle 160 begin at 176
    for (const size_t place : {175u, 176u, 335u, 336u}) {
        std::vector<float> impulse(2000, 0.0f);
        impulse[place] = 1000.0f;
        ScriptedPcmStream pcm(impulse);
        CSpectralStream stream;
        ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
        std::vector<float> transform(512);
        float decibels = -1.0f;
        ASSERT_EQ(stream.CalcFrameSpectrum(transform.data(), &decibels), kNoError);
        EXPECT_EQ(decibels > 0.5f, place >= 176 && place < 336) << place;
    }
}

TEST(SpectralStream, TakesNoMaximumFromAClippedFrame) {
    analysis model;
    for (const float amplitude : {8000.0f, 32000.0f}) {
        ScriptedPcmStream pcm(test::Sine(3000, 1000, 16000, amplitude));
        CSpectralStream stream;
        ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
        std::vector<float> features(15);
        float energy = 0;
        ASSERT_EQ(stream.GetObservation(features.data(), &energy), kNoError);
        float low = 0;
        float high = 0;
        stream.GetEnergyRange(&low, &high);
        EXPECT_GT(low, amplitude / 2);
        EXPECT_EQ(high > 0.0f, amplitude < 10000.0f);
    }
}

TEST(SpectralStream, RefusesAGeometryThatDoesNotFit) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<std::function<void(CSpectralFeatureDescriptor&)>> faults = {
        [](auto& d) { d.windowSize = 500; },
        [](auto& d) { d.windowSize = 0; },
        [](auto& d) { d.windowSize = 1; },
        [](auto& d) { d.windowSize = -512; },
        [](auto& d) { d.windowSize = std::numeric_limits<int32_t>::min(); },
        [](auto& d) { d.windowSize = 131072; },
        [](auto& d) { d.windowOverlap = 512; },
        [](auto& d) { d.windowOverlap = -1; },
        [](auto& d) { d.windowOverlap = std::numeric_limits<int32_t>::min(); },
        [](auto& d) { d.numCepstra = 0; },
        [](auto& d) { d.numCepstra = 21; },
        [](auto& d) { d.numCepstra = 20, d.numFeatures = 16; },
        [](auto& d) { d.numFeatures = -1; },
        [](auto& d) { test::SetMelBands(d, 768); },
    };
    for (size_t i = 0; i < faults.size(); ++i) {
        SCOPED_TRACE(i);
        analysis model;
        faults[i](model.descriptor);
        ScriptedPcmStream pcm(std::vector<float>(2000, 1.0f));
        CSpectralStream stream;
        EXPECT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kInvalidArgument);
        std::vector<float> values(2000);
        float energy = 0;
        uint32_t count = 0;
        EXPECT_EQ(stream.GetObservation(values.data(), &energy), kInvalidArgument);
        EXPECT_EQ(stream.GetBandEnergies(values.data(), &count), kInvalidArgument);
        EXPECT_EQ(stream.ReadNextFrame(), kInvalidArgument);
        stream.Restart();
    }
    analysis model;
    for (tagBandFilter& band : model.descriptor.bands) {
        band.centre = nan;
    }
    model.descriptor.numCepstra = 20;
    ScriptedPcmStream pcm(std::vector<float>(2000, nan));
    CSpectralStream stream;
    EXPECT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
    ReadAll(stream, 15);
}

TEST(SpectralStream, WorksAtTheEndsOfItsGeometry) {
    struct geometry {
        int32_t windowSize;
        int32_t overlap;
    };
    for (const geometry& each : {geometry{2, 0}, geometry{2, 1}, geometry{512, 0},
                                 geometry{512, 511}, geometry{65536, 65535}}) {
        SCOPED_TRACE(each.windowSize);
        analysis model;
        model.descriptor.windowSize = each.windowSize;
        model.descriptor.windowOverlap = each.overlap;
        test::SetMelBands(model.descriptor, 2);
        ScriptedPcmStream pcm(Speechlike(3000));
        CSpectralStream stream;
        ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
        std::vector<float> features(15);
        float energy = 0;
        EXPECT_EQ(stream.GetObservation(features.data(), &energy), kNoError);
        EXPECT_GT(energy, 0.0f);
        uint32_t windowSize = 0;
        uint32_t overlap = 0;
        stream.GetFrameGeometry(&windowSize, &overlap);
        EXPECT_EQ(windowSize, static_cast<uint32_t>(each.windowSize));
        EXPECT_EQ(overlap, static_cast<uint32_t>(each.overlap));
    }
}

TEST(SpectralStream, PassesTheErrorOfItsSource) {
    analysis model;
    for (const size_t failFrom : {0u, 352u, 512u}) {
        ScriptedPcmStream pcm(Speechlike(4000));
        pcm.failFrom = failFrom;
        CSpectralStream stream;
        ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
        std::vector<float> features(15);
        float energy = 0;
        EXPECT_EQ(stream.GetObservation(features.data(), &energy), kFileInUse) << failFrom;
    }
}

TEST(SpectralStream, AnswersWithoutASource) {
    CSpectralStream stream;
    float features = 0;
    float energy = 0;
    EXPECT_EQ(stream.GetNumObservations(), 0u);
    EXPECT_EQ(stream.GetSampleRate(), 0.0f);
    EXPECT_EQ(stream.GetObservation(&features, &energy), kInvalidArgument);
    EXPECT_EQ(stream.Init(nullptr, 1, 512, 352), kInvalidArgument);
    stream.Restart();
    stream.Stop();
}

TEST(SpectralStream, HoldsOneReferenceToItsSource) {
    analysis model;
    ScriptedPcmStream first(Speechlike(2000));
    ScriptedPcmStream second(Speechlike(2000));
    const auto references = [](ScriptedPcmStream& pcm) {
        pcm.AddRef();
        return pcm.Release();
    };
    {
        CSpectralStream stream;
        ASSERT_EQ(stream.Init2(&first, 1, &model.descriptor), kNoError);
        EXPECT_EQ(references(first), 2);
        ASSERT_EQ(stream.Init2(&second, 1, &model.descriptor), kNoError);
        EXPECT_EQ(references(first), 1);
        EXPECT_EQ(references(second), 2);
        stream.Stop();
        float energy = 0;
        std::vector<float> features(15);
        EXPECT_EQ(stream.GetObservation(features.data(), &energy), kInvalidArgument);
        ASSERT_EQ(stream.Init2(&second, 1, &model.descriptor), kNoError);
        EXPECT_EQ(stream.GetObservation(features.data(), &energy), kNoError);
    }
    EXPECT_EQ(references(second), 1);
}

TEST(SpectralStream, FollowsARateThatChangesBeforeARestart) {
    analysis model;
    const std::vector<float> audio = Speechlike(3000);
    ScriptedPcmStream pcm(audio);
    CSpectralStream stream;
    ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
    pcm.SetRate(12000);
    stream.Restart();
    EXPECT_FLOAT_EQ(stream.GetSampleRate(), 12000.0f);
    ScriptedPcmStream slow(audio, 12000);
    CSpectralStream reference;
    ASSERT_EQ(reference.Init2(&slow, 1, &model.descriptor), kNoError);
    EXPECT_EQ(ReadAll(stream, 15), ReadAll(reference, 15));
}

} // namespace
} // namespace tessarin
