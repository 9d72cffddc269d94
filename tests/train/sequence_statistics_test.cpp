#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "apps/train/sequence_counts.h"
#include "apps/train/sequence_statistics.h"
#include "model/accoustic_hmm.h"
#include "model/phoneme_alphabet.h"
#include "support/tiny_model.h"

namespace tessarin::training {
namespace {

size_t Phone(std::string_view label) {
    return ReadPhones(label).at(0);
}

class SequenceStatistics : public testing::Test {
protected:
    double Pair(std::string_view labels) {
        const phone_string phones = ReadPhones(labels);
        return counts.Pair(phones.at(0), phones.at(1));
    }
    double Triple(std::string_view labels) {
        const phone_string phones = ReadPhones(labels);
        return counts.Triple(phones.at(0), phones.at(1), phones.at(2));
    }

    /// The model's tables after it has read the statistics.
    std::unique_ptr<CAccousticHMM> Load(const statistics_shape& shape) {
        std::vector<std::string> labels;
        for (const phoneme_symbol& symbol : PhonemeAlphabet()) {
            labels.emplace_back(symbol.label);
        }
        auto model = test::tiny_model{.labels = labels}.Make();
        std::istringstream text(WriteStatistics(counts, shape));
        EXPECT_TRUE(model->ReadTrigrams(text, true));
        return model;
    }

    sequence_counts counts{PhonemeAlphabet().size()};
    CSpeechCounter counter{counts};
};

TEST_F(SequenceStatistics, AlternativesAndPausesAreCountedInPart) {
    counter.Say({ReadPhones("rEHd"), ReadPhones("rIYd")});
    counter.EndWord(0.25);
    counter.Say({ReadPhones("dAH")}); // without a pause its d is the one before
    counter.EndWord(1.0);
    EXPECT_DOUBLE_EQ(Pair("xr"), 1.0);
    EXPECT_DOUBLE_EQ(Triple("xrEH"), 0.5);
    EXPECT_DOUBLE_EQ(Pair("dx"), 0.25);
    EXPECT_DOUBLE_EQ(Pair("dd"), 0.0);
    EXPECT_DOUBLE_EQ(Triple("IYdAH"), 0.375);
    EXPECT_DOUBLE_EQ(Triple("xdAH"), 0.25);
    EXPECT_DOUBLE_EQ(Triple("dAHx"), 1.0);
    EXPECT_DOUBLE_EQ(counts.Single(Phone("d")), 1.25);
}

TEST_F(SequenceStatistics, LoneWordsStandWhereWordsStood) {
    counter.Say({ReadPhones("m")});
    counter.EndWord(0.0);
    counter.Say({ReadPhones("AA")});
    counter.EndWord(1.0); // words began after x and m, and ended before AA and x
    counter.AddLoneWord(ReadPhones("kEH"), 4.0);
    EXPECT_DOUBLE_EQ(Pair("kEH"), 4.0);
    EXPECT_DOUBLE_EQ(Triple("kEHAA"), 2.0);
    EXPECT_DOUBLE_EQ(Triple("kEHx"), 2.0);
    EXPECT_DOUBLE_EQ(Triple("mkEH"), 2.0);
    EXPECT_DOUBLE_EQ(Triple("xkEH"), 2.0);
}

TEST_F(SequenceStatistics, ProbabilitiesSumToOneAndNoneIsZero) {
    counter.Say({ReadPhones("sAEm")});
    counter.EndWord(1.0);
    const auto model = Load({.pairTrust = 5, .tripleTrust = 5, .exponent = 1, .scale = 1});
    const size_t n = counts.numPhones;
    ASSERT_TRUE(model->trigramVersion);
    for (size_t a = 0; a < n; ++a) {
        for (size_t b = 0; b < n; ++b) {
            double sum = 0.0;
            for (size_t c = 0; c < n && a != b; ++c) {
                sum += model->trigrams[a][b][c];
                EXPECT_EQ(model->trigrams[a][b][c] > 0.0f, b != c) << a << " " << b << " " << c;
            }
            EXPECT_NEAR(sum, a == b ? 0.0 : 1.0, 0.01) << "numbers have three digits";
        }
    }
    EXPECT_GT(model->trigrams[Phone("s")][Phone("AE")][Phone("m")],
              5 * model->trigrams[Phone("s")][Phone("AE")][Phone("k")]);
}

TEST_F(SequenceStatistics, ExponentAndScaleActOnEveryFactor) {
    counter.Say({ReadPhones("sAEm"), ReadPhones("sIHk")});
    counter.EndWord(1.0);
    const auto plain = Load({.pairTrust = 5, .tripleTrust = 5, .exponent = 1, .scale = 1});
    const auto shaped = Load({.pairTrust = 5, .tripleTrust = 5, .exponent = 3, .scale = 0.1});
    const size_t s = Phone("s");
    for (const size_t c : {Phone("m"), Phone("t")}) {
        const double pair = plain->bigrams[s][c];
        EXPECT_NEAR(shaped->bigrams[s][c] / (0.1 * std::pow(pair, 3)), 1.0, 0.05);
        const double triple = plain->trigrams[s][Phone("AE")][c];
        EXPECT_NEAR(shaped->trigrams[s][Phone("AE")][c] / (0.1 * std::pow(triple, 3)), 1.0, 0.05);
    }
    // Whatever the shape, no number is too small to be read back.
    const auto steep = Load({.pairTrust = 1e-3, .tripleTrust = 1e-3, .exponent = 9, .scale = 1e-6});
    EXPECT_GT(steep->trigrams[s][Phone("AE")][Phone("ZH")], 0.0f);
    EXPECT_GT(steep->trigrams[Phone("ZH")][s][Phone("CH")], 0.0f);
}

} // namespace
} // namespace tessarin::training
