#pragma once

#include <string>

/// True when the bytes begin as a lexicon file does.
bool LooksLikeLexicon(const std::string& image);

/// What the lexicon file at `path` says of itself and holds, as lines for the user. Throws Failure.
std::string DescribeLexicon(const std::string& path);
