#pragma once

#include <string>
#include <string_view>

// The CMU pronouncing dictionary writes phones apart, in ARPAbet; a lexicon of the engine writes
// its own labels, without separators.

/// The labels for phones that are separated by blanks; a stress digit does not matter. Empty when a
/// phone is not known.
std::string LabelsFromArpabet(std::string_view phones);

/// The phones of a string of labels, separated by blanks. Empty when it is not such a string.
std::string ArpabetFromLabels(std::string_view labels);
