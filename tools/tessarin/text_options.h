#pragma once

#include <optional>
#include <string>

#include <CLI/CLI.hpp>

/// The text of a command: given on the command line, or in a file.
struct text_options {
    std::optional<std::string> text;
    std::optional<std::string> file;
};

/// Adds --text and --text-file, of which only one may be given.
void AddTextOptions(CLI::App& command, text_options* options);

/// The text, or nothing when neither was given. Throws Failure.
std::optional<std::string> ReadText(const text_options& options);
