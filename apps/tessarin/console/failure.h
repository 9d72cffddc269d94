#pragma once

#include <stdexcept>
#include <string>

/// How the tool ends.
enum exit_code : int {
    kExitDone = 0,
    kExitUsage = 1,
    kExitFailed = 2,
    kExitSomeFailed = 3, ///< of many recordings
    kExitMismatch = 4,   ///< text and recording do not fit, where that was asked for
    kExitCancelled = 5,
};

/// Ends the command with a message for the user and an exit code.
class Failure : public std::runtime_error {
public:
    Failure(exit_code code, const std::string& message)
        : std::runtime_error(message), exitCode(code) {}

    exit_code exitCode;
};

/// An engine code as a message: what it was about, the code's text and the code.
std::string DescribeCode(const std::string& subject, int code);

/// The Failure for an engine code: cancelled for 5, failed for any other.
Failure EngineFailure(const std::string& subject, int code);
