#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "tessarin/error_codes.h"

namespace tessarin {

/// Where the samples of an audio file lie.
struct data_extent {
    int64_t start;
    int64_t length;

    /// How many of `wanted` bytes are left behind `position`; a position before the samples counts
    /// as behind them.
    int64_t Clip(int64_t position, int64_t wanted) const {
        const int64_t left = position < start ? 0 : start + length - position;
        return std::clamp<int64_t>(left, 0, wanted);
    }
};

/// Reads `*frames` frames of `frameSize` bytes, or as many as are left, and returns 0, or 12 when
/// the file does not read. `File` has `Tell` and `Read`.
template <class File>
error_code ReadFrames(File& file, const data_extent& data, uint32_t frameSize, void* buffer,
                      uint32_t* frames) {
    const int64_t wanted = int64_t{*frames} * frameSize;
    *frames = 0;
    const int64_t bytes = data.Clip(file.Tell(), wanted);
    if (bytes == 0) {
        return kNoError;
    }
    const int64_t bytesRead = file.Read(buffer, static_cast<size_t>(bytes));
    if (bytesRead < 0) {
        return kInvalidFile;
    }
    *frames = static_cast<uint32_t>(bytesRead / frameSize);
    return kNoError;
}

} // namespace tessarin
