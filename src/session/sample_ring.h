#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tessarin {

/// Samples on their way from one thread that writes to one that reads. Neither waits for the other,
/// and only Open allocates.
class SampleRing {
public:
    /// Begins, once, with room for `samples`, which is not 0.
    void Open(size_t samples) { slots.resize(samples); }

    /// Takes the samples `sampleAt(i)`, `i` from 0, as long as there is room; of `count` at most.
    /// Returns how many.
    template <class SampleAt> size_t Write(size_t count, SampleAt sampleAt) {
        const uint64_t end = written.load(std::memory_order_relaxed);
        const uint64_t used = end - read.load(std::memory_order_acquire);
        const size_t taken = std::min(count, slots.size() - static_cast<size_t>(used));
        for (size_t i = 0; i < taken; ++i) {
            slots[(end + i) % slots.size()] = sampleAt(i);
        }
        written.store(end + taken, std::memory_order_release);
        return taken;
    }

    /// Moves the oldest samples to the front of `out`. Returns how many.
    size_t Read(std::span<int16_t> out);

    /// How many samples were written since the beginning.
    uint64_t GetWritten() const { return written.load(std::memory_order_acquire); }

private:
    std::vector<int16_t> slots;
    std::atomic<uint64_t> written = 0;
    std::atomic<uint64_t> read = 0;
};

} // namespace tessarin
