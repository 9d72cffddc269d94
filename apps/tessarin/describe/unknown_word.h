#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

/// The one of `names` that differs least from `word`, empty when none is near: a letter left out,
/// put in or changed counts one, and two may differ, or a third of the word.
std::string FindNearest(const std::string& word, const std::vector<std::string>& names);

/// What is wrong with a command line that has a command or a long option that `app` does not have,
/// with the nearest one that it has; empty for a command line without such a word.
std::string DescribeUnknownWord(const CLI::App& app, int argc, const char* const* argv);
