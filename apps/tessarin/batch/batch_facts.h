#pragma once

#include <string>

#include "apps/tessarin/batch/batch_journal.h"
#include "apps/tessarin/timed_result.h"

/// Adds to a record what shows whether its result is to be trusted: the verdict and its reason, the
/// words that were not said, silence at the ends and the rate of the speech.
void AddResultFacts(const timed_result& result, batch_record* record);

/// Adds the levels of the recording, and whether its wave is cut off. Throws Failure.
void AddAudioFacts(const std::string& path, int channel, batch_record* record);
