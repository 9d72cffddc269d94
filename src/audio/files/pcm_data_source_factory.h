#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "audio/files/pcm_data_source.h"

namespace tessarin {

/// Reads channel 1 of the file `path` at the rate of `target`. Returns the code of the reader, of
/// the rate conversion or of the load; `out` is set on success only.
error_code LoadDataSource(const char* path, const PCMFormat* target, ProgressSink* sink,
                          std::unique_ptr<CPCMDataSource>& out);

/// Reads every channel of the file `path` at its own rate, one source for each. On failure `out`
/// holds the channels before the one that failed.
error_code LoadChannels(const char* path, ProgressSink* sink,
                        std::vector<std::unique_ptr<CPCMDataSource>>& out);

/// Reads how many channels the file `path` has.
error_code CountChannels(const char* path, uint32_t& count);

/// Reads the file `path` once and makes a source of each channel at its own rate, of at most
/// `maxChannels` channels. Sets `count` to those of the file once it is open. Returns 0, the code
/// of the reader, 2 for a rate below 1 Hz, 3 for more channels, or 1 without memory; `out` is set
/// on success only.
error_code LoadChannelsAtOnce(const char* path, uint32_t maxChannels, ProgressSink* sink,
                              uint32_t& count, std::vector<std::unique_ptr<CPCMDataSource>>& out);

/// Reads a host's stream. `out` is set on success only.
error_code LoadDataSource(IQuibPCMStream* stream, ProgressSink* sink,
                          std::unique_ptr<CPCMDataSource>& out);

} // namespace tessarin
