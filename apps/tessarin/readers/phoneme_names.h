#pragma once

#include <string>
#include <string_view>

/// Our label for a phoneme as others write it: our own, ARPAbet in either case with or without a
/// stress digit, or one of the usual names for silence. Empty when it is none of these.
std::string LabelFromName(std::string_view name);

/// Our label for a phoneme of American English in SAMPA. Empty when it is not one.
std::string LabelFromSampa(std::string_view name);
