#pragma once

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace tessarin::training {

/// Runs `work(i)` for each i below `count` on `numThreads` threads. Items share nothing that they
/// change, so the result does not depend on the threads.
template <class Work> void ParallelFor(size_t count, size_t numThreads, Work work) {
    std::atomic<size_t> next = 0;
    const auto run = [&] {
        for (size_t i = next++; i < count; i = next++) {
            work(i);
        }
    };
    std::vector<std::jthread> others;
    for (size_t thread = 1; thread < numThreads; ++thread) {
        others.emplace_back(run);
    }
    run();
}

} // namespace tessarin::training
