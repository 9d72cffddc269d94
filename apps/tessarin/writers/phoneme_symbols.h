#pragma once

#include <cstdint>
#include <string>

/// How a phoneme is written in an alphabet of tessarin_alphabet; a label that is not a phoneme's
/// stays as it is.
std::string SymbolOf(const std::string& label, uint32_t alphabet);
