#pragma once

#include <cstdint>

namespace tessarin {

class ProgressSink;

/// Reports the steps of long work to a host: some steps for their number, and others when the last
/// report is half a second ago, so that a cancel is answered soon however long the steps take.
class timed_progress {
public:
    /// The time counts from here. `host` may be null.
    explicit timed_progress(ProgressSink* host);

    /// Reports `done` of `total` steps when it `isDue` or time has passed. Returns whether the host
    /// cancels.
    [[nodiscard]] bool Report(uint32_t done, uint32_t total, bool isDue);

private:
    ProgressSink* sink;
    uint64_t lastNs;
};

} // namespace tessarin
