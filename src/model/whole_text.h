#pragma once

#include <istream>

namespace tessarin {

/// Calls `read` with a stream over `text`, which is left in the state that reading from it leaves.
/// False when the source fails in the middle, which a stream otherwise passes off as the end of the
/// text; std::bad_alloc passes.
template <class Read> bool ReadsWhole(std::istream& text, Read&& read) {
    std::istream strict(text.rdbuf());
    struct state_keeper {
        ~state_keeper() {
            try {
                to.setstate(from.rdstate());
            } catch (const std::ios_base::failure&) { // the state is set; the result says the rest
            }
        }
        const std::istream& from;
        std::istream& to;
    };
    const state_keeper keeper{strict, text};
    try {
        strict.copyfmt(text);
        strict.exceptions(std::ios_base::badbit);
        strict.clear(text.rdstate());
        read(strict);
        return true;
    } catch (const std::ios_base::failure&) {
        return false;
    }
}

} // namespace tessarin
