#pragma once

#include <cstdint>
#include <string_view>

namespace tessarin {

/// The symbol of a phoneme of American English in an alphabet of tessarin_alphabet, as UTF-8; null
/// for a label or an alphabet that is not known.
const char* SymbolInAlphabet(std::string_view label, uint32_t alphabet);

} // namespace tessarin
