#pragma once

#include <cstdint>
#include <vector>

#include "apps/tessarin/timed_result.h"

/// The numbers of the rows that stay keys when straight lines may be `tolerance` away from the
/// weights. The columns of a row share their keys. Times rise.
std::vector<uint32_t> ReduceKeys(const std::vector<int32_t>& timesMs,
                                 const std::vector<std::vector<double>>& rows, double tolerance);

/// Leaves the curves of a result the keys at which they bend.
void ReduceCurves(double tolerance, timed_result* result);
