#pragma once

/// While it lives, what is written to the standard output stream is lost. The library reports what
/// it matches there; the tool's own output goes to the same place and is to be read by programs.
class SilencedOutput {
public:
    SilencedOutput();
    ~SilencedOutput();
    SilencedOutput(const SilencedOutput&) = delete;
    SilencedOutput& operator=(const SilencedOutput&) = delete;

private:
    int original = -1; ///< a second descriptor of what standard output was
};
