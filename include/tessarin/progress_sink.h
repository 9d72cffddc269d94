#pragma once

#include <cstdint>

namespace tessarin {

/// A host's object that follows long work and may cancel it. Called on the thread that works.
class ProgressSink {
public:
    /// Announces a phase of the work; `text` is valid during the call.
    virtual void SetStatus(const char* text) = 0;
    /// Reports `done` of `total` steps, after as many steps as the work finds worth a report and
    /// whenever half a second has passed. Returns true to cancel the work with code 5.
    virtual bool OnProgress(uint32_t done, uint32_t total) = 0;

protected:
    ~ProgressSink() = default;
};

} // namespace tessarin
