#pragma once

#include <cstdio>
#include <fstream>
#include <string>

/// How serious a message is, in the words and the order of the older tool.
enum class log_level { trace, debug, info, warning, error, fatal };

struct cue_log_options {
    bool isMachineReadable = false;
    bool isQuiet = false;
    log_level consoleLevel = log_level::error;
    log_level fileLevel = log_level::debug;
    std::string file;
};

/// What `cues` says while it works: lines of JSON for programs, or a few words for people, and a
/// log file. It is written to `stream`.
class CueLog {
public:
    /// Throws Failure for a log file that cannot be written.
    CueLog(const cue_log_options& options, std::FILE* stream);

    void Start(const std::string& file);
    /// From 0 to 1; only steps of a percent are reported, and none back.
    void Progress(double share);
    void Succeed();
    void Fail(const std::string& reason);
    void Say(log_level level, const std::string& message);

private:
    void WriteEvent(const std::string& event, log_level level, const std::string& message);
    void WriteFile(log_level level, const std::string& message);

    cue_log_options options;
    std::FILE* stream;
    std::ofstream file;
    int percent = -1;
};
