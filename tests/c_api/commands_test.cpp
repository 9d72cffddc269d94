#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <numbers>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tessarin/owned.h"

namespace {

using tessarin::Out;
using testing::ElementsAre;

constexpr const char* kData = TESSARIN_SOURCE_DIR "/data";
constexpr uint32_t kRateHz = 16000;

/// A tone that glides for half a second, and a second of silence.
std::vector<int16_t> Glide(double fromHz, double toHz) {
    std::vector<int16_t> samples(kRateHz * 3 / 2);
    double phase = 0.0;
    for (uint32_t i = 0; i < kRateHz / 2; ++i) {
        phase += 2 * std::numbers::pi * (fromHz + (toHz - fromHz) * 2 * i / kRateHz) / kRateHz;
        samples[i] = static_cast<int16_t>(8000 * std::sin(phase));
    }
    return samples;
}

tessarin::flat::audio_owner AudioOf(const std::vector<int16_t>& samples) {
    tessarin::flat::audio_owner audio;
    EXPECT_EQ(tessarin_create_audio_from_int16(
                  samples.data(), static_cast<uint32_t>(samples.size()), kRateHz, Out(audio)),
              TESSARIN_OK);
    return audio;
}

class FlatCommands : public testing::Test {
protected:
    FlatCommands() {
        const std::string data = kData;
        EXPECT_EQ(tessarin_create_model_from_file((data + "/en-us.model").c_str(), Out(model)), 0);
        EXPECT_EQ(
            tessarin_create_language_from_file((data + "/en-us.lexicon").c_str(), Out(language)),
            0);
        EXPECT_EQ(
            tessarin_create_audio_from_file((data + "/demo/echo-test.wav").c_str(), 1, Out(demo)),
            0);
        EXPECT_EQ(tessarin_create_commands(model.get(), nullptr, Out(commands)), 0);
    }

    int32_t AddSample(const char* name, const std::vector<int16_t>& samples) {
        return tessarin_add_command_sample(commands.get(), name, AudioOf(samples).get(), nullptr);
    }

    /// The names of the last ranking, the best first.
    std::vector<std::string> Ranking() const {
        uint32_t count = 0;
        const tessarin_command_match* const matches =
            tessarin_get_command_ranking(commands.get(), &count);
        std::vector<std::string> names;
        for (uint32_t i = 0; i < count; ++i) {
            names.emplace_back(matches[i].name);
        }
        return names;
    }
    double BestScore() const {
        const tessarin_command_match* const matches =
            tessarin_get_command_ranking(commands.get(), nullptr);
        return matches != nullptr ? matches[0].score : std::nan("");
    }
    std::vector<std::string> RankingOf(const std::vector<int16_t>& samples) {
        EXPECT_EQ(tessarin_rank_commands(commands.get(), AudioOf(samples).get(), nullptr, nullptr),
                  TESSARIN_OK);
        return Ranking();
    }

    /// Pushes in blocks of 20 ms until the utterance ends, and returns after how many samples.
    size_t Push(const std::vector<int16_t>& samples) {
        size_t pushed = 0;
        int32_t hasEnded = 0;
        while (pushed < samples.size() && hasEnded == 0) {
            const size_t count = std::min<size_t>(320, samples.size() - pushed);
            EXPECT_EQ(tessarin_push_command_audio(commands.get(), samples.data() + pushed,
                                                  static_cast<uint32_t>(count), &hasEnded),
                      TESSARIN_OK);
            pushed += count;
        }
        return pushed;
    }

