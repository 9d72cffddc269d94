#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tessarin/progress_sink.h"

namespace tessarin::test {

/// Remembers its calls, and cancels at one of them.
class recording_sink final : public ProgressSink {
public:
    explicit recording_sink(size_t cancelledCall = SIZE_MAX) : cancelAt(cancelledCall) {}
    void SetStatus(const char* text) override { phases.emplace_back(text); }
    bool OnProgress(uint32_t done, uint32_t total) override {
        calls.emplace_back(done, total);
        return calls.size() > cancelAt;
    }

    std::vector<std::string> phases;
    std::vector<std::pair<uint32_t, uint32_t>> calls;
    size_t cancelAt;
};

} // namespace tessarin::test
