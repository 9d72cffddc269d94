#include "adaptation/mean_bias.h"

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include "adaptation/observation_sample.h"
#include "recognition/fixtures.h"
#include "support/tiny_model.h"
#include "tessarin/model_adaptation.h"

namespace tessarin {
namespace {

/// Five features are two of the frame and three differences.
constexpr size_t kFeatures = 5;

std::unique_ptr<CAccousticHMM> MakeModel() {
    test::tiny_model tiny;
    tiny.numFeatures = kFeatures;
    auto model = tiny.Make();
    model->descriptor.numCepstra = 3;
    // Silence far from the sounds, so that neither is taken for the other.
    for (CAccousticHMMState& state : model->models[0].states) {
        for (CGaussMixture& mixture : state.mixtures) {
            mixture.mean.assign(kFeatures, -20.0f + mixture.mean[0]);
        }
    }
    model->BuildScoring();
    return model;
}

/// What the states of `model` say, each as often, `silenceShift` and `speechShift` away.
std::vector<float> Speech(const CAccousticHMM& model, float silenceShift, float speechShift,
                          int rounds) {
    std::mt19937 random(7);
    std::normal_distribution<float> noise(0.0f, 0.5f);
    std::vector<float> values;
    for (int round = 0; round < rounds; ++round) {
        for (size_t phoneme = 0; phoneme < model.models.size(); ++phoneme) {
            const float shift = phoneme == 0 ? silenceShift : speechShift;
            for (const CAccousticHMMState& state : model.models[phoneme].states) {
                for (size_t k = 0; k < kFeatures; ++k) {
                    values.push_back(state.mixtures[0].mean[k] + (k < 2 ? shift : 0.0f) +
                                     noise(random));
                }
            }
        }
    }
    return values;
}

test::list_stream StreamOf(const std::vector<float>& values) {
    test::list_stream stream;
    for (auto x = values.begin(); x != values.end(); x += kFeatures) {
        stream.observations.emplace_back(x, x + kFeatures);
        stream.energies.push_back(0.0f);
    }
    return stream;
}

TEST(MeanBias, FindsHowFarSilenceAndSpeechLieApart) {
    const auto model = MakeModel();
    const mean_bias bias = FindMeanBias(*model, Speech(*model, 0.3f, -0.4f, 400));
    const auto& silence = bias.values[static_cast<size_t>(sound_class::kSilence)];
    const auto& speech = bias.values[static_cast<size_t>(sound_class::kSpeech)];
    for (size_t k = 0; k < kFeatures; ++k) {
        SCOPED_TRACE(k);
        // The differences do not move, and some of the shift is held back.
        EXPECT_NEAR(silence[k], k < 2 ? 0.3 : 0.0, 0.06);
        EXPECT_NEAR(speech[k], k < 2 ? -0.4 : 0.0, 0.06);
    }
    EXPECT_GT(bias.gain, 0.2);
    EXPECT_NEAR(FindMeanBias(*model, Speech(*model, 0.0f, 0.0f, 400)).gain, 0.0, 0.02);
}

TEST(MeanBias, OfLittleSpeechIsHeldBack) {
    const auto model = MakeModel();
    const auto size = [&](int rounds) {
        const mean_bias bias = FindMeanBias(*model, Speech(*model, 0.0f, 0.5f, rounds));
        return bias.values[static_cast<size_t>(sound_class::kSpeech)][0];
    };
    EXPECT_LT(size(1), 0.25);
    EXPECT_GT(size(1), 0.0);
    EXPECT_GT(size(400), 0.45);
}

TEST(MeanBias, IsNotMovedByWhatIsNotANumber) {
    const auto model = MakeModel();
    std::vector<float> values = Speech(*model, 0.3f, -0.4f, 50);
    const mean_bias expected = FindMeanBias(*model, values);
    for (const float odd : {std::nanf(""), std::numeric_limits<float>::infinity()}) {
        values.insert(values.begin(), kFeatures, odd);
    }
    EXPECT_EQ(FindMeanBias(*model, values).values, expected.values);
    values.assign(kFeatures, std::nanf(""));
    EXPECT_EQ(FindMeanBias(*model, values).gain, 0.0);
    EXPECT_EQ(FindMeanBias(*model, {}).gain, 0.0);
}

TEST(MeanBias, GivesACopyThatFitsBetterAndLeavesTheModel) {
    const auto model = MakeModel();
    const std::vector<float> values = Speech(*model, 0.0f, -0.5f, 50);
    const double before = model->GetStateProbability(values.data() + 3 * kFeatures, 3);
    float gain = 0.0f;
    CAccousticHMM* made = nullptr;
    test::list_stream stream = StreamOf(values);
    ASSERT_EQ(CreateAdaptedAccHMM(model.get(), &stream, 0.0f, &gain, &made), 0);
    const std::unique_ptr<CAccousticHMM> adapted(made);
    EXPECT_GT(gain, 0.1f);
    EXPECT_EQ(model->GetStateProbability(values.data() + 3 * kFeatures, 3), before);
    double sumBefore = 0.0;
    double sumAfter = 0.0;
    for (size_t t = 0; t < values.size() / kFeatures; ++t) {
        const auto state = static_cast<int32_t>(t % 9);
        sumBefore += std::log(model->GetStateProbability(values.data() + t * kFeatures, state));
        sumAfter += std::log(adapted->GetStateProbability(values.data() + t * kFeatures, state));
    }
    EXPECT_GT(sumAfter, sumBefore);
    EXPECT_EQ(adapted->labels, model->labels);
    EXPECT_EQ(test::ImageOf(*adapted).size(), test::ImageOf(*model).size());

    test::list_stream again = StreamOf(values);
    EXPECT_EQ(CreateAdaptedAccHMM(model.get(), &again, 2.0f * gain, nullptr, &made), 0);
    EXPECT_EQ(made, nullptr) << "not worth while";

    test::list_stream broken = StreamOf(values);
    broken.failAt = 3;
    broken.failure = kCompressedFile;
    EXPECT_EQ(CreateAdaptedAccHMM(model.get(), &broken, 0.0f, nullptr, &made), kCompressedFile);
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(CreateAdaptedAccHMM(nullptr, &broken, 0.0f, nullptr, &made), kInvalidArgument);
}

TEST(ObservationSample, TakesALongRecordingEvenly) {
    std::vector<float> values;
    for (size_t t = 0; t < 30000; ++t) {
        values.insert(values.end(), kFeatures, static_cast<float>(t));
    }
    test::list_stream stream = StreamOf(values);
    ObservationSample sample(kFeatures);
    ASSERT_EQ(sample.Read(stream), kNoError);
    const size_t count = sample.GetValues().size() / kFeatures;
    EXPECT_LE(count, ObservationSample::kMost);
    EXPECT_GE(count, ObservationSample::kMost / 2 - 1);
    for (size_t t = 1; t < count; ++t) {
        ASSERT_EQ(sample.GetValues()[t * kFeatures] - sample.GetValues()[(t - 1) * kFeatures],
                  8.0f);
    }
}

} // namespace
} // namespace tessarin
