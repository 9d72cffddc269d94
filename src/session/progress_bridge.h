#pragma once

#include <cstdint>

#include "tessarin/progress_sink.h"
#include "tessarin/tessarin_c.h"

namespace tessarin {

/// The caller's functions as the engine calls them.
class ProgressBridge final : public ProgressSink {
public:
    explicit ProgressBridge(const tessarin_progress* functions) {
        if (functions != nullptr) {
            progress = *functions;
        }
    }

    void SetStatus(const char* text) override {
        if (progress.on_status != nullptr) {
            progress.on_status(progress.user, text);
        }
    }
    bool OnProgress(uint32_t done, uint32_t total) override {
        return progress.on_progress != nullptr &&
               progress.on_progress(progress.user, done, total) != 0;
    }

private:
    tessarin_progress progress{};
};

} // namespace tessarin
