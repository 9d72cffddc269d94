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
/// Of these, all but the files: the formats, and what shapes they show.
void AddFormatOptions(CLI::App& command, output_options* options);
/// --shapes and --hold.
void AddShapeOptions(CLI::App& command, output_options* options);

/// A result in one of the formats.
struct written_form {
    std::string ending; ///< of a file in this format, such as ".json"
    std::string content;
};

/// The formats that many results are written in; read-only once made.
class OutputForms {
public:
    /// Throws Failure for a map that cannot be read.
    explicit OutputForms(const output_options& options);

    std::vector<written_form> Write(const timed_result& result) const;

private:
    struct form {
        const struct output_format* format;
        MouthShapes shapes;
    };
    std::vector<form> forms;
    int holdMs;
};

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
