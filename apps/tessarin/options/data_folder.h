#pragma once

#include <filesystem>
#include <string>

/// The folder that holds the project's own model and lexicon: `given` when it is not empty,
/// otherwise what is found beside the tool, as built or as installed. Throws Failure when there is
/// none.
std::filesystem::path FindDataFolder(const std::string& given);
