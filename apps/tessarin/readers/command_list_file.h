#pragma once

#include <string>
#include <vector>

/// A command of a list.
struct listed_command {
    std::string name;
    std::string phonemes; ///< empty: the name is the text that is said
    std::string place;    ///< "FILE:LINE", for messages
};

/// Reads a list of commands: one a line, its text, or a name, `=` and its phonemes. Empty lines and
/// lines that begin with # are passed over. "-" reads standard input. Throws Failure, also when
/// there is no command.
std::vector<listed_command> ReadCommandList(const std::string& path);
