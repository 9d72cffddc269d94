#include "audio/resampler.h"

#include <algorithm>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "plain_resampler.h"
#include "support/signals.h"

namespace tessarin {
namespace {

using test::Noise;
using test::PlainResampler;
using test::WhiteNoise;

constexpr float kCutoff = 0.8f;
constexpr float kUnwritten = -12345.0f;

struct rates {
    int32_t in;
    int32_t out;
};

std::vector<float> Process(CResampler& resampler, const std::vector<float>& in, size_t maxOut) {
    const size_t growth = static_cast<size_t>(resampler.GetInterpolation());
    std::vector<float> out(std::max(maxOut, in.size() * growth) + 1, kUnwritten);
    const uint32_t written = resampler.Process(
        out.data(), in.data(), static_cast<uint32_t>(in.size()), static_cast<uint32_t>(maxOut));
    EXPECT_EQ(out[written], kUnwritten);
    out.resize(written);
    return out;
}

std::vector<float> Slice(const std::vector<float>& all, size_t from, size_t size) {
    const auto first = all.begin() + static_cast<ptrdiff_t>(from);
    return {first, first + static_cast<ptrdiff_t>(std::min(size, all.size() - from))};
}

TEST(Resampler, ReducesTheRatesAndSizesTheFilter) {
    struct expected {
        rates r;
        int32_t decimation, interpolation, taps;
    };
    for (const expected& e :
         {expected{{16000, 16000}, 1, 1, 71}, expected{{48000, 16000}, 3, 1, 47},
          expected{{8000, 16000}, 1, 2, 71}, expected{{44100, 16000}, 441, 160, 43},
          expected{{48000, 8000}, 6, 1, 95}}) {
        SCOPED_TRACE(e.r.in);
        CResampler resampler;
        ASSERT_EQ(resampler.Instantiate(e.r.in, e.r.out, kCutoff), 0);
        EXPECT_EQ(resampler.GetDecimation(), e.decimation);
        EXPECT_EQ(resampler.GetInterpolation(), e.interpolation);
        EXPECT_EQ(resampler.GetTapsPerPhase(), e.taps);
    }
}

TEST(Resampler, MatchesThePlainConverterToTheLastBit) {
    const std::vector<float> signal = WhiteNoise(3000, 20000.0f, 7);
    for (const rates& r : {rates{48000, 16000}, rates{32000, 16000}, rates{8000, 16000},
                           rates{8000, 24000}, rates{44100, 16000}, rates{22050, 16000},
                           rates{11025, 16000}, rates{16000, 11025}, rates{4001, 4000}}) {
        for (const uint32_t seed : {1u, 2u}) {
            SCOPED_TRACE(testing::Message() << r.in << " to " << r.out << ", seed " << seed);
            CResampler resampler;
            ASSERT_EQ(resampler.Instantiate(r.in, r.out, kCutoff), 0);
            PlainResampler plain(r.in, r.out, kCutoff);
            Noise noise(seed);
            for (size_t from = 0; from < signal.size();) {
                // Blocks from one sample to several of the converter's own, with and without
                // room for all of the output.
                const size_t size = 1 + noise.NextU32() % (noise.NextU32() % 5 == 0 ? 2500 : 40);
                const size_t room = noise.NextU32() % 2 == 0 ? 100000 : 1 + size / 2;
                const std::vector<float> in = Slice(signal, from, size);
                const size_t maxOut = resampler.GetInterpolation() == 1 ? 100000 : room;
                ASSERT_EQ(Process(resampler, in, maxOut), plain.Process(in, maxOut)) << from;
                from += in.size();
                if (noise.NextU32() % 16 == 0) {
                    resampler.Reset();
                    plain.Reset();
                }
            }
        }
    }
}

TEST(Resampler, CopiesEqualRatesAtUnityGain) {
    CResampler resampler;
    resampler.Instantiate(16000, 16000, kCutoff);
    const std::vector<float> signal = WhiteNoise(5000, 20000.0f, 3);
    EXPECT_EQ(Process(resampler, signal, signal.size()), signal);
    EXPECT_EQ(Process(resampler, signal, 10).size(), 10u);
}

TEST(Resampler, KeepsATonesFrequencyAndPhaseAcrossBlocks) {
    CResampler resampler;
    resampler.Instantiate(44100, 16000, kCutoff);
    const std::vector<float> in = test::Sine(44100, 1000.0, 44100.0, 10000.0);
    std::vector<float> out;
    for (size_t from = 0; from < in.size(); from += 441) {
        const auto block = Process(resampler, Slice(in, from, 441), 1000);
        out.insert(out.end(), block.begin(), block.end());
    }
    ASSERT_GT(out.size(), 15000u);
    // The filter delays by half its length of 43 input samples, and the newest that an output sees
    // is the one before its own time.
    const double delay = 22.5 * 16000.0 / 44100.0;
    double worst = 0.0;
    for (size_t i = 100; i < out.size(); ++i) {
        const double phase =
            2 * 3.141592653589793 * 1000.0 * (static_cast<double>(i) - delay) / 16000.0;
        worst = std::max(worst, std::abs(9000.0 * std::sin(phase) - static_cast<double>(out[i])));
    }
    EXPECT_LT(worst, 120.0);
}

TEST(Resampler, DecimatorBeginsAnewWithEachCall) {
    const std::vector<float> signal = WhiteNoise(9, 1000.0f, 5);
    CResampler whole;
    whole.Instantiate(48000, 16000, kCutoff);
    EXPECT_EQ(Process(whole, signal, 100).size(), 3u);
    CResampler cut;
    cut.Instantiate(48000, 16000, kCutoff);
    EXPECT_EQ(Process(cut, Slice(signal, 0, 4), 100).size(), 2u);
    EXPECT_EQ(Process(cut, Slice(signal, 4, 5), 100).size(), 2u);
}

TEST(Resampler, ResetEmptiesTheDelayLineButNotThePosition) {
    CResampler resampler;
    resampler.Instantiate(44100, 16000, kCutoff);
    const std::vector<float> signal = WhiteNoise(1000, 1000.0f, 6);
    const auto first = Process(resampler, signal, 1000);
    resampler.Reset();
    const auto second = Process(resampler, signal, 1000);
    EXPECT_NE(first, second);

    CResampler fresh;
    fresh.Instantiate(48000, 16000, kCutoff);
    const auto decimated = Process(fresh, signal, 1000);
    fresh.Reset();
    EXPECT_EQ(Process(fresh, signal, 1000), decimated);
}

TEST(Resampler, CountsAreRoundedDownInSinglePrecision) {
    CResampler resampler;
    resampler.Instantiate(44100, 16000, kCutoff);
    EXPECT_EQ(resampler.GetOutputCount(441), 160u);
    EXPECT_EQ(resampler.GetOutputCount(440), 159u);
    EXPECT_EQ(resampler.GetInputCount(160), 441);
    EXPECT_EQ(resampler.GetInputCount(512), 1411);
    resampler.Instantiate(16000, 16000, kCutoff);
    EXPECT_EQ(resampler.GetOutputCount(16777217), 16777216u);
    resampler.Instantiate(8000, 64000, kCutoff);
    EXPECT_EQ(resampler.GetOutputCount(0xFFFFFFFF), 0xFFFFFFFF);
}

TEST(Resampler, RefusesWhatItCannotConvert) {
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    struct bad {
        int32_t in, out;
        float cutoff;
        error_code code;
    };
    for (const bad& b : {bad{0, 16000, 0.8f, 2}, bad{16000, 0, 0.8f, 2}, bad{-1, 16000, 0.8f, 2},
                         bad{48000, 16000, 1.0f, 2}, bad{48000, 16000, nan, 2},
                         bad{48000, 16000, -inf, 2}, bad{65535, 65534, 0.999999f, 1},
                         bad{2147483647, 1, 0.8f, 1}, bad{1, 2147483647, 0.8f, 1}}) {
        SCOPED_TRACE(testing::Message() << b.in << " to " << b.out << ", " << b.cutoff);
        CResampler resampler;
        ASSERT_EQ(resampler.Instantiate(44100, 16000, kCutoff), 0);
        EXPECT_EQ(resampler.Instantiate(b.in, b.out, b.cutoff), b.code);
        EXPECT_EQ(resampler.GetInputCount(160), 0);
        EXPECT_TRUE(Process(resampler, {1, 2, 3}, 100).empty());
        EXPECT_EQ(resampler.Reset(), 0);
    }
}

} // namespace
} // namespace tessarin
