#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

/// A recording of a batch, and what is said in it.
struct batch_line {
    size_t number = 0; ///< its place in the list, from 1
    std::string name;  ///< of its outputs: a path without an ending, below their folder
    std::string audio;
    std::optional<std::string> text;
    std::string textFile; ///< without a text and a file of it, the recording is heard without one
    std::string words;    ///< a file of its own words
    std::string speaker;  ///< who speaks
    std::string options;  ///< of its own, as they stand on a command line
    std::string fault;    ///< why nothing can be done with it, known from the list
    uint64_t bytes = 0;   ///< the size of the recording

    bool HasText() const { return text || !textFile.empty(); }
};
