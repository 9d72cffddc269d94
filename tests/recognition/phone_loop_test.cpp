#include "recognition/graph/phone_loop.h"

#include <algorithm>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fixtures.h"
#include "support/signals.h"

namespace tessarin::test {
namespace {

/// A model of random transitions: steps to itself and the next state, and out of each last state.
std::unique_ptr<CAccousticHMM> RandomStepModel(Noise& noise) {
    auto model = MakeLikelihoodModel({"x", "AA", "s", "t"});
    for (size_t s = 0; s < 12; ++s) {
        model->transitions[s][s] = noise.Next(0.1f, 0.9f);
        if (s % 3 < 2) {
            model->transitions[s][s + 1] = noise.Next(0.1f, 0.9f);
        }
        for (size_t to = 0; s % 3 == 2 && to < 12; to += 3) {
            model->transitions[s][to] = std::max(noise.Next(-0.2f, 0.4f), 0.0f);
        }
    }
    model->AnalyseTopology();
    return model;
}

void AddStatistics(CAccousticHMM& model, Noise& noise) {
    model.bigrams = float_matrix(4, 4);
    for (size_t from = 0; from < 4; ++from) {
        for (size_t to = 0; to < 4; ++to) {
            model.bigrams[from][to] = noise.Next(0.0f, 1.0f);
        }
        model.unigrams.push_back(noise.Next(0.0f, 1.0f));
    }
}

/// The restricted search without shortcuts.
struct literal_steps {
    explicit literal_steps(const CAccousticHMM& acousticModel) : model(acousticModel), scores(12) {}

    void Try(int from, int to, double& best, int& winner) const {
        const double score = scores[size_t(from)];
        const float transition = model.transitions[size_t(from)][size_t(to)];
        if (score > 0 && transition > 0 && score * double{transition} > best) {
            best = score * double{transition};
            winner = from;
        }
    }
    uint8_t Advance(const float* x, uint8_t* row) {
        std::vector<double> next(12);
        double largest = 0.0;
        uint8_t cell = 0;
        for (int s = 0; s < 12; ++s) {
            double best = 0.0;
            int winner = 0;
            Try(s, s, best, winner);
            if (s > 0) {
                Try(s - 1, s, best, winner);
            }
            for (int last = 2; s % 3 == 0 && last < 12; last += 3) {
                Try(last, s, best, winner);
            }
            row[s] = static_cast<uint8_t>(winner);
            best *= model.GetStateProbability(x, s);
            if (!model.unigrams.empty() && !model.bigrams.empty() && winner != s && s % 3 == 0) {
                best *= double{model.bigrams[size_t(winner / 3)][size_t(s / 3)]} * 0.99 +
                        double{model.unigrams[size_t(s / 3)]} * 1e-7;
            }
            if (best > largest) {
                largest = best;
                cell = row[s];
            }
            next[size_t(s)] = best;
        }
        for (double& score : next) {
            score = largest != 0.0 ? score / largest : score;
        }
        scores = next;
        return cell;
    }

    const CAccousticHMM& model;
    std::vector<double> scores;
};

TEST(PhoneLoop, RestrictedSearchIsTheLiteralOne) {
    for (uint32_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        Noise noise(seed);
        const auto model = RandomStepModel(noise);
        ASSERT_EQ(model->hasLongTransitions, 0u);
        if (seed % 2 == 0) {
            AddStatistics(*model, noise);
        }
        phone_loop<uint8_t> loop(*model, StepTransitions(*model), true);
        literal_steps literal(*model);
        float x[12];
        for (int t = 0; t < 60; ++t) {
            for (size_t s = 0; s < 12; ++s) {
                x[s] = noise.Next(0.0f, 3.0f);
            }
            if (t == 0) {
                loop.Seed(x);
                literal.scores = loop.GetScores();
                continue;
            }
            std::vector<uint8_t> row(12), expected(12);
            ASSERT_EQ(loop.Advance(x, row.data()), literal.Advance(x, expected.data()));
            ASSERT_EQ(row, expected);
            ASSERT_EQ(loop.GetScores(), literal.scores);
        }
    }
}

TEST(PhoneLoop, TiesGoToTheStateItselfThenToTheOneBefore) {
    const auto model = MakeLikelihoodModel({"x", "AA"}, 0.5f, 1); // every state is first and last
    for (size_t from = 0; from < 2; ++from) {
        for (size_t to = 0; to < 2; ++to) {
            model->transitions[from][to] = 0.5f;
        }
    }
    uint8_t row[2] = {};
    const float x[2] = {};
    phone_loop<uint8_t> restricted(*model, StepTransitions(*model), true);
    restricted.Seed(x);
    restricted.Advance(x, row);
    EXPECT_EQ(row[1], 1); // itself is tried first
    phone_loop<uint8_t> full(*model, AllTransitions(*model));
    full.Seed(x);
    full.Advance(x, row);
    EXPECT_EQ(row[1], 0); // the lowest is tried first
}

} // namespace
} // namespace tessarin::test
