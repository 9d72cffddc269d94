#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

/// An option or argument as the manual and the shells describe it.
struct described_option {
    std::vector<std::string> names;   // with their dashes; of an argument its one name
    std::string value;                // what follows the name, empty for a flag
    std::vector<std::string> choices; // the values there are, when they can be listed
    std::string description;
};

/// A command with all that can be written after it.
struct described_command {
    std::string path; // such as "tessarin lexicon find"
    std::string usage;
    std::string description;
    std::vector<described_option> arguments;
    std::vector<described_option> options;
    std::vector<described_command> subcommands;
};

/// What `app` understands, without what it hides.
described_command DescribeApp(const CLI::App& app);

/// The page of the manual, section 1, for man(1).
std::string MakeManualPage(const described_command& tool, const std::string& version);

/// Completion scripts of three shells. Where nothing is known of a word they offer files.
std::string MakeBashCompletion(const described_command& tool);
std::string MakeZshCompletion(const described_command& tool);
std::string MakeFishCompletion(const described_command& tool);
