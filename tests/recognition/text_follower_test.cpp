#include "recognition/loose/text_follower.h"

#include <algorithm>
#include <optional>
#include <random>

#include <gtest/gtest.h>

#include "fixtures.h"
#include "recognition/graph/state_graph.h"
#include "recognition/loose/text_probe.h"
#include "recognition/loose/word_chain.h"

namespace tessarin::test {
namespace {

constexpr int kPhones = 9; // x and eight more
constexpr size_t kStates = kPhones * 3;

/// Words of three phones each, drawn at random, and audio that is mostly what they say.
class TextFollower : public testing::Test {
protected:
    void Write(size_t count) {
        for (size_t word = 0; word < count; ++word) {
            std::string phonemes;
            for (int i = 0; i < 3; ++i) {
                phonemes += model->labels[1 + random() % (kPhones - 1)];
            }
            words.push_back(phonemes);
            tokens.AddWord(static_cast<uint32_t>(word * 4), static_cast<uint32_t>(word * 4 + 3),
                           phonemes);
        }
        state_graph_builder builder(*model, pool);
        std::vector<uint32_t> starts;
        std::vector<uint32_t> ends;
        builder.AddMarkers(tokens.markers, true, starts, ends);
        const uint32_t positions = builder.StateCount() / 3;
        chain.emplace(*model, builder.CopyGraph(), positions, tokens.markers);
    }
    void Say(const std::string& phonemes) {
        std::uniform_real_distribution<float> noise(3.0f, 5.0f);
        for (const char phone : phonemes) {
            const auto index = static_cast<size_t>(
                std::ranges::find(model->labels, std::string(1, phone)) - model->labels.begin());
            for (size_t state = 0; state < 3; ++state) {
                for (int i = 0; i < 3; ++i) {
                    std::vector<float> x(kStates);
                    std::ranges::generate(x, [&] { return noise(random); });
                    x[index * 3 + state] = 0.5f;
                    audio.push_back(x);
                }
            }
        }
    }
    void SayWords(size_t first, size_t end) {
        for (size_t word = first; word < end; ++word) {
            saidAt.emplace_back(word, audio.size());
            Say(words[word]);
        }
    }
    void SayOther(int phones) {
        std::string other;
        for (int i = 0; i < phones; ++i) {
            other += model->labels[1 + random() % (kPhones - 1)];
        }
        Say(other);
    }
    followed_path Follow(const follower_limits& limits) {
        text_follower follower(*model, *chain, audio.size(), limits);
        for (const std::vector<float>& x : audio) {
            follower.Add(x.data());
        }
        EXPECT_TRUE(follower.Finish([](double) { return false; }));
        EXPECT_EQ(follower.AboveHeard(0, 0).has_value(), limits.whole >= audio.size());
        return follower.GetPath();
    }
    /// How many of the words that are said begin where they do.
    size_t Found(const followed_path& path) const {
        return static_cast<size_t>(std::ranges::count_if(saidAt, [&](const auto& each) {
            const auto& [word, at] = each;
            return path.states[at + 1] < loose_path::kFiller &&
                   chain->WordOf(path.states[at + 1]) == word;
        }));
    }

    std::mt19937 random{7};
    std::unique_ptr<CAccousticHMM> model =
        MakeLikelihoodModel({"x", "a", "b", "c", "d", "e", "f", "g", "h"}, 0.6f);
    token_list tokens;
    quib_allocator pool{32768};
    std::optional<word_chain> chain;
    std::vector<std::string> words;
    std::vector<std::vector<float>> audio;
    std::vector<std::pair<size_t, size_t>> saidAt; // word and observation
    /// Of words of 27 observations.
    const follower_limits pieces{
        .piece = 400, .mostPiece = 1600, .whole = 500, .tail = 100, .probe = 300};
};

TEST_F(TextFollower, FindsPieceByPieceWhatItFindsInTheWhole) {
    Write(60);
    SayWords(0, 20);
    SayOther(15);
    SayWords(20, 35);
    SayWords(38, 60);
    follower_limits whole;
    whole.whole = audio.size();
    const followed_path atOnce = Follow(whole);
    const followed_path inPieces = Follow(pieces);
    EXPECT_EQ(Found(atOnce), saidAt.size());
    EXPECT_EQ(atOnce.states, inPieces.states);
    EXPECT_EQ(atOnce.heardStates, inPieces.heardStates);
    for (size_t word = 0; word < words.size(); ++word) {
        const bool isSaid = word < 35 || word >= 38;
        EXPECT_EQ(atOnce.margins[word] > 0.0, isSaid) << word;
        EXPECT_EQ(inPieces.margins[word] > 0.0, isSaid) << word;
    }
}

TEST_F(TextFollower, FindsTheTextAgainAfterAChapterThatOneSideLacks) {
    Write(400);
    SayWords(0, 60);
    SayOther(400); // 3600 observations, more than twice what waits at most
    SayWords(60, 120);
    SayWords(320, 400); // 200 words are missing
    const followed_path path = Follow(pieces);
    EXPECT_GE(Found(path), saidAt.size() - 12); // six on each side of a gap
    for (size_t word = 125; word < 315; ++word) {
        EXPECT_FALSE(path.margins[word] > 0.0) << word;
    }
}

TEST_F(TextFollower, TakesAnotherTextForOtherSpeech) {
    Write(300);
    SayOther(900);
    const followed_path path = Follow(pieces);
    EXPECT_TRUE(path.isFound);
    ASSERT_EQ(path.states.size(), audio.size());
    const auto other = std::ranges::count_if(
        path.states, [](uint32_t state) { return state >= loose_path::kFiller; });
    EXPECT_GT(other, static_cast<std::ptrdiff_t>(audio.size() * 9 / 10));
}

/// Where no look for a lost text is affordable, it stays lost.
TEST_F(TextFollower, KeepsToItsBudget) {
    Write(200);
    SayWords(0, 40);
    SayOther(400);
    SayWords(100, 150);
    follower_limits poor = pieces;
    poor.probeCells = poor.probeRate = 0;
    EXPECT_LE(Found(Follow(poor)), 41u);
    EXPECT_GE(Found(Follow(pieces)), 80u);
}

} // namespace
} // namespace tessarin::test
