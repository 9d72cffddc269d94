#pragma once

#include <memory>
#include <vector>

#include "session/search_run.h"

struct tessarin_track {
    std::vector<tessarin_frame> frames;
};

namespace tessarin {

/// Makes the frames of `result`; `options` may be null.
error_code MakeTrack(const tessarin_result& result, const tessarin_track_options* options,
                     std::unique_ptr<tessarin_track>& out);

} // namespace tessarin
