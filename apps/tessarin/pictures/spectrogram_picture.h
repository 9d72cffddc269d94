#pragma once

#include "apps/tessarin/pictures/canvas.h"
#include "apps/tessarin/readers/recording_samples.h"
#include "apps/tessarin/timed_result.h"
#include "tessarin/progress_sink.h"

struct spectrogram_settings {
    double pixelsPerSecond = 250;
    double highestHz = 8000;
    double windowMs = 8; ///< short enough for bursts, long enough to separate formants
    double rangeDb = 60; ///< from the loudest to black
};

/// Draws a stretch of a recording: its waveform, its spectrum over time, and with `timings`, which
/// may be null, the boundaries of phonemes and words with their names. Throws Failure, also when
/// `progress` cancels the work.
Canvas DrawSpectrogram(tessarin::IPCMDataSource& source, sample_range range,
                       const timed_result* timings, const spectrogram_settings& settings,
                       tessarin::ProgressSink& progress);
