#pragma once

#include <cstdint>
#include <vector>

#include "apps/tessarin/readers/recording_samples.h"
#include "tessarin/progress_sink.h"

/// How a stretch is turned into columns of levels.
struct spectrum_settings {
    sample_range range;
    int columns;
    int rows;         ///< from 0 Hz at the first to `highestHz` at the last
    double highestHz; ///< at most half the rate
    double windowMs;  ///< of the window that a column analyses
};

/// Levels in decibels, a column after the other, from low to high frequencies.
struct spectrum_columns {
    int rows = 0;
    std::vector<float> levels;

    float At(int column, int row) const {
        return levels[static_cast<size_t>(column) * static_cast<size_t>(rows) +
                      static_cast<size_t>(row)];
    }
};

/// Analyses `settings.columns` places of the stretch, evenly apart. Speech loses 6 dB or more an
/// octave to the top; that much is given back above 1 kHz, so that hissing sounds and the upper
/// formants show as well as the lower ones. Throws Failure, also when `progress` cancels the work.
spectrum_columns MeasureSpectrum(tessarin::IPCMDataSource& source,
                                 const spectrum_settings& settings,
                                 tessarin::ProgressSink& progress);
