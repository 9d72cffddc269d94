#pragma once

#include <cstdint>
#include <string>

#include "apps/tessarin/console/failure.h"

/// The Failure for a file that could not be read as a recording: the `reason` of who tried, and
/// below it what the file is and what to do, where its first bytes show that.
Failure NotARecording(const std::string& path, const std::string& reason);

/// The same for an engine code.
Failure NotARecording(const std::string& path, int code);

/// Throws Failure for a recording that holds no samples, in which a search would find nothing and
/// report success.
void RequireSamples(const std::string& path, int64_t numSamples);
