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

/// The open log, or null. Another thread may close it, unless the caller holds LogLock.
FILE* OpenedLog();

/// Held for each line, and while a log is opened or closed.
CCritSection& LogLock();

} // namespace tessarin
