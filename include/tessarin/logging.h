#pragma once

#include <cstdint>

#include "tessarin/export.h"

/// Opens the trace log: truncates `name`, writes a banner, and from then on one line for each entry
/// into and exit from a traced function, flushed line by line. An open log is closed first.
/// Returns the number of bytes of the banner, or 0 when the file does not open. No other thread
/// may be inside the library during the call.
TESSARIN_API int32_t StartLogging(const char* name);

/// Writes the closing banner and closes the log; does nothing when none is open. No other thread
/// may be inside the library during the call.
TESSARIN_API void EndLogging();
