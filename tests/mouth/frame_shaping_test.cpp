#include "mouth/frame_shaping.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <gmock/gmock.h>

namespace {

using tessarin::articulation;
using tessarin::frame_shaping;
using tessarin::LoudnessCurve;
using tessarin::ShapeFrames;

tessarin_phoneme Phoneme(const char* label, int32_t startMs, int32_t endMs) {
    tessarin_phoneme phoneme{startMs, endMs, 0, {}};
    std::strncpy(phoneme.label, label, sizeof phoneme.label - 1);
    return phoneme;
}

/// Frame `index` of 30 a second, with times as an articulator cuts them off.
articulation Frame(int32_t index, std::initializer_list<std::pair<const char*, float>> weights) {
    articulation frame{};
    frame.start = index * 100000 / 3001;
    frame.end = (index + 1) * 100000 / 3001;
    for (const auto& [label, weight] : weights) {
        std::strcpy(frame.entries[frame.count].label, label);
        frame.entries[frame.count++].weight = weight;
    }
    return frame;
}

float Weight(const articulation& frame, const char* label) {
    for (int32_t i = 0; i < frame.count; ++i) {
        if (std::strcmp(frame.entries[i].label, label) == 0) {
            return frame.entries[i].weight;
        }
    }
    return 0.0f;
}

TEST(ShapeFrames, PlacesFramesByTheirNumbers) {
    std::vector<articulation> frames = {Frame(0, {{"x", 1}}), Frame(1, {{"AA", 1}}),
                                        Frame(4, {{"AA", 1}})};
    const std::vector<tessarin_phoneme> phonemes = {Phoneme("AA", 30, 190)};
    ShapeFrames(phonemes, LoudnessCurve({}), {}, frames);
    std::vector<int32_t> starts;
    for (const articulation& frame : frames) {
        starts.push_back(frame.start);
        EXPECT_EQ(frame.end, (100 * static_cast<int32_t>(starts.size()) + 1) / 3);
    }
    EXPECT_THAT(starts, testing::ElementsAre(0, 33, 67, 100, 133, 167, 200));
    EXPECT_EQ(Weight(frames[2], "x"), 1.0f) << "what nothing shows in rests";
    EXPECT_EQ(Weight(frames[6], "x"), 1.0f) << "to the end of the last sound";
}

TEST(ShapeFrames, ShowsClosuresThatFallBetweenFrames) {
    frame_shaping shaping;
    shaping.closed = {tessarin::phoneme_label("p"), tessarin::phoneme_label("f")};
    std::vector<articulation> frames;
    for (int32_t i = 0; i < 8; ++i) {
        frames.push_back(Frame(i, {{"AA", 0.6f}, {"p", 0.3f}, {"x", 0.1f}}));
    }
    // 10 ms that hold the centre of no frame, and a longer one.
    const std::vector<tessarin_phoneme> phonemes = {Phoneme("p", 62, 72), Phoneme("f", 130, 200)};
    ShapeFrames(phonemes, LoudnessCurve({}), shaping, frames);
    EXPECT_NEAR(Weight(frames[2], "p"), 0.9f, 1e-5f) << "the frame of its middle, 67 ms";
    EXPECT_NEAR(Weight(frames[1], "p"), 0.3f, 1e-5f);
    EXPECT_NEAR(std::max(Weight(frames[4], "f"), Weight(frames[5], "f")), 0.7f, 1e-5f);
    for (const articulation& frame : frames) {
        float sum = 0.0f;
        for (int32_t i = 0; i < frame.count; ++i) {
            sum += frame.entries[i].weight;
            EXPECT_LE(frame.entries[i].weight, i > 0 ? frame.entries[i - 1].weight : 1.0f);
        }
        EXPECT_NEAR(sum, 1.0f, 1e-5f);
    }
}

TEST(ShapeFrames, StrengthIsAFactorOfEachPart) {
    frame_shaping shaping;
    shaping.strength = {1.0f, 1.0f, 0.5f, 0.25f};
    shaping.max_weights = 3;
    std::vector<articulation> frames = {Frame(0, {{"AA", 0.4f}, {"p", 0.3f}, {"s", 0.3f}}),
                                        Frame(1, {{"p", 0.5f}, {"AA", 0.3f}, {"x", 0.2f}})};
    ShapeFrames({}, LoudnessCurve({}), shaping, frames);
    EXPECT_NEAR(Weight(frames[1], "p"), 0.5f, 1e-5f);
    EXPECT_NEAR(Weight(frames[1], "AA"), 0.15f, 1e-5f);
    EXPECT_NEAR(Weight(frames[1], "x"), 0.35f, 1e-5f);
    EXPECT_EQ(frames[0].count, 3) << "without the least, s";
    EXPECT_EQ(Weight(frames[0], "s"), 0.0f);

    shaping.strength = {1.0f, 1.0f, 4.0f, 1.0f};
    frames = {Frame(0, {{"x", 0.6f}, {"AA", 0.4f}})};
    ShapeFrames({}, LoudnessCurve({}), shaping, frames);
    EXPECT_NEAR(Weight(frames[0], "AA"), 1.0f, 1e-5f) << "no more than all of the mouth";
}

TEST(ShapeFrames, NothingJumpsWhereASlopeIsAskedFor) {
    frame_shaping shaping;
    shaping.closed = {tessarin::phoneme_label("p")};
    shaping.slope = 0.1f;
    std::vector<articulation> frames;
    for (int32_t i = 0; i < 12; ++i) {
        frames.push_back(i < 5    ? Frame(i, {{"x", 1}})
                         : i == 8 ? Frame(i, {{"p", 1}})
                                  : Frame(i, {{"AA", 0.9f}, {"x", 0.1f}}));
    }
    ShapeFrames({}, LoudnessCurve({}), shaping, frames);
    for (size_t i = 1; i < frames.size(); ++i) {
        EXPECT_LE(std::abs(Weight(frames[i], "AA") - Weight(frames[i - 1], "AA")), 0.1001f);
    }
    EXPECT_EQ(Weight(frames[8], "p"), 1.0f) << "closures snap";
    EXPECT_GT(Weight(frames[6], "AA"), 0.1f);
}

TEST(ShapeFrames, AFullFrameGivesUpItsLeast) {
    frame_shaping shaping;
    shaping.closed = {tessarin::phoneme_label("p")};
    std::vector<articulation> frames = {Frame(0, {{"AA", .05f},
                                                  {"AE", .1f},
                                                  {"AH", .1f},
                                                  {"AO", .1f},
                                                  {"EH", .1f},
                                                  {"IH", .1f},
                                                  {"IY", .1f},
                                                  {"UH", .1f},
                                                  {"UW", .1f},
                                                  {"s", .15f}})};
    const std::vector<tessarin_phoneme> phonemes = {Phoneme("p", 0, 30)};
    ShapeFrames(phonemes, LoudnessCurve({}), shaping, frames);
    EXPECT_NEAR(Weight(frames[0], "p"), 0.9f, 1e-5f);
    EXPECT_EQ(Weight(frames[0], "AA"), 0.0f);
    EXPECT_GT(Weight(frames[0], "s"), 0.0f);
}

TEST(ShapeFrames, TheJawFollowsTheLoudnessWithinAVowel) {
    std::vector<articulation> frames;
    for (int32_t i = 0; i < 6; ++i) {
        frames.push_back(Frame(i, {{"AA", 0.8f}, {"x", 0.2f}}));
    }
    std::vector<float> loudness(20);
    for (size_t i = 0; i < loudness.size(); ++i) {
        loudness[i] = -20.0f - static_cast<float>(i);
    }
    const std::vector<tessarin_phoneme> phonemes = {Phoneme("AA", 0, 200)};
    frame_shaping shaping;
    shaping.usual_db = -28.0f;
    ShapeFrames(phonemes, LoudnessCurve(loudness), shaping, frames);
    for (size_t i = 1; i + 1 < frames.size(); ++i) {
        EXPECT_LT(Weight(frames[i], "AA"), Weight(frames[i - 1], "AA"));
    }
}

} // namespace
