#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tessarin/transcriber.h"

/// What a lexicon file says of itself and holds.
struct lexicon_summary {
    int version = 0;
    tessarin::TranscriberInfo info = {};
    std::string information;
    size_t numEntries = 0;
    size_t numWords = 0;

    // How words are said that are not in it.
    int sectionVersion = 0;
    bool hasTree = false;
    size_t numLeaves = 0; ///< of the tree
    size_t numRules = 0;  ///< without a tree
};

/// True when the bytes begin as a lexicon file does.
bool LooksLikeLexicon(const std::string& image);

/// Reads the summary of the lexicon file at `path`. Throws Failure.
lexicon_summary SummarizeLexicon(const std::string& path);

/// The summary as lines for the user.
std::string DescribeLexicon(const lexicon_summary& summary);
