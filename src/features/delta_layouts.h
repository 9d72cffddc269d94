#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace tessarin {

/// A frame has at most 20 values: 19 cepstra and energy, or 20 cepstra.
inline constexpr int32_t kMaxFrameValues = 20;
/// Room for an observation while it is put together: three layers of a frame's values and more.
inline constexpr int32_t kObservationScratch = 64;

/// From so many features on, observations have three layers; with less, five frames.
inline constexpr int32_t kThreeLayerFeatures = 35;

/// Whether observations of `numFeatures` values carry the energy of the frame.
constexpr bool LayoutHasEnergy(int32_t numFeatures) {
    return numFeatures % 2 == 0 || numFeatures == 39;
}

/// What the difference features of a run remember of the frames before. The five-frame layout uses
/// all places of `frameHistory`; the three-layer layout keeps in place j what layer j held one
/// frame back, and in `deltaHistory` what it held two frames back.
struct delta_history {
    using frame_values = std::array<float, kMaxFrameValues>;

    std::array<frame_values, 5> frameHistory{};
    std::array<float, 5> energyHistory{};
    std::array<frame_values, 2> deltaHistory{};
    int32_t featureWidth = 0; ///< 0 until the first observation of a run
    uint32_t observationCount = 0;
};

/// Makes room in the last of the five places.
void ShiftFiveFrames(delta_history& history);

/// The five-frame layout of `numCepstra` cepstra: energy, where there is one, and cepstra without
/// c0 of the middle frame, then all cepstra of the last frame less those of the first. It has
/// 2 numCepstra values with energy, one less without.
void WriteFiveFrameLayout(const delta_history& history, int32_t numCepstra, bool hasEnergy,
                          std::span<float> out);

/// Begins a run of the three-layer layout with `first`, as if all frames before had been alike.
void BeginThreeLayers(delta_history& history, std::span<const float> first);

/// Appends to the `width` values at the front of `out` their difference to two frames back, and to
/// that its own difference to two frames back.
void AppendDifferences(delta_history& history, int32_t width, std::span<float> out);

/// Packs three layers of `width` values: the first loses c0 and, unless `keepLast`, its last
/// cepstrum; with energy, the three energies (the last value of each layer) move after all
/// cepstra.
///
/// Kept: values after the packed ones stay where they stood. So 12 cepstra with energy and
/// `keepLast` have 39 values, the last one twice, and the models of 39 features hold it twice too.
void PackThreeLayers(int32_t width, bool hasEnergy, bool keepLast, std::span<float> out);

} // namespace tessarin
