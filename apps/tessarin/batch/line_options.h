#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/options/text_options.h"
#include "apps/tessarin/speech_search.h"

/// How a recording of a batch is worked on, as far as it may differ from one to the next.
struct line_options {
    recording_options recording;
    text_options text;
    text_search_options search;
};

void AddLineOptions(CLI::App& command, line_options* options);

/// `common` with the options that a line has of its own, which are written as on a command line.
/// Throws Failure.
line_options ReadLineOptions(const std::string& own, const line_options& common);
