#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "tessarin/error_codes.h"

namespace tessarin {

/// Where the samples of an audio file lie.
struct data_extent {
    int64_t start = 0;
    int64_t length = 0;

    /// How many of `wanted` bytes are left after `position`; a position before the samples counts
    /// as after them.
    int64_t Clip(int64_t position, int64_t wanted) const {
        const int64_t left = position < start ? 0 : start + length - position;
        return std::clamp<int64_t>(left, 0, wanted);
    }
};

/// Where the samples lie that a file of `fileSize` bytes holds of the `claimed` ones that its
/// header promises from `start` on. A size of 0 is that of something other than a plain file:
/// nothing is known about it, and it is believed.
inline data_extent HeldExtent(int64_t start, int64_t claimed, int64_t fileSize) {
    const int64_t left = fileSize > 0 ? std::max<int64_t>(fileSize - start, 0) : claimed;
    return {start, std::min(claimed, left)};
}

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
