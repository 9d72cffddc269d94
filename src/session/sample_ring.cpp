#include "session/sample_ring.h"

namespace tessarin {

size_t SampleRing::Read(std::span<int16_t> out) {
    const uint64_t begin = read.load(std::memory_order_relaxed);
    const uint64_t waiting = written.load(std::memory_order_acquire) - begin;
    const auto count = static_cast<size_t>(std::min<uint64_t>(waiting, out.size()));
    for (size_t i = 0; i < count; ++i) {
        out[i] = slots[(begin + i) % slots.size()];
    }
    read.store(begin + count, std::memory_order_release);
    return count;
}

} // namespace tessarin
