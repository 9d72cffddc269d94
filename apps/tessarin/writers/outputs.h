#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "apps/tessarin/options/mouth_shapes.h"
#include "apps/tessarin/timed_result.h"

/// Which files a command writes, and in which formats.
struct output_options {
    std::vector<std::string> files;
    std::vector<std::string> formats;
    std::vector<std::string> shapes; ///< files with maps of mouth shapes
    int holdMs = 0;
};

void AddOutputOptions(CLI::App& command, output_options* options);

/// The outputs that a user asked for, known to be possible before the long work begins.
class OutputPlan {
public:
    /// Throws Failure for a format that is not known and for a map that cannot be read.
    explicit OutputPlan(const output_options& options);

    /// Throws Failure; files that were written before stay.
    void Write(const timed_result& result) const;

private:
    struct output {
        std::string file;
        const struct output_format* format;
        MouthShapes shapes; ///< empty for a format without shapes
    };
    std::vector<output> outputs;
    int holdMs;
};
