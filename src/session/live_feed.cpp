#include "session/live_feed.h"

#include <array>
#include <chrono>
#include <thread>
#include <utility>

#include "base/guarded.h"

namespace tessarin {

namespace {

/// Longer than a game stalls, while it loads a level.
constexpr uint32_t kRingSeconds = 2;
/// Polling costs little, and a callback that woke the thread could wait for a lock of the system.
constexpr std::chrono::milliseconds kPause{4};
constexpr size_t kStackBytes = size_t{256} << 10;
constexpr size_t kBlock = 256;

} // namespace

void LiveFeed::Open(uint32_t rateHz, sink to, std::function<bool()> ready) {
    ring.Open(size_t{kRingSeconds} * rateHz);
    samplesTo = std::move(to);
    isReady = std::move(ready);
}

error_code LiveFeed::Start() {
    if (isRunning || isEnding || ring.GetWritten() == 0) {
        return kNoError;
    }
    isRunning = thread.Start(Run, this, kStackBytes);
    return isRunning ? kNoError : kOutOfMemory;
}

void LiveFeed::End() {
    isEnding = true;
    if (isRunning) {
        thread.Join();
        isRunning = false;
    }
}

void LiveFeed::Drain() {
    End();
    while (Carry()) {
    }
}

/// Returns whether there was anything.
bool LiveFeed::Carry() {
    std::array<int16_t, kBlock> block;
    const size_t count = ring.Read(block);
    if (count == 0) {
        return false;
    }
    const error_code code = Guarded([&]() -> error_code {
        return samplesTo(std::span(block).first(count)) ? kNoError : kOutOfMemory;
    });
    lost += code == kNoError ? 0 : count;
    return true;
}

void LiveFeed::Run(void* self) {
    auto& feed = *static_cast<LiveFeed*>(self);
    while (!feed.isEnding) {
        if (!feed.isReady() || !feed.Carry()) {
            std::this_thread::sleep_for(kPause);
        }
    }
}

} // namespace tessarin
