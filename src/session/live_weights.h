#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>

#include "mouth/shape_map.h"
#include "tessarin/error_codes.h"
#include "tessarin/tessarin_c.h"

namespace tessarin {

/// The visemes of the last seconds of live audio, by time.
class LiveWeights {
public:
    static constexpr size_t kVisemes = TESSARIN_VISEME_COUNT;
    using weights = std::array<float, kVisemes>;

    LiveWeights();

    /// The next frames, which follow each other.
    void Add(std::span<const tessarin_live_frame> frames);

    /// Writes the weights at a time, on straight lines between the middles of two frames. After the
    /// last middle they are those of the last frame, and before the first frame the mouth rests.
    /// `atMs` receives the time that they are for. Returns 3 for a time that is no longer known.
    [[nodiscard]] error_code At(int64_t timeMs, std::span<float, kVisemes> out,
                                int64_t& atMs) const;

private:
    struct pose {
        int64_t middleMs;
        weights shapes;
    };

    ShapeMap map;
    std::deque<pose> poses;
    bool hasForgotten = false;
};

} // namespace tessarin
