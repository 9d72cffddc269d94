#include "features/spectral_stream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "base/counted_ptr.h"

#include "features/scripted_pcm_stream.h"
#include "features/test_descriptors.h"

namespace tessarin {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

/// A spectral stream whose frames are numbers instead of cepstra: value i of frame t is
/// t^3 + 1000 i, so that every difference shows between which frames it was taken.
class NumberedFrames : public CSpectralStream {
public:
    NumberedFrames(int32_t cepstra, int32_t features, uint32_t flags = 0)
        : numCepstra(cepstra), numFeatures(features) {
        CSpectralFeatureDescriptor descriptor;
        descriptor.numCepstra = cepstra;
        descriptor.numFeatures = features;
        descriptor.flags = flags;
        const auto audio =
            counted_ptr<test::ScriptedPcmStream>::Adopt(new test::ScriptedPcmStream({0.0f, 0.0f}));
        EXPECT_EQ(Init2(audio.get(), 1, &descriptor), kNoError);
    }

    error_code CalcCepstrum(float* out, int32_t count, float* outEnergy) override {
        const int last = numFeatures % 2 == 0 || numFeatures == 39 ? count : count - 1;
        for (int i = 0; i <= last; ++i) {
            out[i] = Value(frameNumber, i);
        }
        *outEnergy = static_cast<float>(frameNumber++);
        return kNoError;
    }

    static float Value(int frame, int i) {
        return static_cast<float>(frame * frame * frame + 1000 * i);
    }

    /// The next observation with one value more than it should have.
    std::vector<float> Next() {
        std::vector<float> features(static_cast<size_t>(numFeatures) + 1, -7.0f);
        code = GetObservation(features.data(), &energy);
        EXPECT_EQ(features.back(), -7.0f) << "wrote too much";
        features.pop_back();
        return features;
    }

    int32_t numCepstra;
    int32_t numFeatures;
    int frameNumber = 0;
    float energy = -1.0f;
    error_code code = -1;
};

float Value(int frame, int i) {
    return NumberedFrames::Value(frame, i);
}

/// What the five-frame layout holds when `middle` is its middle frame.
std::vector<float> FiveFrames(int cepstra, bool energy, int middle, int first, int last) {
    std::vector<float> expected;
    if (energy) {
        expected.push_back(Value(middle, cepstra));
    }
    for (int i = 1; i < cepstra; ++i) {
        expected.push_back(Value(middle, i));
    }
    for (int i = 0; i < cepstra; ++i) {
        expected.push_back(Value(last, i) - Value(first, i));
    }
    return expected;
}

TEST(FiveFrameLayout, LosesFrameFourAndStepsOnByOne) {
    for (const bool energy : {false, true}) {
        SCOPED_TRACE(energy);
        NumberedFrames stream(8, energy ? 16 : 15);
        const auto expect = [&](int middle, int first, int last) {
            EXPECT_THAT(stream.Next(),
                        ElementsAreArray(FiveFrames(8, energy, middle, first, last)));
            EXPECT_EQ(stream.code, kNoError);
            EXPECT_EQ(stream.energy, static_cast<float>(middle));
        };
        expect(2, 0, 4);
        expect(2, 0, 4);
        expect(2, 0, 4);
        expect(3, 1, 5);
        expect(5, 2, 6);
        expect(6, 3, 7);
        expect(7, 5, 8);
        expect(8, 6, 9);
        for (int middle = 9; middle < 100; ++middle) {
            expect(middle, middle - 2, middle + 1);
        }
    }
}

/// The three-layer observation `t`, from its definition.
std::vector<float> ThreeLayers(int cepstra, bool energy, bool keepLast, int t) {
    const auto layer0 = [](int frame, int i) { return Value(std::max(frame, 0), i); };
    const auto layer1 = [&](int frame, int i) {
        return frame < 0 ? 0.0f : layer0(frame, i) - layer0(frame - 2, i);
    };
    std::vector<float> out;
    for (int i = 1; i < (keepLast ? cepstra : cepstra - 1); ++i) {
        out.push_back(layer0(t, i));
    }
    for (int i = 0; i < cepstra; ++i) {
        out.push_back(layer1(t, i));
    }
    for (int i = 0; i < cepstra; ++i) {
        out.push_back(layer1(t, i) - layer1(t - 2, i));
    }
    if (energy) {
        out.push_back(layer0(t, cepstra));
        out.push_back(layer1(t, cepstra));
        out.push_back(layer1(t, cepstra) - layer1(t - 2, cepstra));
    }
    return out;
}

TEST(ThreeLayerLayout, TakesDifferencesToTwoFramesBack) {
    struct layout {
        int features;
        int cepstra;
        uint32_t flags;
        bool energy;
    };
    // With 35 values 12 cepstra and flag 4, with 37 values 13 cepstra, with 38 energy besides.
    for (const layout& each : {layout{35, 12, kKeepLastCepstrum, false}, layout{37, 13, 0, false},
                               layout{38, 12, kKeepLastCepstrum, true}}) {
        SCOPED_TRACE(each.features);
        NumberedFrames stream(each.cepstra, each.features, each.flags);
        for (int t = 0; t < 8; ++t) {
            EXPECT_THAT(stream.Next(),
                        ElementsAreArray(ThreeLayers(each.cepstra, each.energy,
                                                     each.flags == kKeepLastCepstrum, t)))
                << t;
            EXPECT_EQ(stream.energy, static_cast<float>(t));
        }
    }
}

TEST(ThreeLayerLayout, HasTheLastEnergyTwiceInThirtyNineFeatures) {
    NumberedFrames stream(12, 39, kKeepLastCepstrum);
    for (int t = 0; t < 6; ++t) {
        std::vector<float> expected = ThreeLayers(12, true, true, t);
        ASSERT_EQ(expected.size(), 38u);
        expected.push_back(expected.back());
        EXPECT_THAT(stream.Next(), ElementsAreArray(expected)) << t;
    }
}

TEST(ThreeLayerLayout, LeavesItsScratchWhereTheLastCepstrumWasDropped) {
    NumberedFrames stream(12, 39);
    stream.Next();
    const std::vector<float> second = stream.Next();
    std::vector<float> expected = ThreeLayers(12, true, false, 1);
    // One place stays between the cepstra and the energies, with what it held before the packing:
    // a second difference.
    expected.insert(expected.begin() + 34, Value(1, 8) - Value(0, 8));
    expected.push_back(expected.back());
    EXPECT_THAT(second, ElementsAreArray(expected));
}

TEST(ObservationLayout, HasWhateverWidthTheModelAsksFor) {
    for (const int features : {0, 1, 2, 3, 14, 34, 35, 36, 39, 64, 65, 200}) {
        SCOPED_TRACE(features);
        NumberedFrames stream(12, features);
        const std::vector<float> observation = stream.Next();
        EXPECT_EQ(stream.code, kNoError);
        for (size_t i = 40; i < observation.size(); ++i) {
            EXPECT_EQ(observation[i], 0.0f) << i;
        }
    }
}

} // namespace
} // namespace tessarin
