#include "apps/tessarin/writers/phoneme_symbols.h"

#include "tessarin/tessarin_c.h"

std::string SymbolOf(const std::string& label, uint32_t alphabet) {
    const char* const symbol = tessarin_get_phoneme_symbol(label.c_str(), alphabet);
    return symbol != nullptr ? symbol : label;
}
