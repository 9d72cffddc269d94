#pragma once

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tessarin/owned.h"

using data_source_handle =
    std::unique_ptr<tessarin::IPCMDataSource, tessarin::destroyer<DestroyPCMDataSource>>;

/// Reads one channel of a recording into memory, as 16-bit samples at the recording's own rate.
/// `channel` counts from 1; 0 means the mean of all channels. `progress` may be null. Throws
/// Failure.
data_source_handle LoadSamples(const std::string& path, int channel,
                               tessarin::ProgressSink* progress);

/// A copy of them for calls of the flat interface. Throws Failure, which names `path`.
tessarin::flat::audio_owner FlatAudio(const std::string& path, tessarin::IPCMDataSource& source);

/// All channels of a recording, one source for each. Throws Failure.
std::vector<data_source_handle> LoadChannels(const std::string& path);

/// A stretch of a recording. Times are in milliseconds; an end of 0 is that of the recording.
struct recording_stretch {
    int fromMs = 0;
    int toMs = 0;

    bool IsWhole() const { return fromMs == 0 && toMs == 0; }
};

/// Adds --from and --to.
void AddStretchOptions(CLI::App& command, recording_stretch* stretch);

/// The samples of a stretch: the first, and the one after the last.
struct sample_range {
    int32_t first;
    int32_t end;
};

/// Throws Failure for a stretch that ends before it begins, or starts after the end of the
/// recording.
sample_range FindStretch(const std::string& path, const recording_stretch& stretch,
                         const tessarin::IPCMDataSource& source);
