#pragma once

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

/// Reads a host's stream. `out` is set on success only.
error_code LoadDataSource(IQuibPCMStream* stream, ProgressSink* sink,
                          std::unique_ptr<CPCMDataSource>& out);

} // namespace tessarin
