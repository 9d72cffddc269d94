#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "tools/tessarin/engine_handles.h"

/// Where the model and the lexicon come from; empty paths mean the project's own.
struct data_options {
    std::string folder;
    std::string model;
    std::string lexicon;
};

/// Adds --lexicon, --data and, where the command needs one, --model.
void AddDataOptions(CLI::App& command, data_options* options, bool withModel);

/// Both throw Failure.
model_handle LoadModel(const data_options& options);
transcriber_handle LoadTranscriber(const data_options& options);
