#pragma once

#include <memory>
#include <string>

#include "apps/tessarin/readers/audio_file_stream.h"
#include "apps/tessarin/readers/recording_samples.h"
#include "apps/tessarin/readers/stretch_stream.h"
#include "tessarin/owned.h"

/// A recording opened for a model: the observations, and what must live as long as they do.
struct opened_recording {
    std::unique_ptr<AudioFileStream> hostStream;  ///< null when the engine reads the file itself
    std::unique_ptr<StretchStream> stretchStream; ///< null for a whole recording
    tessarin::observations_owner observations;
    int64_t durationMs = 0; ///< of the whole recording
};

/// Opens a stretch of `path`, whatever its format. `channel` counts from 1; 0 means the mean of all
/// channels. Throws Failure.
opened_recording OpenRecording(const std::string& path, int channel,
                               const recording_stretch& stretch, tessarin::CAccousticHMM& model);

/// Has the markers of a stretch count from the beginning of the recording, at `fromMs` before it.
void ShiftMarkers(int fromMs, tessarin::ISyncResultsCollection& results);
