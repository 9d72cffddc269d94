#include "recognition/sentences/word_hyp_collector.h"

#include <vector>

#include <gmock/gmock.h>

#include "fixtures.h"
#include "literal_sentence_search.h"
#include "support/signals.h"

namespace tessarin::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<double> ScoresOf(const WordHypCollector& collector) {
    std::vector<double> scores;
    for (const full_word_hypothesis& each : collector.Hypotheses()) {
        scores.push_back(each.score);
    }
    return scores;
}

/// Of 10 observations up to `end`, worth `score` in all.
word_end Place(uint32_t end, double score) {
    return {end - 10, end, score * 8.5, 0.0, 0.0};
}

TEST(WordHypCollector, ScoresByObservation) {
    WordHypCollector collector(3, nullptr);
    collector.Add({5, 25, -100.0, -80.0, -130.0});
    ASSERT_EQ(collector.Hypotheses().size(), 1u);
    const full_word_hypothesis& only = collector.Hypotheses()[0];
    EXPECT_EQ(only.span, 3u);
    EXPECT_EQ(only.start, 5u);
    EXPECT_EQ(only.end, 25u);
    EXPECT_DOUBLE_EQ(only.score, -20.0 / 17.0 + 50.0 / 20.0); // Kept: 0.85 of 20, and all of 20
    EXPECT_DOUBLE_EQ(only.backgroundGain, -50.0);
    collector.Add({25, 25, 100.0, 0.0, 0.0});
    EXPECT_EQ(collector.Hypotheses().size(), 1u) << "no observation, no score";
}

// Kept: 1.45 in single precision.
TEST(WordHypCollector, RaisesItsFloorWithTheBest) {
    WordHypCollector collector(0, nullptr);
    for (const double score : {-3.0, 1.0, -0.4, -0.5, 2.0, 0.5, 0.6}) {
        collector.Add(Place(100, score));
    }
    EXPECT_THAT(ScoresOf(collector), ElementsAre(-3.0, 1.0, -0.4, 2.0, 0.6));
    WordHypCollector edge(0, nullptr);
    edge.Add(Place(20, 0.0));
    edge.Add(Place(21, -1.4500000476837158));
    edge.Add(Place(22, -1.45));
    EXPECT_THAT(ScoresOf(edge), ElementsAre(0.0, testing::DoubleEq(-1.45)));
}

TEST(WordHypCollector, BuildsOnTheSentenceBefore) {
    std::vector<WordHypCollector> both;
    both.reserve(2);
    both.emplace_back(0, nullptr);
    both.emplace_back(1, &both[0]);
    both[1].Add(Place(60, 9.0));
    EXPECT_THAT(both[1].Hypotheses(), IsEmpty()) << "nothing came before";
    both[0].Add(Place(20, 1.0));
    both[0].Add(Place(30, 2.0));
    both[0].Add(Place(31, 1.5));
    both[1].Add(Place(29, 0.5)); // begins before any has ended
    both[1].Add(Place(30, 0.5)); // begins where the first ends
    both[1].Add(Place(40, 0.5));
    both[1].Add(Place(60, 0.25));
    EXPECT_THAT(ScoresOf(both[1]), ElementsAre(1.5, 2.5, 2.25));
}

TEST(ChooseHypotheses, AgreesWithTryingAllChains) {
    Noise noise(8);
    for (int round = 0; round < 500; ++round) {
        SCOPED_TRACE(round);
        std::vector<WordHypCollector> collectors;
        collectors.reserve(4);
        for (uint32_t i = 0; i < 4; ++i) {
            collectors.emplace_back(i, i > 0 ? &collectors[i - 1] : nullptr);
            for (uint32_t end = 2; end < 40; ++end) {
                const uint32_t length = 1 + noise.NextU32() % 8;
                if (noise.NextU32() % 8 == 0 && length <= end) {
                    // Few levels, so that there are ties.
                    const double score = static_cast<double>(noise.NextU32() % 5) / 4;
                    collectors[i].Add({end - length, end, score * length, 0.0, 0.0});
                }
            }
        }
        std::vector<full_word_hypothesis> chosen;
        ASSERT_EQ(ChooseHypotheses(collectors, nullptr, chosen), kNoError);
        std::vector<std::vector<literal_place>> places;
        for (const WordHypCollector& collector : collectors) {
            places.emplace_back();
            for (const full_word_hypothesis& each : collector.Hypotheses()) {
                places.back().push_back({each.span, each.start, each.end, each.score});
            }
        }
        const std::vector<literal_place> expected = LiteralChain(places);
        ASSERT_EQ(chosen.size(), expected.size());
        for (size_t i = 0; i < chosen.size(); ++i) {
            EXPECT_EQ(chosen[i].span, expected[i].span);
            EXPECT_EQ(chosen[i].start, expected[i].start);
            EXPECT_EQ(chosen[i].end, expected[i].end);
        }
    }
}

TEST(ChooseHypotheses, ReportsAndCanBeCancelled) {
    std::vector<WordHypCollector> none(3, WordHypCollector(0, nullptr));
    std::vector<full_word_hypothesis> chosen;
    recording_sink progress;
    EXPECT_EQ(ChooseHypotheses(none, &progress, chosen), kNoError);
    EXPECT_THAT(chosen, IsEmpty());
    EXPECT_THAT(progress.calls,
                ElementsAre(testing::Pair(0u, 3u), testing::Pair(1u, 3u), testing::Pair(2u, 3u)));
    recording_sink cancel(2);
    EXPECT_EQ(ChooseHypotheses(none, &cancel, chosen), kUserCancelled);
    recording_sink empty;
    EXPECT_EQ(ChooseHypotheses({}, &empty, chosen), kNoError);
    EXPECT_THAT(empty.calls, ElementsAre(testing::Pair(0u, 0u)));
}

} // namespace
} // namespace tessarin::test
