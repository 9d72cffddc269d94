#pragma once

#include <atomic>
#include <cstdint>

namespace tessarin {

/// How many observations a state of a phoneme is held at most; 0 for no limit. A search of
/// sentences replaces the limits of its model, which other threads may be searching with, so each
/// is read and written whole.
class phone_limit {
public:
    phone_limit(uint32_t observations = 0) : value(observations) {}
    phone_limit(const phone_limit& other) : value(other) {}
    phone_limit& operator=(const phone_limit& other) {
        value.store(other, std::memory_order_relaxed);
        return *this;
    }

    operator uint32_t() const { return value.load(std::memory_order_relaxed); }

private:
    std::atomic<uint32_t> value;
};

} // namespace tessarin
