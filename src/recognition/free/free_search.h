#pragma once

#include <cstdint>

#include "base/tarray.h"
#include "base/timed_progress.h"
#include "tessarin/error_codes.h"
#include "tessarin/observation_stream.h"
#include "tessarin/progress_sink.h"

namespace tessarin {

/// Gives `path` and `energies` room for the observations of `stream`. Returns 0; 1 without memory;
/// or 3 for a model of more states than a search can number.
[[nodiscard]] error_code PrepareFreeSearch(const CAccousticHMM& model, IObservationStream& stream,
                                           TArray<uint32_t>& path, TArray<float>& energies);

/// Leads a free search through all observations: `search` reads each from its `features`, begins
/// with Seed, goes on with Advance and writes the path in TraceBack, whose code comes back. Returns
/// 5 when `progress` (may be null) cancels, or the code of a failed read.
template <class Search>
[[nodiscard]] error_code RunFreeSearch(Search& search, IObservationStream& stream,
                                       ProgressSink* progress, TArray<uint32_t>& path,
                                       TArray<float>& energies) {
    constexpr int32_t kProgressInterval = 100;
    const int32_t frames = path.GetSize();
    timed_progress timed(progress);
    for (int32_t t = 0; t < frames; ++t) {
        const error_code code = stream.GetObservation(search.features.data(), &energies[t]);
        if (code != kNoError) {
            return code;
        }
        if (t == 0) {
            search.Seed();
            continue;
        }
        search.Advance(t);
        if (timed.Report(static_cast<uint32_t>(t) + 1, static_cast<uint32_t>(frames) - 1,
                         (t + 1) % kProgressInterval == 0)) {
            return kUserCancelled;
        }
    }
    return frames == 0 ? kNoError : search.TraceBack(path);
}

} // namespace tessarin
