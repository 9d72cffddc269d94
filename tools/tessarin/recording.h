#pragma once

#include <memory>
#include <string>

#include "tools/tessarin/audio_file_stream.h"
#include "tools/tessarin/engine_handles.h"

/// A recording opened for a model: the observations, and what must live as long as they do.
struct opened_recording {
    std::unique_ptr<AudioFileStream> hostStream; ///< null when the engine reads the file itself
    observation_stream_handle observations;
    int64_t durationMs = 0;
};

/// Opens `path`, whatever its format. `channel` counts from 1; 0 means the mean of all channels.
/// Throws Failure.
opened_recording OpenRecording(const std::string& path, int channel,
                               tessarin::CAccousticHMM& model);
