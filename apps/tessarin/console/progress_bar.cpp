#include "apps/tessarin/console/progress_bar.h"

#include <algorithm>
#include <csignal>
#include <cstdio>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {

volatile std::sig_atomic_t interrupted = 0;

constexpr int kBarWidth = 40;
constexpr auto kRedrawInterval = std::chrono::milliseconds(100);

} // namespace

bool StandardErrorIsTerminal() {
#if defined(_WIN32)
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(STDERR_FILENO) != 0;
#endif
}

void CatchInterrupts() {
    // A second Ctrl-C ends the process at once, should the work not come to its next report.
    std::signal(SIGINT, [](int signal) {
        interrupted = 1;
        std::signal(signal, SIG_DFL);
    });
}

void CatchTermination() {
    std::signal(SIGTERM, [](int /*signal*/) { interrupted = 1; });
}

bool WasInterrupted() {
    return interrupted != 0;
}

ProgressBar::ProgressBar(bool quiet, bool asLines)
    : visible(!quiet && !asLines && StandardErrorIsTerminal()), writesLines(asLines) {}

ProgressBar::~ProgressBar() {
    Erase();
}

void ProgressBar::SetStatus(const char* text) {
    status = text;
}

bool ProgressBar::OnProgress(uint32_t done, uint32_t total) {
    if (writesLines && total > 0) {
        WriteLine(static_cast<int>(100.0 * std::min(done, total) / total));
    }
    const auto now = std::chrono::steady_clock::now();
    if (visible && total > 0 && (!drawn || now - lastDrawn >= kRedrawInterval)) {
        const double share = std::min(1.0, static_cast<double>(done) / total);
        const int filled = static_cast<int>(share * kBarWidth);
        const std::string bar = std::string(static_cast<size_t>(filled), '#') +
                                std::string(static_cast<size_t>(kBarWidth - filled), '.');
        std::fprintf(stderr, "\r%s [%s] %3d %%", status.c_str(), bar.c_str(),
                     static_cast<int>(share * 100));
        std::fflush(stderr);
        drawn = true;
        lastDrawn = now;
    }
    return WasInterrupted();
}

void ProgressBar::WriteLine(int percent) {
    if (percent != writtenPercent) {
        std::fprintf(stderr, "progress %d\n", percent);
        std::fflush(stderr);
        writtenPercent = percent;
    }
}

void ProgressBar::Erase() {
    if (drawn) {
        std::fputs("\r\x1b[K", stderr);
        std::fflush(stderr);
        drawn = false;
    }
}

tessarin_progress ProgressBar::GetFlat() {
    return {this,
            [](void* user, const char* text) { static_cast<ProgressBar*>(user)->SetStatus(text); },
            [](void* user, uint32_t done, uint32_t total) {
                return static_cast<ProgressBar*>(user)->OnProgress(done, total) ? 1 : 0;
            }};
}
