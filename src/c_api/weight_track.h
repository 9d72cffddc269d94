#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "session/search_run.h"
#include "tessarin/owned.h"
#include "tessarin/tessarin_c.h"

struct tessarin_track {
    std::vector<tessarin_frame> frames;
    std::vector<tessarin_curve> curves;
    std::vector<std::vector<tessarin_key>> keys; ///< of the curves
    tessarin::articulator_owner articulator;     ///< holds the frames that a mixture is made of
    mutable std::mutex lock;                     ///< over the articulator
};

namespace tessarin {

/// `options` may be null.
error_code MakeTrack(const tessarin_result& result, const tessarin_track_options* options,
                     std::unique_ptr<tessarin_track>& out);

/// The mixture that stands best for a stretch of the track; 3 when no frame lies there.
error_code Quantize(const tessarin_track& track, int32_t fromMs, int32_t toMs, int32_t maxWeights,
                    tessarin_frame& out);

/// A result of timings from elsewhere; 2 for what is not a phoneme.
error_code MakeResult(std::span<const tessarin_phoneme> phonemes,
                      std::unique_ptr<tessarin_result>& out);

} // namespace tessarin
