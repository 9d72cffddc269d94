#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "platform/thread.h"
#include "session/sample_ring.h"
#include "tessarin/error_codes.h"

namespace tessarin {

/// Brings samples from an audio callback, which must not wait or allocate, to a sink that may. A
/// thread of its own carries them, from when Start is called; until then they wait in the ring.
class LiveFeed {
public:
    /// Takes samples, or returns false to lose them.
    using sink = std::function<bool(std::span<const int16_t>)>;

    LiveFeed() = default;
    LiveFeed(const LiveFeed&) = delete;
    LiveFeed& operator=(const LiveFeed&) = delete;
    ~LiveFeed() { End(); }

    /// Begins, once. `isReady` holds samples back in the ring while it is false.
    void Open(uint32_t rateHz, sink samplesTo, std::function<bool()> isReady);

    /// Takes the samples `sampleAt(i)` of a block; those that have no room are lost. Returns
    /// whether none was. For one thread; never waits, locks or allocates.
    template <class SampleAt> bool Push(size_t count, SampleAt sampleAt) {
        const size_t taken = ring.Write(count, sampleAt);
        lost += count - taken;
        return taken == count;
    }

    /// Has the thread carry what comes, if anything has come. Returns 1 when there is no thread.
    [[nodiscard]] error_code Start();
    /// Stops the thread and carries all that is left.
    void Drain();

    uint64_t GetTaken() const { return ring.GetWritten(); }
    uint64_t GetLost() const { return lost; }

private:
    void End();
    bool Carry();
    static void Run(void* self);

    SampleRing ring;
    sink samplesTo;
    std::function<bool()> isReady;
    std::atomic<uint64_t> lost = 0;
    std::atomic<bool> isEnding = false;
    bool isRunning = false;
    NativeThread thread;
};

} // namespace tessarin
