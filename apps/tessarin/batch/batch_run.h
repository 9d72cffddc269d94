#pragma once

#include "apps/tessarin/batch/batch_options.h"

/// How a batch ended.
struct batch_outcome {
    size_t total = 0;
    size_t failed = 0;
    size_t open = 0; ///< lines that nothing was done with, since the user cancelled
};

/// Works on all lines that are not done yet, and writes the report. Throws Failure for what
/// concerns the batch as a whole.
batch_outcome RunBatch(const batch_options& options);
