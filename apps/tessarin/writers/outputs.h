#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "apps/tessarin/options/mouth_shapes.h"
#include "apps/tessarin/timed_result.h"
#include "apps/tessarin/writers/output_formats.h"

/// Which files a command writes, and in which formats.
struct output_options {
    std::vector<std::string> files;
    std::vector<std::string> formats;
    std::vector<std::string> shapes; ///< files with maps of mouth shapes
    int holdMs = 0;
    std::string alphabet = "labels"; ///< of phonemes
    std::string into;                ///< the glTF file that the animation is added to
    std::optional<double> tolerance; ///< of curves; without one they keep all their keys
};

/// `alphabet` is what the option for the alphabet of the outputs is called.
void AddOutputOptions(CLI::App& command, output_options* options,
                      const char* alphabet = "--alphabet");
/// Of these, all but the files: the formats, and what they show.
void AddFormatOptions(CLI::App& command, output_options* options);

/// A result in one of the formats.
struct written_form {
    std::string ending; ///< of a file in this format, such as ".json"
    std::string content;
};

/// The formats that many results are written in; read-only once made.
class OutputForms {
public:
    /// Throws Failure for a map that cannot be read, and for an asset that is not to be spoken by
    /// any of the formats or cannot be written elsewhere.
    explicit OutputForms(const output_options& options);

    /// `stem` is the path of the outputs without their endings, for what refers to other files.
    std::vector<written_form> Write(const timed_result& result, const std::string& stem) const;

private:
    struct form {
        const struct output_format* format;
        write_settings settings;
    };
    std::vector<form> forms;
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
        write_settings settings;
    };
    std::vector<output> outputs;
};