    tessarin::flat::model_owner model;
    tessarin::flat::language_owner language;
    tessarin::flat::audio_owner demo;
    tessarin::flat::commands_owner commands;
};

TEST_F(FlatCommands, RankWhatIsSaid) {
    ASSERT_EQ(
        tessarin_add_command_text(commands.get(), language.get(), "door", "Open the garage door."),
        0);
    ASSERT_EQ(tessarin_add_command_phonemes(commands.get(), "lights", "l AY t s, AO f"), 0);
    ASSERT_EQ(tessarin_add_command_text(commands.get(), language.get(), "enter",
                                        "You are about to enter an echo test"),
              0);
    // Another way to say a command, not another command.
    ASSERT_EQ(tessarin_add_command_text(commands.get(), language.get(), "enter", "enter"), 0);
    const tessarin_search_options sentence{sizeof sentence, 0, 0, 2400, 0, 0, nullptr, 0};
    testing::internal::CaptureStdout();
    ASSERT_EQ(tessarin_rank_commands(commands.get(), demo.get(), &sentence, nullptr), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "standard output is the host's";
    EXPECT_EQ(Ranking().size(), 3u);
    EXPECT_EQ(Ranking().front(), "enter");
    const double score = BestScore();

    // Live, to the pause after the sentence.
    uint32_t count = 0;
    const int16_t* const samples = tessarin_get_audio_samples(demo.get(), &count);
    std::vector<int16_t> live(samples, samples + kRateHz * 24 / 10);
    live.resize(live.size() + kRateHz);
    const size_t pushed = Push(live);
    EXPECT_LT(pushed, live.size());
    ASSERT_EQ(tessarin_rank_utterance(commands.get(), nullptr), 0);
    EXPECT_EQ(Ranking().front(), "enter");
    EXPECT_LT(BestScore(), score) << "it has some of the silence, too";

    tessarin_progress stop{};
    stop.on_progress = [](void*, uint32_t, uint32_t) { return 1; };
    EXPECT_EQ(tessarin_rank_commands(commands.get(), demo.get(), nullptr, &stop),
              TESSARIN_CANCELLED);
    EXPECT_EQ(Ranking().size(), 0u);
}

TEST_F(FlatCommands, RankSamples) {
    const std::vector<int16_t> up = Glide(300, 3000);
    const std::vector<int16_t> down = Glide(3000, 300);
    const std::vector<int16_t> almostUp = Glide(350, 2800);
    ASSERT_EQ(AddSample("up", up), 0);
    ASSERT_EQ(AddSample("down", down), 0);
    EXPECT_THAT(RankingOf(almostUp), ElementsAre("up", "down"));
    const double distance = BestScore();
    EXPECT_THAT(RankingOf(down), ElementsAre("down", "up"));
    EXPECT_EQ(BestScore(), 0.0);
    ASSERT_EQ(AddSample("up", almostUp), 0);
    EXPECT_THAT(RankingOf(almostUp), ElementsAre("up", "down")) << "a name stands once";
    EXPECT_LT(BestScore(), distance);
    EXPECT_THAT(RankingOf({up.begin(), up.begin() + 200}), ElementsAre()) << "too short";

    uint64_t size = 0;
    const void* data = nullptr;
    ASSERT_EQ(tessarin_pack_command_samples(commands.get(), &size, &data), 0);
    const std::string packed(static_cast<const char*>(data), size);
    for (size_t end = 0; end < packed.size(); end = end < 1200 ? end + 1 : end + 997) {
        tessarin::flat::commands_owner broken;
        ASSERT_EQ(tessarin_create_commands(model.get(), nullptr, Out(broken)), 0);
        const std::string cut = packed.substr(0, end);
        const int32_t code =
            tessarin_add_packed_command_samples(broken.get(), cut.data(), cut.size());
        // Whole samples without names are a file, too.
        uint32_t counts[5] = {};
        std::memcpy(counts, packed.data(), sizeof counts);
        const bool isWhole = end == sizeof counts + size_t{counts[2]} * counts[4] * 4;
        EXPECT_EQ(code, isWhole ? TESSARIN_OK : TESSARIN_INVALID_FILE) << end;
    }
    ASSERT_EQ(tessarin_create_commands(model.get(), nullptr, Out(commands)), 0);
    ASSERT_EQ(tessarin_add_packed_command_samples(commands.get(), packed.data(), packed.size()), 0);
    EXPECT_THAT(RankingOf(down), ElementsAre("down", "up"));
}

TEST_F(FlatCommands, HearSamplesLiveAtAnyRate) {
    const std::vector<int16_t> up = Glide(300, 3000);
    const std::vector<int16_t> down = Glide(3000, 300);
    for (const uint32_t rateHz : {kRateHz, 3 * kRateHz}) {
        SCOPED_TRACE(rateHz);
        const tessarin_command_options options{sizeof options, rateHz, 35.0f};
        ASSERT_EQ(tessarin_create_commands(model.get(), &options, Out(commands)), 0);
        ASSERT_EQ(AddSample("up", up), 0);
        ASSERT_EQ(AddSample("down", down), 0);
        for (const auto& [name, samples] : {std::pair("up", &up), std::pair("down", &down),
                                            std::pair("up", &up), std::pair("up", &up)}) {
            std::vector<int16_t> live;
            for (const int16_t sample : *samples) {
                live.insert(live.end(), rateHz / kRateHz, sample);
            }
            const size_t pushed = Push(live);
            EXPECT_GT(pushed, rateHz / 2);
            EXPECT_LT(pushed, live.size());
            const double endMs = static_cast<double>(pushed) * 1000 / rateHz;
            EXPECT_NEAR(endMs, 640, 20) << "no utterance is heard at another rate";
            ASSERT_EQ(tessarin_rank_utterance(commands.get(), nullptr), 0);
            ASSERT_EQ(Ranking().size(), 2u);
            EXPECT_EQ(Ranking().front(), name);
        }
    }
    ASSERT_EQ(tessarin_rank_utterance(commands.get(), nullptr), 0);
    EXPECT_THAT(Ranking(), ElementsAre()) << "nothing was pushed";
    const std::vector<int16_t> noise = [] {
        std::vector<int16_t> samples(60 * 3 * kRateHz);
        uint32_t state = 1;
        std::ranges::generate(samples, [&] {
            state = state * 1664525 + 1013904223;
            return static_cast<int16_t>(state >> 18);
        });
        return samples;
    }();
    EXPECT_EQ(Push(noise), size_t{20} * 3 * kRateHz) << "an utterance lasts 20 seconds at most";
}

TEST_F(FlatCommands, HearTheFirst20SecondsOfALongBlock) {
    ASSERT_EQ(tessarin_add_command_phonemes(commands.get(), "enter", "EHntER"), 0);
    std::vector<double> scores;
    for (const uint32_t seconds : {20, 30}) {
        std::vector<int16_t> live;
        while (live.size() < kRateHz * seconds) {
            const std::vector<int16_t> glide = Glide(300, 3000);
            live.insert(live.end(), glide.begin(), glide.begin() + kRateHz / 2);
        }
        int32_t hasEnded = 0;
        ASSERT_EQ(tessarin_push_command_audio(commands.get(), live.data(),
                                              static_cast<uint32_t>(live.size()), &hasEnded),
                  TESSARIN_OK);
        EXPECT_EQ(hasEnded, 1);
        ASSERT_EQ(tessarin_rank_utterance(commands.get(), nullptr), 0);
        scores.push_back(BestScore());
    }
    EXPECT_EQ(scores[0], scores[1]);
}

TEST_F(FlatCommands, BadInputIsRefused) {
    tessarin::flat::commands_owner refused;
    tessarin_command_options options{sizeof options, 0, 0.0f};
    options.rate_hz = 7999;
    EXPECT_EQ(tessarin_create_commands(model.get(), &options, Out(refused)), 3);
    options = {sizeof options, 0, -1.0f};
    EXPECT_EQ(tessarin_create_commands(model.get(), &options, Out(refused)), 3);
    options = {4, 0, 0.0f};
    EXPECT_EQ(tessarin_create_commands(model.get(), &options, Out(refused)), 2);
    EXPECT_EQ(refused, nullptr);

    uint64_t size = 0;
    const void* data = nullptr;
    EXPECT_EQ(tessarin_pack_command_samples(commands.get(), &size, &data), 6);
    EXPECT_EQ(tessarin_add_command_phonemes(commands.get(), "no", "QQ"), 2);
    EXPECT_EQ(tessarin_add_command_text(commands.get(), language.get(), "no", ""), 2);
    EXPECT_EQ(tessarin_add_command_text(commands.get(), language.get(), "no", "\xFF"), 20);
    EXPECT_EQ(tessarin_rank_commands(commands.get(), demo.get(), nullptr, nullptr), 0);
    EXPECT_THAT(Ranking(), ElementsAre());
    ASSERT_EQ(tessarin_add_command_phonemes(commands.get(), "yes", "yEHs"), 0);
    EXPECT_EQ(AddSample("no", Glide(300, 3000)), 2) << "commands of two kinds do not compare";

    options = {sizeof options, 0, 35.0f};
    ASSERT_EQ(tessarin_create_commands(model.get(), &options, Out(refused)), 0);
    for (const size_t numSamples : {1, 100, 16000}) { // too short, and not above the floor
        const std::vector<int16_t> nothing(numSamples);
        EXPECT_EQ(tessarin_add_command_sample(refused.get(), "no", AudioOf(nothing).get(), nullptr),
                  2)
            << numSamples;
    }
    EXPECT_EQ(tessarin_pack_command_samples(refused.get(), &size, &data), 6) << "none was added";
    const tessarin_search_options beyond{sizeof beyond, 0, 1000000, 0, 0, 0, nullptr, 0};
    EXPECT_EQ(tessarin_rank_commands(commands.get(), demo.get(), &beyond, nullptr), 3);
    tessarin_free_commands(nullptr);
}

} // namespace
