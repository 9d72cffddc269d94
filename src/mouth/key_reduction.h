#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tessarin {

/// The keys that tracks of weights need so that straight lines between them stay within `tolerance`
/// of every weight: the numbers of the kept times, the first and the last among them. The tracks
/// share their keys: `weights` has a row of `width` for each time. Times rise. Keys are times and
/// weights of the track itself, so peaks that are further than the tolerance from their neighbours
/// stay as high as they are. Nearly the fewest keys of that kind: a line does not lead past more
/// than 1024 changes, and does not begin within a stretch where nothing changes.
std::vector<uint32_t> ReduceKeys(std::span<const int32_t> timesMs, std::span<const double> weights,
                                 size_t width, double tolerance);

} // namespace tessarin
