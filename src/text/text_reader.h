#pragma once

#include "base/tarray.h"

#include <array>
#include <cstdint>
#include <string>

namespace tessarin {

/// Reads a text once, from its first byte to the zero after its last, with a look ahead. What is
/// read has gone through a fold table; the raw text stays at hand for tags.
class text_reader {
public:
    /// Takes a copy of a zero-terminated text. Throws std::bad_alloc.
    void SetInput(const char* text);

    /// Goes to the start of the text. `table` has 256 bytes, or is null when nothing is folded.
    void Start(const uint8_t* table);

    /// Moves on by one character. After the end of the text there are zeros.
    void Advance();

    uint32_t Cur() const { return lookahead[0]; }
    uint32_t Next() const { return lookahead[1]; }
    uint32_t Next2() const { return lookahead[2]; }
    uint32_t Next3() const { return lookahead[3]; }
    /// The byte offset of the current character. It may lie past the end of the text.
    uint32_t Position() const { return position; }

    /// The unfolded byte at `index`; 0 at the end of the text and outside of it.
    uint32_t RawAt(int32_t index) const;
    /// The unfolded text between two positions, as far as there is text.
    std::string RawText(uint32_t start, uint32_t end) const;

private:
    uint32_t Fetch();

    TArray<uint32_t> input; ///< the bytes as unsigned values, and a zero
    int32_t readIndex = 0;
    uint32_t position = 0;
    std::array<uint32_t, 4> lookahead = {};
    const uint8_t* foldTable = nullptr;
};

} // namespace tessarin
