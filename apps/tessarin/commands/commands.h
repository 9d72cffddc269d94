#pragma once

#include <CLI/CLI.hpp>

/// Each adds its subcommand to `app`; the chosen one runs when the arguments have been read and
/// throws Failure when it cannot be done.
void AddAlignCommand(CLI::App& app);
void AddRecognizeCommand(CLI::App& app);
void AddBatchCommand(CLI::App& app);
void AddAnimateCommand(CLI::App& app);
void AddViewCommand(CLI::App& app);
void AddSpectrogramCommand(CLI::App& app);
void AddCuesCommand(CLI::App& app);
void AddCutCommand(CLI::App& app);
void AddCommandsCommand(CLI::App& app);
void AddGateCommand(CLI::App& app);
void AddLiveCommand(CLI::App& app);
void AddTranscribeCommand(CLI::App& app);
void AddInspectCommand(CLI::App& app);
void AddLexiconCommand(CLI::App& app);
void AddDescribeCommand(CLI::App& app);
