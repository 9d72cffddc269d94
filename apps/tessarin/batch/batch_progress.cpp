#include "apps/tessarin/batch/batch_progress.h"

#include <algorithm>
#include <cstdio>

#include "apps/tessarin/console/progress_bar.h"

namespace {

constexpr auto kLineInterval = std::chrono::seconds(30);

} // namespace

BatchProgress::BatchProgress(size_t numLines, uint64_t numBytes, bool isQuiet)
    : total(numLines), totalBytes(numBytes), quiet(isQuiet), isTerminal(StandardErrorIsTerminal()) {
}

void BatchProgress::Add(uint64_t bytes, bool isFailed) {
    const std::lock_guard guard(lock);
    ++done;
    doneBytes += bytes;
    failed += isFailed ? 1 : 0;
}

void BatchProgress::Show() {
    const auto now = std::chrono::steady_clock::now();
    if (isTerminal || now - shown >= kLineInterval) {
        shown = now;
        Print();
    }
}

void BatchProgress::Finish() {
    Print();
    if (isTerminal && !quiet) {
        std::fputc('\n', stderr);
    }
}

void BatchProgress::Print() {
    if (quiet) {
        return;
    }
    const std::lock_guard guard(lock);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    const double perSecond = static_cast<double>(done) / std::max(passed.count(), 0.001);
    // The length of the recordings is what takes time.
    const double left = doneBytes > 0
                            ? passed.count() * static_cast<double>(totalBytes - doneBytes) /
                                  static_cast<double>(doneBytes)
                            : 0.0;
    std::fprintf(stderr,
                 "%stessarin: %zu of %zu recordings, %.1f a second, %zu failed, %d s left%s",
                 isTerminal ? "\r" : "", done, total, perSecond, failed, static_cast<int>(left),
                 isTerminal ? "\x1b[K" : "\n");
    std::fflush(stderr);
}
