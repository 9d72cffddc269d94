#include "recognition/loose/loose_viterbi.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/quib_allocator.h"
#include "fixtures.h"
#include "recognition/graph/state_graph.h"
#include "recognition/loose/heard_phones.h"
#include "recognition/loose/state_scores.h"
#include "recognition/loose/word_chain.h"

namespace tessarin::test {
namespace {

constexpr double kNever = -std::numeric_limits<double>::infinity();

/// Three words, the first with two pronunciations, and everything about them written down by hand.
/// States: silence 0-2, s 3-5 AA 6-8 or t 9-11, silence 12-14, t 15-17, silence 18-20, AA 21-23,
/// silence 24-26.
class LooseViterbi : public testing::Test {
protected:
    LooseViterbi() {
        tokens.Add(kWordToken, 0, 2, {{{"sAA", "t"}}});
        tokens.AddWord(3, 4, "t");
        tokens.AddWord(5, 6, "AA");
        state_graph_builder builder(*model, pool);
        std::vector<uint32_t> starts;
        std::vector<uint32_t> ends;
        builder.AddMarkers(tokens.markers, true, starts, ends);
        positions = builder.StateCount() / 3;
        graph = builder.CopyGraph();
    }

    void Speak(uint32_t seed, int observations) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> value(0.0f, 5.0f);
        std::vector<float> x(12);
        for (int t = 0; t < observations; ++t) {
            std::ranges::generate(x, [&] { return value(random); });
            scores->Add(x.data());
            fillers.push_back(-value(random));
        }
    }

    loose_path Find(size_t blockBytes = size_t{32} << 20) {
        loose_path path;
        EXPECT_TRUE(FindLoosePath(
            word_chain(*model, graph, positions, tokens.markers), stretch, *scores, fillers, costs,
            [](double) { return false; }, path, blockBytes));
        return path;
    }

    std::unique_ptr<CAccousticHMM> model = MakeLikelihoodModel({"x", "AA", "s", "t"}, 0.6f);
    token_list tokens;
    quib_allocator pool{32768};
    state_rec* const* graph = nullptr;
    uint32_t positions = 0;
    std::optional<state_scores> scores{*model};
    std::vector<float> fillers;
    departure_costs costs{3.0, 4.0, 1.0};
    chain_stretch stretch{0, 3};
};

/// The best path when just the words in `skipped` are left out, by recursion over all that may come
/// before.
class plain_reference {
public:
    plain_reference(const state_rec* const* stateGraph, const state_scores& stateScores,
                    const std::vector<float>& fillerScores, const departure_costs& departures,
                    unsigned wordsSkipped)
        : graph(stateGraph), scores(stateScores), fillers(fillerScores), costs(departures),
          skipped(wordsSkipped) {}

    double Best() { return Junction(3, static_cast<int>(scores.GetCount())); }

private:
    struct word {
        std::vector<uint32_t> entries;
        std::vector<uint32_t> exits;
        uint32_t first;
        uint32_t end;
    };
    static constexpr uint32_t kSilences[] = {0, 12, 18, 24};
    static constexpr double kLeave = -0.916290731874155; // of 1 - 0.6
    const std::vector<word> words = {
        {{3, 9}, {8, 11}, 3, 12}, {{15}, {17}, 15, 18}, {{21}, {23}, 21, 24}};

    bool IsSkipped(int w) const { return (skipped >> w & 1) != 0; }

    double Junction(int j, int t) {
        if (t < 0) {
            return kNever;
        }
        double best = j == 0 && t == 0 ? 0.0 : kNever;
        if (j > 0 && IsSkipped(j - 1)) {
            best = Junction(j - 1, t) - costs.skip;
        } else if (j > 0) {
            for (const uint32_t state : words[static_cast<size_t>(j) - 1].exits) {
                best = std::max(best, State(state, t) + kLeave);
            }
        }
        best = std::max(best, State(kSilences[j] + 2, t) + kLeave);
        return std::max(best, Filler(j, t));
    }

