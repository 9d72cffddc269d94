#pragma once

#include <istream>

namespace tessarin {

/// Calls `read` with a stream over `text`. False when the source fails in the middle, which a
/// stream otherwise passes off as the end of the text; std::bad_alloc passes.
template <class Read> bool ReadsWhole(std::istream& text, Read&& read) {
    try {
        std::istream strict(text.rdbuf());
        strict.imbue(text.getloc());
        strict.clear(text.rdstate());
        strict.exceptions(std::ios_base::badbit);
        read(strict);
        return true;
    } catch (const std::ios_base::failure&) {
        return false;
    }
}

} // namespace tessarin
