// The mouth of a voice that is still being heard, with a thread that stands for the sound card. The
// game delays what it plays, and asks for the mouth at the place of what is heard, so both are
// together. usage: live_weights_cpp DATA_FOLDER AUDIO [SECONDS]
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include <tessarin/owned.h>

namespace {

using namespace std::chrono;

constexpr int kBehindMs = 120; // of what is played: nearly all of the mouth is known by then

void Show(int64_t timeMs, const std::array<float, TESSARIN_VISEME_COUNT>& weights,
          const tessarin_shapes* shapes) {
    const auto most = std::max_element(weights.begin(), weights.end());
    std::printf("%6d  %-3s %s\n", static_cast<int>(timeMs),
                tessarin_get_shape_name(shapes, static_cast<uint32_t>(most - weights.begin())),
                std::string(static_cast<size_t>(*most * 40), '#').c_str());
}

} // namespace

int main(int argc, char** argv) {
    using tessarin::Out;
    if (argc < 3) {
        std::fputs("usage: live_weights_cpp DATA_FOLDER AUDIO [SECONDS]\n", stderr);
        return 1;
    }
    tessarin::flat::model_owner model;
    tessarin::flat::audio_owner audio;
    tessarin::flat::shapes_owner shapes;
    tessarin::flat::live_owner live;
    const std::string modelPath = std::string(argv[1]) + "/en-us-hearing.model";
    tessarin_live_options options{};
    int32_t code = tessarin_create_model_from_file(modelPath.c_str(), Out(model));
    if (code == TESSARIN_OK)
        code = tessarin_create_shapes("visemes", Out(shapes));
    if (code == TESSARIN_OK)
        code = tessarin_create_audio_from_file(argv[2], 1, Out(audio));
    if (code == TESSARIN_OK) {
        options.size = sizeof options;
        options.rate_hz = tessarin_get_audio_rate_hz(audio.get());
        options.frame_rate = 60.0f;
        code = tessarin_create_live(model.get(), &options, Out(live));
    }
    if (code != TESSARIN_OK) {
        std::fprintf(stderr, "%s\n", tessarin_get_error_text(code));
        return code;
    }
    uint32_t count = 0;
    const int16_t* const samples = tessarin_get_audio_samples(audio.get(), &count);
    if (argc > 3) {
        count = std::min(count, static_cast<uint32_t>(std::atoi(argv[3])) * options.rate_hz);
    }
    const auto begin = steady_clock::now();
    std::thread card([&] {
        const uint32_t block = options.rate_hz / 100;
        for (uint32_t at = 0; at + block <= count; at += block) {
            std::this_thread::sleep_until(
                begin + microseconds(int64_t{1000000} * (at + block) / options.rate_hz));
            tessarin_push_live_samples(live.get(), samples + at, block);
        }
    });
    const auto lengthMs = static_cast<int64_t>(count) * 1000 / options.rate_hz;
    for (int64_t playedMs = 0; playedMs < lengthMs; playedMs += 16) {
        std::this_thread::sleep_until(begin + milliseconds(playedMs + kBehindMs));
        std::array<float, TESSARIN_VISEME_COUNT> weights;
        tessarin_take_live_weights(live.get(), playedMs, weights.data(), nullptr);
        Show(playedMs, weights, shapes.get());
    }
    card.join();
    std::printf("lost %d ms\n", static_cast<int>(tessarin_get_lost_live_ms(live.get())));
    return 0;
}
