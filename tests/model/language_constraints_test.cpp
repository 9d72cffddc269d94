#include "support/tiny_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <span>
#include <sstream>

namespace tessarin {
namespace {

using test::tiny_model;
using testing::ElementsAre;
using testing::ElementsAreArray;

class LanguageConstraints : public testing::Test {
protected:
    bool ReadLimits(const char* text) {
        std::istringstream stream(text);
        return model->ReadConstraints(stream);
    }

    void ReadStatistics(const char* text, bool normalise) {
        std::istringstream stream(text);
        ASSERT_TRUE(model->ReadTrigrams(stream, normalise));
    }

    std::span<const float> Bigrams(size_t first) { return {model->bigrams[first], 3}; }
    std::span<const float> Trigrams(size_t first, size_t second) {
        return {model->trigrams[first][second], 3};
    }

    std::unique_ptr<CAccousticHMM> model = tiny_model{.labels = {"x", "AA", "s"}}.Make();
};

TEST_F(LanguageConstraints, LimitsAreObservationsOfAState) {
    EXPECT_EQ(model->GetPhoneLimitMs("AA"), -1); // nothing is loaded
    ASSERT_TRUE(ReadLimits("AA 200 AAs 90\n x -5"));
    EXPECT_THAT(model->constraints, ElementsAre(0u, 3u, 3u)); // the later entry wins
    EXPECT_EQ(model->GetPhoneLimitMs("AA"), 90 / 3);
    EXPECT_EQ(model->GetPhoneLimitMs("x"), -1);
    EXPECT_EQ(model->GetPhoneLimitMs("q"), -1);

    EXPECT_TRUE(model->IsUnderPhoneLimit(5, 2)); // a state of AA
    EXPECT_FALSE(model->IsUnderPhoneLimit(5, 3));
    EXPECT_TRUE(model->IsUnderPhoneLimit(2, 1000));
    EXPECT_TRUE(model->IsUnderPhoneLimit(9, 1000));
    EXPECT_TRUE(model->IsUnderPhoneLimit(-1, 1000));

    EXPECT_EQ(model->GetPhoneDurationFactor(1, 1, 3), 1.0f);
    EXPECT_EQ(model->GetPhoneDurationFactor(1, 1, 4), 1e-7f);
    EXPECT_EQ(model->GetPhoneDurationFactor(1, 2, 4), 1.0f);
    EXPECT_EQ(model->GetPhoneDurationFactor(0, 0, 4), 1.0f);
    EXPECT_EQ(model->GetPhoneDurationFactor(3, 3, 4), 1.0f);
    EXPECT_EQ(model->GetPhoneDurationFactor(-1, -1, 4), 1.0f);
}

TEST_F(LanguageConstraints, AnUnknownLabelLeavesNoLimitInForce) {
    ASSERT_TRUE(ReadLimits("s 90"));
    EXPECT_FALSE(ReadLimits("AA 90 q s 90"));
    EXPECT_EQ(model->GetPhoneLimitMs("AA"), -1);
    EXPECT_EQ(model->GetPhoneLimitMs("s"), -1);
    EXPECT_FALSE(ReadLimits("q 90 s 90")); // its number is read as a label
    for (const char* text : {"", "\n", "s", "s ninety"}) {
        EXPECT_TRUE(ReadLimits(text)) << text;
        EXPECT_THAT(model->constraints, ElementsAre(0u, 0u, 0u));
    }
    EXPECT_TRUE(ReadLimits("s 99999999999")); // more than a number holds
    EXPECT_EQ(model->GetPhoneLimitMs("s"), -1);
}

TEST_F(LanguageConstraints, CountsAreDividedByTheCountOfWhatTheyExtend) {
    ReadStatistics("x 4 AA 8 xAA 2 sAA 5 xAAs 1 xAAx 1 AAss 3\n", true);
    EXPECT_FALSE(model->trigramVersion);
    EXPECT_THAT(model->unigrams, ElementsAre(4.0f / 12, 8.0f / 12, 0.0f));
    EXPECT_THAT(Bigrams(0), ElementsAre(0.0f, 0.5f, 0.0f));
    EXPECT_THAT(Bigrams(2), ElementsAre(0.0f, 0.0f, 0.0f)); // nothing counts `s`
    EXPECT_THAT(Trigrams(0, 1), ElementsAre(0.5f, 0.0f, 0.5f));
    EXPECT_THAT(Trigrams(1, 2), ElementsAre(0.0f, 0.0f, 0.0f)); // nothing counts `AAs`
}

TEST_F(LanguageConstraints, Version1SumsUpItsTrigrams) {
    ReadStatistics("version 1 x 8 xAA 1 xs 1 xAAs 3 xAAx 1 xsx 2 xxx 9 s 0", false);
    EXPECT_TRUE(model->trigramVersion);
    EXPECT_THAT(Trigrams(0, 1), ElementsAre(0.25f, 0.0f, 0.75f));
    EXPECT_THAT(Trigrams(0, 0), ElementsAre(0.0f, 0.0f, 0.0f)); // the bigram `xx` is not possible
    EXPECT_THAT(Bigrams(0), ElementsAre(0.0f, 4.0f / 6, 2.0f / 6));
    EXPECT_THAT(model->unigrams, ElementsAre(6.0f / 8, 0.0f, 0.0f));
    ReadStatistics("version 1 x 8 xAA 1 xs 6 xAAs 3", false);
    EXPECT_THAT(Bigrams(0), ElementsAre(0.0f, 1.0f, 2.0f)); // `xs` has no sum and keeps its own
    ReadStatistics("version 1 AAs 2", false);               // no sum to divide by
    EXPECT_THAT(model->unigrams, ElementsAre(0.0f, 0.0f, 0.0f));
    EXPECT_THAT(Bigrams(1), ElementsAre(0.0f, 0.0f, 0.0f));
}

TEST_F(LanguageConstraints, WeightsAreScaledRowByRow) {
    ReadStatistics("x 1 s 3 xx 2 xs 2 xsx 1 xss 3 xsAA -5 sss 0", false);
    EXPECT_THAT(model->unigrams, ElementsAre(0.25f, 0.0f, 0.75f));
    EXPECT_THAT(Bigrams(0), ElementsAre(0.5f, 0.0f, 0.5f));
    EXPECT_THAT(Trigrams(0, 2), ElementsAre(0.25f, -5.0f, 0.75f));
    ReadStatistics("xs 2 xss 4", false); // without unigrams nothing is scaled
    EXPECT_THAT(Bigrams(0), ElementsAre(0.0f, 0.0f, 2.0f));
    EXPECT_THAT(Trigrams(0, 2), ElementsAre(0.0f, 0.0f, 4.0f));
}

TEST_F(LanguageConstraints, OnlyWhatReadsInFullCounts) {
    ReadStatistics("version 1 version 0.5 x 1 version 1 qq 7 xq 7 s 1 AA two s 9\n", false);
    EXPECT_FALSE(model->trigramVersion); // the last declaration before the first key holds
    EXPECT_THAT(model->unigrams, ElementsAre(0.5f, 0.0f, 0.5f));
    ReadStatistics("x 1 s", true);
    EXPECT_THAT(model->unigrams, ElementsAre(1.0f, 0.0f, 0.0f));
    ReadStatistics("", true);
    EXPECT_THAT(model->unigrams, ElementsAre(0.0f, 0.0f, 0.0f));
}

TEST_F(LanguageConstraints, RefusesTablesOfMorePhonemesThanAnyLanguageHasAndLeavesNone) {
    ReadStatistics("version 1 x 1 xs 1 xss 1", false);
    model->numModels = 257; // the tables of 645 would take a gibibyte
    std::istringstream text("x 1");
    EXPECT_FALSE(model->ReadTrigrams(text, true));
    EXPECT_FALSE(model->trigramVersion);
    EXPECT_TRUE(model->trigrams.empty());
    EXPECT_TRUE(model->bigrams.empty());
    EXPECT_TRUE(model->unigrams.empty());
}

/// A text whose source fails after its last character: a disk, or memory for more of it.
template <class Failure> class failing_text : public std::stringbuf {
public:
    using std::stringbuf::stringbuf;

protected:
    int_type underflow() override {
        const int_type next = std::stringbuf::underflow();
        return next != traits_type::eof() ? next : throw Failure("the source failed");
    }
};

struct no_memory : std::bad_alloc {
    explicit no_memory(const char*) {}
};

TEST_F(LanguageConstraints, ATextThatFailsInTheMiddleLeavesNothingInForce) {
    for (const char* const text : {"", "x 1 xs", "x 90 s 9", "x 90 s 90 "}) {
        SCOPED_TRACE(text);
        for (const bool starves : {false, true}) {
            ReadStatistics("x 1", true);
            ASSERT_TRUE(ReadLimits("x 90"));
            const auto reads = [&](auto&& read) {
                failing_text<std::ios_base::failure> disk(text);
                failing_text<no_memory> memory(text);
                std::istream stream(starves ? static_cast<std::streambuf*>(&memory) : &disk);
                if (starves) {
                    EXPECT_THROW((void)read(stream), std::bad_alloc);
                    return false;
                }
                return read(stream);
            };
            EXPECT_FALSE(reads([&](std::istream& s) { return model->ReadTrigrams(s, true); }));
            EXPECT_FALSE(reads([&](std::istream& s) { return model->ReadConstraints(s); }));
            EXPECT_TRUE(model->trigrams.empty());
            EXPECT_TRUE(model->unigrams.empty());
            EXPECT_EQ(model->GetPhoneLimitMs("x"), -1);
        }
    }
}

TEST_F(LanguageConstraints, TheStreamIsReadAsTheHostSetItAndShowsItsEnd) {
    std::istringstream limits("x 5A");
    limits >> std::hex;
    limits.exceptions(std::ios_base::eofbit); // which is no reason to fail
    EXPECT_TRUE(model->ReadConstraints(limits));
    EXPECT_EQ(model->GetPhoneLimitMs("x"), 30); // of each state
    EXPECT_TRUE(limits.eof());
    std::istringstream statistics("x 1 s one");
    EXPECT_TRUE(model->ReadTrigrams(statistics, true));
    EXPECT_TRUE(statistics.fail());
    EXPECT_FALSE(statistics.bad());
}

} // namespace
} // namespace tessarin