    double Filler(int j, int t) {
        if (t <= 0) {
            return kNever;
        }
        auto [place, isNew] = fillerMemory.try_emplace({j, t}, 0.0);
        if (isNew) {
            const double value =
                std::max(Filler(j, t - 1), Junction(j, t - 1) - costs.fillerEntry) +
                static_cast<double>(fillers[static_cast<size_t>(t) - 1]) - costs.fillerStep;
            fillerMemory[{j, t}] = value;
        }
        return fillerMemory[{j, t}];
    }

    double State(uint32_t n, int t) {
        if (t <= 0) {
            return kNever;
        }
        if (const auto known = stateMemory.find({n, t}); known != stateMemory.end()) {
            return known->second;
        }
        double best = kNever;
        const auto enter = [&](int junction) { best = std::max(best, Junction(junction, t - 1)); };
        uint32_t first = n;
        for (int j = 0; j < 4; ++j) {
            if (n >= kSilences[j] && n < kSilences[j] + 3) {
                first = kSilences[j];
                if (n == first) {
                    enter(j);
                }
            }
        }
        for (int w = 0; w < 3; ++w) {
            const word& each = words[static_cast<size_t>(w)];
            if (n >= each.first && n < each.end) {
                first = each.first;
                if (IsSkipped(w)) {
                    return kNever;
                }
                if (std::ranges::find(each.entries, n) != each.entries.end()) {
                    enter(w);
                }
            }
        }
        for (uint16_t i = 0; i < graph[n]->predecessors; ++i) {
            const state_arc& arc = graph[n]->Arcs()[i];
            if (arc.state >= first) {
                best = std::max(best, State(arc.state, t - 1) +
                                          static_cast<double>(std::log(arc.probability)));
            }
        }
        const uint32_t output = graph[n]->phone * 3u + graph[n]->state;
        return stateMemory[{n, t}] =
                   best + static_cast<double>(scores[static_cast<size_t>(t) - 1][output]);
    }

