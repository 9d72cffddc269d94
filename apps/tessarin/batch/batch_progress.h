#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>

/// Shows on standard error how far a batch has come, what it does in a second and how long the rest
/// will take: in place on a terminal, else in a line now and then.
class BatchProgress {
public:
    BatchProgress(size_t numLines, uint64_t numBytes, bool isQuiet);

    /// A line was done, by any thread.
    void Add(uint64_t bytes, bool isFailed);
    /// Shows it when it is time to.
    void Show();
    /// Shows it for the last time.
    void Finish();

private:
    void Print();

    std::mutex lock;
    size_t total;
    uint64_t totalBytes;
    bool quiet;
    bool isTerminal;
    size_t done = 0;
    size_t failed = 0;
    uint64_t doneBytes = 0;
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point shown = begin;
};
