#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "tessarin/progress_sink.h"
#include "tessarin/tessarin_c.h"

/// Turns Ctrl-C into a request that the work at hand ends itself.
void CatchInterrupts();
/// The same for the request to end that a system or a scheduler makes.
void CatchTermination();
bool WasInterrupted();

bool StandardErrorIsTerminal();

/// Shows how far a run has come, on standard error, when that is a terminal and the user did not
/// ask for quiet; cancels the run after Ctrl-C. With `asLines` it writes lines such as
/// "progress 42", percents of the search at hand, for programs that start the tool.
class ProgressBar final : public tessarin::ProgressSink {
public:
    explicit ProgressBar(bool quiet, bool asLines = false);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void SetStatus(const char* text) override;
    bool OnProgress(uint32_t done, uint32_t total) override;

    /// The bar for calls of the flat interface.
    tessarin_progress GetFlat();

private:
    void WriteLine(int percent);
    void Erase();

    std::string status = "Searching";
    bool visible;
    bool writesLines;
    int writtenPercent = -1;
    bool drawn = false;
    std::chrono::steady_clock::time_point lastDrawn;
};
