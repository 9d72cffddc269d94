#pragma once

#include <cstdint>
#include <cstdio>

namespace tessarin {

class CCritSection;

/// Opens the trace log, first closing an open one without its closing banner. Returns the length
/// of the banner written, or 0 when the file does not open; logging is off then.
int32_t OpenLog(const char* path);

/// Writes the closing banner and closes the log; does nothing when none is open.
void CloseLog();

/// The open log, or null.
FILE* OpenedLog();

/// Orders the lines of the log.
CCritSection& LogLock();

} // namespace tessarin
