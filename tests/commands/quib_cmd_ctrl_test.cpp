#include "commands/quib_cmd_ctrl.h"

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "model/accoustic_hmm.h"
#include "recognition/fixtures.h"

namespace tessarin {
namespace {

constexpr size_t kStates = 12; // of four phonemes

/// A controller with its reference, and a model of silence and three sounds.
struct commander {
    explicit commander(float energyFloor = 0.0f)
        : model(test::MakeLikelihoodModel({"x", "AA", "s", "m"})),
          controller(*new CQuibCmdCtrl(*model, energyFloor)) {
        controller.AddRef();
    }
    ~commander() { controller.Release(); }

    /// The id that is recognized; `*score` and `*lines`, what went to standard output, may be null.
    uint32_t Recognize(test::list_stream stream, double* score = nullptr,
                       std::string* lines = nullptr, ProgressSink* progress = nullptr) {
        testing::internal::CaptureStdout();
        const uint32_t id = controller.RecognizeCommand(&stream, progress, score);
        std::fflush(stdout);
        const std::string captured = testing::internal::GetCapturedStdout();
        if (lines != nullptr) {
            *lines = captured;
        }
        return id;
    }

    std::unique_ptr<CAccousticHMM> model;
    CQuibCmdCtrl& controller;
};

/// `count` frames of each state of these phonemes, one after the other, and silence; other states
/// are unlikely.
test::list_stream Speak(std::vector<size_t> phones, int count = 2) {
    test::list_stream stream;
    phones.push_back(0);
    for (const size_t phone : phones) {
        for (size_t state = 0; state < 3; ++state) {
            stream.AddOnly(3 * phone + state, kStates, count, 50.0f, 1e-3);
        }
    }
    return stream;
}

TEST(CommandController, LivesAsLongAsItHasReferences) {
    const auto model = test::MakeLikelihoodModel({"x", "AA"});
    IQuibCmdCtrl* controller = new CQuibCmdCtrl(*model, 0.0f);
    // Kept: a new controller has no reference.
    EXPECT_EQ(controller->AddRef(), 1);
    EXPECT_EQ(controller->AddRef(), 2);
    EXPECT_EQ(controller->Release(), 1);
    EXPECT_EQ(controller->Release(), 0);
    EXPECT_EQ((new CQuibCmdCtrl(*model, 0.0f))->Release(), 0);
}

TEST(CommandController, FindsTheCommandThatWasSaid) {
    commander host;
    test::ready_transcriber transcriber;
    transcriber.tokens.AddWord(0, 2, "sAA");
    transcriber.tokens.AddWord(3, 5, "m");
    EXPECT_EQ(host.controller.AddCommandFromTranscriber("sa m", &transcriber), 1u);
    EXPECT_EQ(transcriber.transcribed, "sa m");
    EXPECT_EQ(host.controller.AddCommandFromPhonemes(" m, AA\ts "), 2u);
    test::token_list tokens;
    tokens.Add(kWordToken, 0, 1, {{{"s", "m"}}}); // two ways to say it
    EXPECT_EQ(host.controller.AddCommandFromMarkers(tokens.markers.data(),
                                                    tokens.markers.data() + tokens.markers.size()),
              3u);

    double score = 0.0;
    std::string lines;
    EXPECT_EQ(host.Recognize(Speak({2, 1, 3}), &score, &lines), 1u);
    EXPECT_EQ(host.Recognize(Speak({0, 2, 1, 0, 3})), 1u) << "with pauses";
    EXPECT_EQ(host.Recognize(Speak({3, 1, 2})), 2u);
    EXPECT_EQ(host.Recognize(Speak({2})), 3u);
    EXPECT_EQ(host.Recognize(Speak({3})), 3u);
    // All 24 frames are certain, so only the 23 steps cost something, each a half; of the second
    // word another half, as it can be entered from a pause too.
    EXPECT_NEAR(score, std::log(24.0) + 24 * std::log(0.5), 1e-5);
    char line[40];
    std::snprintf(line, sizeof(line), "mdl 1 %g\n", score);
    EXPECT_EQ(lines.substr(0, lines.find('\n') + 1), line);
}

TEST(CommandController, AddsNothingThatCannotBeSaid) {
    commander host;
    test::ready_transcriber silent;
    EXPECT_EQ(host.controller.AddCommandFromTranscriber("", &silent), 0u);
    EXPECT_EQ(host.controller.AddCommandFromTranscriber(nullptr, &silent), 0u);
    EXPECT_EQ(host.controller.AddCommandFromTranscriber("s", nullptr), 0u);
    EXPECT_EQ(host.controller.AddCommandFromPhonemes("sQQ"), 0u);
    EXPECT_EQ(host.controller.AddCommandFromPhonemes(nullptr), 0u);
    EXPECT_EQ(host.controller.AddCommandFromMarkers(nullptr, nullptr), 0u);
    test::token_list word;
    word.AddWord(0, 1, "s");
    CTxMarker* start = word.markers.data();
    EXPECT_EQ(host.controller.AddCommandFromMarkers(start + word.markers.size(), start), 0u);
    EXPECT_EQ(host.controller.AddCommandFromPhonemes("s"), 1u) << "nothing was added";

    const auto large = test::MakeLikelihoodModel({"x", "s"}, 0.5f, 257);
    IQuibCmdCtrl* controller = new CQuibCmdCtrl(*large, 0.0f);
    EXPECT_EQ(controller->AddCommandFromPhonemes("s"), 0u);
    controller->Release();
}

TEST(CommandController, NumbersCommandsFromTheLargest) {
    commander host;
    for (uint32_t id = 1; id <= 3; ++id) {
        EXPECT_EQ(host.controller.AddCommandFromPhonemes("s"), id);
    }
    host.controller.DeleteCommand(2);
    EXPECT_EQ(host.controller.AddCommandFromPhonemes("s"), 4u);
    host.controller.DeleteCommand(4);
    host.controller.DeleteCommand(7);
    // Kept: a number can come back.
    EXPECT_EQ(host.controller.AddCommandFromPhonemes("m"), 4u);
    EXPECT_EQ(host.Recognize(Speak({3})), 4u);
}

TEST(CommandController, LeavesDisabledCommandsOut) {
    commander host;
    host.controller.AddCommandFromPhonemes("s");
    host.controller.AddCommandFromPhonemes("s");
    host.controller.DisableCommand(1);
    host.controller.DisableCommand(9);
    std::string lines;
    EXPECT_EQ(host.Recognize(Speak({2}), nullptr, &lines), 2u);
    EXPECT_EQ(lines.find("mdl 1"), std::string::npos);
    host.controller.DisableCommand(2);
    double score = 5.0;
    EXPECT_EQ(host.Recognize(Speak({2}), &score, &lines), 0u);
    EXPECT_EQ(score, -1e10);
    EXPECT_EQ(lines, "");
    EXPECT_EQ(host.controller.AddCommandFromPhonemes("AA"), 3u) << "they keep their numbers";
    host.controller.EnableCommand(1);
    EXPECT_EQ(host.Recognize(Speak({2})), 1u);
}

TEST(CommandController, PrefersTheEarlierOfEquals) {
    commander host;
    host.controller.AddCommandFromPhonemes("m");
    host.controller.AddCommandFromPhonemes("s");
    host.controller.AddCommandFromPhonemes("s");
    EXPECT_EQ(host.Recognize(Speak({2})), 2u);
}

TEST(CommandController, IgnoresUtterancesThatAreTooShort) {
    const struct {
        float floor;
        size_t loudFrames;
        uint32_t id;
        double score;
    } cases[] = {
        {0, 0, 1, -5.1}, {-1, 0, 1, -5.1}, {10, 2, 0, 5.0}, {10, 3, 0, -1e10}, {10, 6, 1, -1.7}};
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::Message() << each.floor << ' ' << each.loudFrames);
        commander host(each.floor);
        host.controller.AddCommandFromPhonemes("s");
        test::list_stream stream = Speak({2});
        for (size_t i = 0; i < stream.energies.size(); ++i) {
            const bool isLoud = i % 2 == 0 && i / 2 < each.loudFrames;
            stream.energies[i] = isLoud ? 10.5f : 10.0f; // a frame of each state
        }
        double score = 5.0;
        EXPECT_EQ(host.Recognize(stream, &score), each.id);
        EXPECT_NEAR(score, each.score, 0.1);
    }
    commander host;
    host.controller.AddCommandFromPhonemes("s");
    test::list_stream two = Speak({2});
    two.observations.resize(2);
    double score = 5.0;
    EXPECT_EQ(host.Recognize(two, &score), 0u);
    EXPECT_EQ(score, 5.0);
    test::list_stream broken = Speak({2});
    broken.failAt = 4;
    EXPECT_EQ(host.Recognize(broken, &score), 0u);
    EXPECT_EQ(host.controller.RecognizeCommand(nullptr, nullptr, &score), 0u);
    EXPECT_EQ(score, 5.0);
}

// Kept: a search that is cancelled costs its command only; the others are still searched.
TEST(CommandController, GoesOnBehindACommandThatFails) {
    commander host;
    host.controller.AddCommandFromPhonemes("s");
    host.controller.AddCommandFromPhonemes("s");
    class cancel_first final : public ProgressSink {
    public:
        void SetStatus(const char*) override {}
        bool OnProgress(uint32_t, uint32_t) override { return calls++ == 0; }
        int calls = 0;
    } progress;
    std::string lines;
    EXPECT_EQ(host.Recognize(Speak({2}, 40), nullptr, &lines, &progress), 2u);
    EXPECT_GT(progress.calls, 1);
    EXPECT_EQ(lines.substr(0, 6), "mdl 2 ");
}

} // namespace
} // namespace tessarin
