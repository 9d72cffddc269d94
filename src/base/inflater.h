#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace tessarin {

/// Decodes zlib streams on systems without zlib (RFC 1950 and 1951). Codes are read bit by bit
/// along their lengths, as in the canonical form of Huffman codes, which needs no tables beyond the
/// counts: slower than zlib, for a few megabytes at the start of a program.
class Inflater {
public:
    Inflater(std::span<const uint8_t> stream, std::span<uint8_t> room) : in(stream), out(room) {}

    /// To be called once. Returns the number of bytes that were packed; none when the stream is
    /// damaged, ends early, or holds more than there is room for.
    std::optional<size_t> Run();

private:
    static constexpr size_t kMostBits = 15;
    static constexpr size_t kMostSymbols = 288;

    struct code_book {
        /// From the bit length of each symbol, 0 where it does not occur. False when more symbols
        /// were given than their lengths have room for.
        bool Make(std::span<const uint8_t> lengths);

        std::array<uint16_t, kMostBits + 1> counts{}; ///< of each length
        std::array<uint16_t, kMostSymbols> symbols{}; ///< in order of their codes
    };

    uint32_t Bits(size_t count);
    uint32_t Symbol(const code_book& book);
    void Block();
    void CopyStored();
    bool ReadBooks();
    void UseFixedBooks();
    void DecodeBlock();
    void CopyMatch(size_t length, size_t distance);
    uint32_t Checksum() const;

    std::span<const uint8_t> in;
    std::span<uint8_t> out;
    size_t position = 0; ///< in the stream
    size_t written = 0;
    uint32_t bits = 0; ///< that were read and not yet used
    size_t bitCount = 0;
    bool failed = false;
    code_book literals;
    code_book distances;
};

} // namespace tessarin
