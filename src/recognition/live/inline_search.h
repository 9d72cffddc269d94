#pragma once

#include "recognition/live/input_meter.h"
#include "recognition/live/live_search.h"

namespace tessarin {

/// The search of a run where there are no threads: each call that pushes audio has it go on as far
/// as that audio reaches, so no read ever waits.
class inline_search {
public:
    /// `audio` has just been set up for `acousticModel`.
    inline_search(realtime_audio_chain& audio, const CAccousticHMM& acousticModel,
                  phone_loop<uint8_t> phones, heard_frames& frames);

    [[nodiscard]] error_code Open();
    /// Reads what the pushed audio holds.
    void GoOn();

private:
    realtime_audio_chain& chain;
    const CAccousticHMM& model;
    uint64_t bytesPerFrame = 1;
    live_search search;
    input_meter meter;
    bool isSeeded = false;
};

} // namespace tessarin
