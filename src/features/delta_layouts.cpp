#include "features/delta_layouts.h"

#include <algorithm>
#include <cstddef>

namespace tessarin {

void ShiftFiveFrames(delta_history& history) {
    std::shift_left(history.frameHistory.begin(), history.frameHistory.end(), 1);
    std::shift_left(history.energyHistory.begin(), history.energyHistory.end(), 1);
}

void WriteFiveFrameLayout(const delta_history& history, int32_t numCepstra, bool hasEnergy,
                          std::span<float> out) {
    const auto& [first, second, middle, fourth, last] = history.frameHistory;
    const auto n = static_cast<size_t>(numCepstra);
    size_t place = 0;
    if (hasEnergy) {
        out[place++] = middle[n];
    }
    for (size_t i = 1; i < n; ++i) {
        out[place++] = middle[i];
    }
    for (size_t i = 0; i < n; ++i) {
        out[place++] = last[i] - first[i];
    }
}

void BeginThreeLayers(delta_history& history, std::span<const float> first) {
    history.frameHistory = {};
    history.deltaHistory = {};
    std::ranges::copy(first, history.frameHistory[0].begin());
    std::ranges::copy(first, history.deltaHistory[0].begin());
}

void AppendDifferences(delta_history& history, int32_t width, std::span<float> out) {
    const auto n = static_cast<size_t>(width);
    for (size_t layer = 0; layer < 2; ++layer) {
        const std::span<const float> values = out.subspan(n * layer, n);
        const std::span<float> differences = out.subspan(n * (layer + 1), n);
        delta_history::frame_values& oneBack = history.frameHistory[layer];
        delta_history::frame_values& twoBack = history.deltaHistory[layer];
        for (size_t i = 0; i < n; ++i) {
            differences[i] = values[i] - twoBack[i];
        }
        twoBack = oneBack;
        std::ranges::copy(values, oneBack.begin());
    }
}

void PackThreeLayers(int32_t width, bool hasEnergy, bool keepLast, std::span<float> out) {
    const size_t n = static_cast<size_t>(width);
    const size_t numCepstra = hasEnergy ? n - 1 : n;
    const size_t firstLayerEnd = keepLast ? numCepstra : numCepstra - 1;
    const std::array<float, 3> energies = {out[n - 1], out[2 * n - 1], out[3 * n - 1]};

    size_t place = 0;
    const auto append = [&](size_t from, size_t to) {
        for (size_t i = from; i < to; ++i) {
            out[place++] = out[i];
        }
    };
    append(1, firstLayerEnd);
    append(n, n + numCepstra);
    append(2 * n, 2 * n + numCepstra);
    if (hasEnergy) {
        std::ranges::copy(energies, out.begin() + (3 * width - 4));
    }
}

} // namespace tessarin
