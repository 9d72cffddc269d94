#include "session/live_weights.h"

#include <algorithm>
#include <cstring>

#include "mouth/built_in_shapes.h"

namespace tessarin {

namespace {

constexpr int64_t kMemoryMs = 10000;

} // namespace

LiveWeights::LiveWeights() : map(ShapeMap::Parse(kBuiltInShapes.visemes)) {}

void LiveWeights::Add(std::span<const tessarin_live_frame> frames) {
    for (const tessarin_live_frame& each : frames) {
        tessarin_frame frame{0, 0, each.count, {}};
        std::memcpy(frame.weights, each.weights, sizeof frame.weights);
        const std::vector<double> mixed = map.Mix(frame);
        pose added{(each.start_ms + each.end_ms) / 2, {}};
        std::transform(mixed.begin(), mixed.begin() + kVisemes, added.shapes.begin(),
                       [](double weight) { return static_cast<float>(weight); });
        poses.push_back(added);
    }
    while (!poses.empty() && poses.front().middleMs < poses.back().middleMs - kMemoryMs) {
        poses.pop_front();
        hasForgotten = true;
    }
}

error_code LiveWeights::At(int64_t timeMs, std::span<float, kVisemes> out, int64_t& atMs) const {
    std::ranges::fill(out, 0.0f);
    atMs = 0;
    if (poses.empty() || timeMs < poses.front().middleMs) {
        out[map.GetRest()] = 1.0f;
        atMs = poses.empty() ? 0 : timeMs;
        return hasForgotten ? kOutOfRange : kNoError;
    }
    const auto after = std::ranges::upper_bound(poses, timeMs, {}, &pose::middleMs);
    const pose& before = *(after - 1);
    if (after == poses.end()) {
        std::ranges::copy(before.shapes, out.begin());
        atMs = before.middleMs;
        return kNoError;
    }
    const auto share = static_cast<float>(timeMs - before.middleMs) /
                       static_cast<float>(after->middleMs - before.middleMs);
    for (size_t i = 0; i < kVisemes; ++i) {
        out[i] = before.shapes[i] + share * (after->shapes[i] - before.shapes[i]);
    }
    atMs = timeMs;
    return kNoError;
}

} // namespace tessarin
