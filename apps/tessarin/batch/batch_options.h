#pragma once

#include <string>
#include <vector>

#include "apps/tessarin/batch/batch_worker.h"
#include "apps/tessarin/batch/line_options.h"

/// One of several parts of a batch, which know nothing of each other. A line belongs to the part
/// that the checksum of its name says, so that a longer list moves none.
struct batch_shard {
    uint32_t index = 1; ///< from 1
    uint32_t count = 1;

    bool Has(const std::string& name) const;
    /// What sets its files apart, such as "-2-of-8"; empty for the whole.
    std::string Suffix() const;
};

/// Throws Failure for a text that is not K/N.
batch_shard ReadShard(const std::string& text);

struct batch_options {
    std::string input; ///< a list or a folder
    std::vector<std::string> merged;
    std::string outputFolder;
    uint32_t jobs = 0; ///< 0: as many as there are cores
    std::string shard;
    std::string only; ///< names of verdicts and states, or a file of names of lines
    bool isResumed = false;
    batch_pages pages = batch_pages::kNone;
    line_options line; ///< its outputs have formats alone
    sound_search_options sounds;
    std::string fingerprint; ///< all options that change a result, as they were given
};