    const state_rec* const* graph;
    const state_scores& scores;
    const std::vector<float>& fillers;
    const departure_costs costs;
    const unsigned skipped;
    std::map<std::pair<int, int>, double> fillerMemory;
    std::map<std::pair<uint32_t, int>, double> stateMemory;
};

TEST_F(LooseViterbi, FindsWhatTryingAllWaysToSkipFinds) {
    unsigned waysSeen = 0;
    for (uint32_t seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        scores.emplace(*model);
        fillers.clear();
        Speak(seed, 4 + static_cast<int>(seed) % 11); // some are shorter than the text
        double best = kNever;
        double scoreOf[8];
        double through[] = {kNever, kNever, kNever};
        double past[] = {kNever, kNever, kNever};
        for (unsigned way = 0; way < 8; ++way) {
            const double score = plain_reference(graph, *scores, fillers, costs, way).Best();
            scoreOf[way] = score;
            best = std::max(best, score);
            for (unsigned word = 0; word < 3; ++word) {
                double& side = (way >> word & 1) != 0 ? past[word] : through[word];
                side = std::max(side, score);
            }
        }
        const loose_path path = Find();
        EXPECT_NEAR(path.score, best, 1e-4);
        unsigned way = 7;
        const std::pair<uint32_t, uint32_t> places[] = {{3, 12}, {15, 18}, {21, 24}};
        for (unsigned word = 0; word < 3; ++word) {
            if (through[word] == kNever) {
                EXPECT_EQ(path.margins[word], kNever);
            } else {
                EXPECT_NEAR(path.margins[word], through[word] - past[word], 1e-4);
            }
            for (const uint32_t state : path.states) {
                if (state >= places[word].first && state < places[word].second) {
                    way &= ~(1u << word);
                }
            }
        }
        EXPECT_NEAR(scoreOf[way], best, 1e-4); // there are ties
        waysSeen |= 1u << way;
    }
    EXPECT_GE(std::popcount(waysSeen), 4);
}

TEST_F(LooseViterbi, IsIndifferentToBlocks) {
    Speak(7, 100);
    const loose_path whole = Find();
    const loose_path inBlocks = Find(1);
    EXPECT_EQ(whole.states, inBlocks.states);
    EXPECT_EQ(whole.margins, inBlocks.margins);
    EXPECT_TRUE(std::ranges::any_of(whole.states, [](uint32_t s) { return s < 0x80000000; }));
}

TEST_F(LooseViterbi, EndsWhenItIsCancelled) {
    Speak(1, 300);
    loose_path path;
    EXPECT_FALSE(FindLoosePath(
        word_chain(*model, graph, positions, tokens.markers), stretch, *scores, fillers, costs,
        [](double share) { return share > 0.6; }, path, 1));
}

TEST_F(LooseViterbi, DoesNotSkipAPauseThatWasAskedFor) {
    token_list paused;
    paused.AddWord(0, 1, "t");
    paused.Add(kTagToken, 2, 3, {{{"x"}}}, kPauseTokenFlag);
    state_graph_builder builder(*model, pool);
    std::vector<uint32_t> starts;
    std::vector<uint32_t> ends;
    builder.AddMarkers(paused.markers, true, starts, ends);
    const word_chain chain(*model, builder.CopyGraph(), builder.StateCount() / 3, paused.markers);
    Speak(3, 12);
    loose_path path;
    ASSERT_TRUE(FindLoosePath(
        chain, {0, 2}, *scores, fillers, {0.0, 0.0, 0.0}, [](double) { return false; }, path));
    EXPECT_EQ(path.margins[1], -kNever);
    EXPECT_TRUE(std::ranges::any_of(path.states, [](uint32_t s) { return s >= 9 && s < 12; }));
}

/// The ends of a stretch: by the reference, whose way to any junction is a path that ends there.
TEST_F(LooseViterbi, MayBeginAndEndAnywhere) {
    costs.skip = 1e9;
    for (uint32_t seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        scores.emplace(*model);
        fillers.clear();
        Speak(seed, 8);
        const loose_path closed = Find();
        stretch = {0, 3, true, true};
        const loose_path open = Find();
        // Each of its observations is in order, and its score is at least that of any part.
        EXPECT_GE(open.score, closed.score);
        for (size_t first = 0; first < 3; ++first) {
            for (size_t end = first + 1; end <= 3; ++end) {
                stretch = {first, end};
                EXPECT_GE(open.score, Find().score - 1e-9);
            }
        }
        // What a part alone finds is found in the whole that has nothing else to offer.
        stretch = {1, 2};
        const loose_path part = Find();
        for (const uint32_t state : part.states) {
            EXPECT_TRUE(state >= loose_path::kFiller
                            ? state - loose_path::kFiller >= 1 && state - loose_path::kFiller <= 2
                            : state >= 12 && state < 21);
        }
        stretch = {0, 3};
    }
}

/// By trying all paths: the loop has phones of one state here.
TEST(HearPhones, FindsTheBestPathThroughTheLoop) {
    const auto model = MakeLikelihoodModel({"x", "AA", "s"}, 0.6f, 1);
    const double change = std::log(0.4f) - std::log(3.0) - 3.0;
    for (uint32_t seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> value(0.0f, 6.0f);
        state_scores scores(*model);
        for (int t = 0; t < 6; ++t) {
            const float x[] = {value(random), value(random), value(random)};
            scores.Add(x);
        }
        double best = kNever;
        std::vector<uint16_t> bestPath;
        for (int way = 0; way < 729; ++way) {
            std::vector<uint16_t> path;
            double score = -std::log(3.0) - 3.0;
            for (int t = 0, rest = way; t < 6; ++t, rest /= 3) {
                path.push_back(static_cast<uint16_t>(rest % 3));
                const bool stays = t > 0 && path[path.size() - 2] == path.back();
                score += t == 0 ? 0.0 : stays ? std::log(0.6) : change;
                score += static_cast<double>(scores[path.size() - 1][path.back()]);
            }
            if (score > best) {
                best = score;
                bestPath = path;
            }
        }
        const heard_phones heard = HearPhones(*model, scores);
        EXPECT_EQ(heard.states, bestPath);
        for (size_t t = 0; t < bestPath.size(); ++t) {
            EXPECT_EQ(heard.scores[t], scores[t][bestPath[t]]);
        }
    }
}

} // namespace
} // namespace tessarin::test
