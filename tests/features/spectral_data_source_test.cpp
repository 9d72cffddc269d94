#include "features/spectral_data_source.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "audio/files/pcm_data_source.h"
#include "audio/host_stream.h"
#include "audio/memory_stream.h"
#include "base/allocation.h"
#include "support/recording_sink.h"
#include "support/signals.h"

namespace tessarin {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Pair;

/// What the display is defined to show, in double precision by the direct sum.
struct plain_display {
    std::vector<double> levels; ///< before they are truncated and held to 255
    double frameLevel = 0.0;
};

plain_display PlainDisplay(const std::vector<float>& x) {
    const size_t n = x.size();
    const double half = double(n) / 2;
    plain_display display;
    double power = 0.0;
    for (size_t k = 0; k <= n / 2; ++k) {
        std::complex<double> sum = 0;
        for (size_t i = 0; i < n; ++i) {
            const double turn = 2 * std::numbers::pi * double(i) / double(n);
            const double window =
                0.54 - 0.46 * std::cos(2 * std::numbers::pi * double(i) / double(n - 1));
            sum += double{x[i]} * window * std::polar(1.0, turn * double(k));
        }
        power += std::norm(sum);
        const double amplitude = std::abs(sum) / half;
        display.levels.push_back(amplitude < 1 ? 0.0 : 40 * std::log10(amplitude));
    }
    display.frameLevel = power > 1 ? 10 * std::log10(power) : 0.0;
    return display;
}

std::vector<int16_t> Rounded(const std::vector<float>& x) {
    return {x.begin(), x.end()};
}

std::unique_ptr<CPCMDataSource> Recording(const std::vector<int16_t>& samples,
                                          uint16_t channels = 1) {
    test::HostStream host({16000, 16, channels}, test::Int16Bytes(samples));
    auto source = std::make_unique<CPCMDataSource>();
    EXPECT_EQ(source->LoadFromQuibStream(&host, nullptr), 0);
    return source;
}

TEST(SpectralDataSource, ShowsTheSpectrumOfTheWindowedFrame) {
    for (const size_t n : {4, 8, 64, 512}) {
        SCOPED_TRACE(n);
        std::vector<float> x = test::WhiteNoise(n, 9000.0f, 5);
        std::ranges::transform(x, x.begin(), [](float value) { return std::trunc(value); });
        const plain_display expected = PlainDisplay(x);

        CSpectralDataSource source;
        std::vector<int16_t> data = Rounded(x);
        float level = -1.0f;
        ASSERT_EQ(source.ComputeFrame(data.data(), int32_t(n), false, &level), 0);
        for (size_t k = 0; k <= n / 2; ++k) {
            // A level may round across a whole number.
            EXPECT_NEAR(data[k], std::trunc(expected.levels[k]), 1) << k;
            EXPECT_LT(std::abs(data[k] + 0.5 - expected.levels[k]), 0.51) << k;
        }
        EXPECT_NEAR(level, expected.frameLevel, 1e-3);
        EXPECT_EQ(data[n - 1], int16_t(x[n - 1])) << "after the spectrum";

        std::vector<float> floats = x;
        ASSERT_EQ(source.ComputeFrameFloat(floats.data(), int32_t(n), true, nullptr), 0);
        EXPECT_THAT(Rounded(floats), ElementsAreArray(data));
        EXPECT_EQ(source.GetNumBins(), int32_t(n / 2));
    }
}

// Kept: the window has the rounded constants; the exact ones of the analysis show more here.
TEST(SpectralDataSource, WindowsWithTheRoundedConstants) {
    CSpectralDataSource source;
    std::vector<float> click = {1001.0f, 0.0f, 0.0f, 0.0f};
    float level = 0.0f;
    ASSERT_EQ(source.ComputeFrameFloat(click.data(), 4, false, &level), 0);
    EXPECT_NEAR(level, 20 * std::log10(std::sqrt(3.0) * 1001 * 0.08), 1e-3);
}

TEST(SpectralDataSource, ShowsNothingOfSilenceAndNoMoreThan255) {
    CSpectralDataSource source;
    std::vector<int16_t> silence(64);
    float level = -1.0f;
    EXPECT_EQ(source.ComputeFrame(silence.data(), 64, false, &level), 0);
    EXPECT_THAT(silence, Each(0));
    EXPECT_EQ(level, 0.0f);

    std::vector<float> loud(64, 1e12f);
    EXPECT_EQ(source.ComputeFrameFloat(loud.data(), 64, false, &level), 0);
    EXPECT_EQ(loud[0], 255.0f);

    std::vector<float> broken(64, std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(source.ComputeFrameFloat(broken.data(), 64, false, &level), 0);
    EXPECT_EQ(broken[3], 0.0f);
    EXPECT_EQ(level, 0.0f);
}

TEST(SpectralDataSource, LeavesFramesOfOtherSizesAlone) {
    CSpectralDataSource source;
    std::vector<int16_t> data = {1, 2, 3, 4, 5, 6};
    for (const int32_t n : {-8, 0, 1, 2, 3, 6}) {
        SCOPED_TRACE(n);
        float level = -1.0f;
        EXPECT_EQ(source.ComputeFrame(data.data(), n, false, &level), 2);
        EXPECT_EQ(level, 0.0f);
        EXPECT_EQ(source.ComputeMeanSpectrum(n, data.data(), Recording({1}).get(), nullptr), 2);
    }
    EXPECT_THAT(data, ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(source.ComputeFrame(nullptr, 4, false, nullptr), 2);
}

TEST(SpectralDataSource, FloorHidesWhatDoesNotRiseAboveIt) {
    const std::vector<int16_t> x = Rounded(test::WhiteNoise(64, 9000.0f, 5));
    CSpectralDataSource source;
    const auto shown = [&] {
        std::vector<int16_t> data = x;
        EXPECT_EQ(source.ComputeFrame(data.data(), 64, false, nullptr), 0);
        data.resize(33);
        return data;
    };
    const std::vector<int16_t> all = shown();
    std::vector<int16_t> floor(64, 300); // hides everything
    std::copy_n(all.begin(), 33, floor.begin());
    floor[5] -= 1;
    source.SetSpectrumFloor(true, floor.data(), 64);
    std::vector<int16_t> expected(33, 0);
    expected[5] = all[5];
    expected[32] = all[32]; // the last bin has no floor
    EXPECT_THAT(shown(), ElementsAreArray(expected));

    const std::vector<int16_t> other(5000, 300);
    source.SetSpectrumFloor(true, other.data(), 5000); // of another size of frame
    EXPECT_THAT(shown(), ElementsAreArray(all));
    source.SetSpectrumFloor(true, floor.data(), 64);
    source.SetSpectrumFloor(false, floor.data(), 64);
    EXPECT_THAT(shown(), ElementsAreArray(all));
    source.SetSpectrumFloor(true, nullptr, 64);
    EXPECT_THAT(shown(), ElementsAreArray(all));
}

// Kept: the mean is multiplied by twice the length of the recording where it should be divided.
TEST(SpectralDataSource, MeanSpectrumGrowsWithTheLengthOfTheRecording) {
    const std::vector<int16_t> samples = {900, -900, 900, -900, 900, -900};
    CSpectralDataSource source;
    std::vector<int> sums(4);
    for (const size_t start : {0, 4}) { // frames of 8 samples, the second one mostly beyond the end
        std::vector<int16_t> frame(8, 0);
        std::copy(samples.begin() + std::ptrdiff_t(start), samples.end(), frame.begin());
        ASSERT_EQ(source.ComputeFrame(frame.data(), 8, false, nullptr), 0);
        for (size_t bin = 0; bin < 4; ++bin) {
            sums[bin] += frame[bin] * 2 * 6;
        }
    }
    std::vector<int16_t> mean(8, 77);
    ASSERT_EQ(source.ComputeMeanSpectrum(8, mean.data(), Recording(samples).get(), nullptr), 0);
    EXPECT_GT(sums[3], 1000);
    EXPECT_THAT(mean, ElementsAre(sums[0], sums[1], sums[2], sums[3], 0, 0, 0, 0));

    std::vector<int16_t> half(8, 77);
    const std::vector<int16_t> longer(60, 900);
    ASSERT_EQ(source.ComputeMeanSpectrum(8, half.data(), Recording(longer).get(), nullptr), 0);
    int sum = 0;
    for (size_t start = 0; start < longer.size(); start += 4) {
        std::vector<int16_t> frame(8, 0);
        std::fill_n(frame.begin(), std::min<size_t>(longer.size() - start, 8), int16_t{900});
        ASSERT_EQ(source.ComputeFrame(frame.data(), 8, false, nullptr), 0);
        sum += frame[0] * 2 * 60;
    }
    EXPECT_GT(sum, 65536);
    EXPECT_EQ(half[0], static_cast<int16_t>(sum % 65536)) << "a sum that leaves the range wraps";
}

TEST(SpectralDataSource, MeanSpectrumTellsWhatItDoesAndCanBeCancelled) {
    CSpectralDataSource source;
    const auto recording = Recording(std::vector<int16_t>(10, 500));
    std::vector<int16_t> out(8);
    test::recording_sink sink;
    EXPECT_EQ(source.ComputeMeanSpectrum(8, out.data(), recording.get(), &sink), 0);
    EXPECT_THAT(sink.phases, ElementsAre("Analyzing audio..."));
    EXPECT_THAT(sink.calls, ElementsAre(Pair(8, 10), Pair(10, 10), Pair(10, 10)));
    sink.cancelAt = 3;
    EXPECT_EQ(source.ComputeMeanSpectrum(8, out.data(), recording.get(), &sink), 5);
    EXPECT_THAT(out, Each(0));

    EXPECT_EQ(source.ComputeMeanSpectrum(8, out.data(), nullptr, nullptr), 2);
    const auto stereo = Recording(std::vector<int16_t>(10, 500), 2);
    EXPECT_EQ(source.ComputeMeanSpectrum(8, out.data(), stereo.get(), nullptr), 6);
}

TEST(SpectralDataSource, ReadsNoMoreThanItAskedFor) {
    struct BoastfulSource : CPCMDataSource {
        error_code ReadSamplesInt16(int16_t* buffer, int32_t start, uint32_t* count,
                                    int32_t channel) override {
            const error_code code = CPCMDataSource::ReadSamplesInt16(buffer, start, count, channel);
            *count += 1000000;
            return code;
        }
    } boastful;
    ASSERT_EQ(boastful.CopyFrom(Recording(std::vector<int16_t>(16, 500)).get()), 0);
    CSpectralDataSource source;
    std::vector<int16_t> out(8);
    EXPECT_EQ(source.ComputeMeanSpectrum(8, out.data(), &boastful, nullptr), 0);
}

/// A source that stores what a host computed.
struct FilledSource : CSpectralDataSource {
    explicit FilledSource(std::initializer_list<int16_t> firstValues) {
        for (const int16_t value : firstValues) {
            auto* frame = static_cast<int16_t*>(alloc(sizeof(int16_t), false));
            *frame = value;
            frames.Add(frame);
        }
        frameDurationMs = 7.5f;
    }
    void SetDuration(float ms) { frameDurationMs = ms; }
};

TEST(SpectralDataSource, FindsTheFrameOfATime) {
    FilledSource source{10, 20, 30};
    uint32_t at = 99;
    ASSERT_NE(source.GetFrameAt(8, &at), nullptr);
    EXPECT_EQ(*source.GetFrameAt(8, nullptr), 20);
    EXPECT_EQ(at, 7u);
    // Kept: the time is given for a frame beyond the last one too.
    EXPECT_EQ(source.GetFrameAt(23, &at), nullptr);
    EXPECT_EQ(at, 22u);
    EXPECT_EQ(source.GetFrameAt(-1, &at), nullptr);
    EXPECT_EQ(at, 0u);
    // In single precision: in double, 58 / 11.6f is less than 5, and 10 * 8.7f less than 87.
    source.SetDuration(11.6f);
    source.GetFrameAt(58, &at);
    EXPECT_EQ(at, 58u);
    source.SetDuration(8.7f);
    source.GetFrameAt(88, &at);
    EXPECT_EQ(at, 87u);
    source.SetDuration(0.0f);
    at = 99;
    EXPECT_EQ(source.GetFrameAt(8, &at), nullptr);
    EXPECT_EQ(at, 0u);
    source.Clear();
    EXPECT_EQ(source.GetNumFrames(), 0);
}

TEST(SpectralDataSource, CepstrumIsTheCosineTransformOfTheBins) {
    std::vector<float> spectrum(9);
    for (size_t i = 1; i < 8; ++i) {
        spectrum[i] = 100.0f + 40.0f * std::cos((float(i) - 0.5f) * 3.14159265f * 3.0f / 8.0f);
    }
    spectrum[0] = 1000.0f; // neither the first bin
    spectrum[8] = 1000.0f; // nor the last one counts
    CSpectralDataSource source;
    float cepstrum[8];
    ASSERT_EQ(source.ComputeCepstrum(spectrum.data(), 16, cepstrum, 8), 0);
    for (size_t j = 0; j < 8; ++j) {
        double expected = 0.0;
        for (size_t i = 1; i < 8; ++i) {
            expected += std::cos((double(i) - 0.5) * std::numbers::pi * double(j) / 8) *
                        double{spectrum[i]} / 8;
        }
        EXPECT_NEAR(cepstrum[j], expected, 1e-4) << j;
    }
    EXPECT_EQ(source.ComputeCepstrum(spectrum.data(), 16, cepstrum, 9), 2);
    EXPECT_EQ(source.ComputeCepstrum(spectrum.data(), 1 << 20, cepstrum, 1), 2);

    std::vector<float> x = test::WhiteNoise(16, 9000.0f, 3);
    float direct[4];
    ASSERT_EQ(source.ComputeCepstrumFrame(x.data(), 16, cepstrum, 4), 0);
    ASSERT_EQ(source.ComputeCepstrum(x.data(), 16, direct, 4), 0);
    EXPECT_THAT(direct, ElementsAreArray(cepstrum, 4));
}

TEST(SpectralDataSource, ResidualIsWhatThePredictorLeaves) {
    std::vector<float> x(200);
    x[0] = 1.0f;
    for (size_t i = 1; i < x.size(); ++i) {
        x[i] = 0.9f * x[i - 1];
    }
    std::vector<float> residual(x.size(), 7.0f);
    CSpectralDataSource source;
    EXPECT_EQ(source.GetResidual(x.data(), 200, residual.data(), 1), 0);
    EXPECT_THAT(residual, Each(testing::FloatNear(0.0f, 1e-5f)));
}

} // namespace
} // namespace tessarin
