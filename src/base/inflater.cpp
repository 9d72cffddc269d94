#include "base/inflater.h"

#include <algorithm>

namespace tessarin {
namespace {

constexpr uint32_t kEndOfBlock = 256;
constexpr size_t kMostLiterals = 286;
constexpr size_t kMostDistances = 30;

// The lengths and distances of matches: the first value of each symbol and its further bits.
constexpr std::array<uint16_t, 29> kFirstLength = {3,  4,  5,  6,   7,   8,   9,   10,  11, 13,
                                                   15, 17, 19, 23,  27,  31,  35,  43,  51, 59,
                                                   67, 83, 99, 115, 131, 163, 195, 227, 258};
constexpr std::array<uint8_t, 29> kLengthBits = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                                 2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
constexpr std::array<uint16_t, 30> kFirstDistance = {
    1,   2,   3,   4,   5,   7,    9,    13,   17,   25,   33,   49,   65,    97,    129,
    193, 257, 385, 513, 769, 1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
constexpr std::array<uint8_t, 30> kDistanceBits = {0, 0, 0,  0,  1,  1,  2,  2,  3,  3,
                                                   4, 4, 5,  5,  6,  6,  7,  7,  8,  8,
                                                   9, 9, 10, 10, 11, 11, 12, 12, 13, 13};

} // namespace

bool Inflater::code_book::Make(std::span<const uint8_t> lengths) {
    counts.fill(0);
    for (const uint8_t length : lengths) {
        ++counts[length];
    }
    counts[0] = 0;
    std::array<uint16_t, kMostBits + 2> next{};
    int32_t left = 1; // codes of this length that are not taken
    for (size_t length = 1; length <= kMostBits; ++length) {
        left = 2 * left - counts[length];
        if (left < 0) {
            return false;
        }
        next[length + 1] = static_cast<uint16_t>(next[length] + counts[length]);
    }
    for (size_t symbol = 0; symbol < lengths.size(); ++symbol) {
        if (lengths[symbol] != 0) {
            symbols[next[lengths[symbol]]++] = static_cast<uint16_t>(symbol);
        }
    }
    return true;
}

/// The next bits of the stream, the first of them lowest.
uint32_t Inflater::Bits(size_t count) {
    while (bitCount < count) {
        if (position >= in.size()) {
            failed = true;
            return 0;
        }
        bits |= static_cast<uint32_t>(in[position++]) << bitCount;
        bitCount += 8;
    }
    const uint32_t value = bits & ((1u << count) - 1);
    bits >>= count;
    bitCount -= count;
    return value;
}

uint32_t Inflater::Symbol(const code_book& book) {
    uint32_t code = 0;
    uint32_t first = 0; // code of this length
    size_t index = 0;   // of its symbol
    for (size_t length = 1; length <= kMostBits && !failed; ++length) {
        code |= Bits(1);
        const uint32_t count = book.counts[length];
        if (code - first < count) {
            return book.symbols[index + code - first];
        }
        index += count;
        first = (first + count) << 1;
        code <<= 1;
    }
    failed = true;
    return kEndOfBlock;
}

std::optional<size_t> Inflater::Run() {
    constexpr uint32_t kDeflate = 8;
    constexpr uint32_t kDictionary = 0x20;
    const uint32_t method = Bits(8);
    const uint32_t flags = Bits(8);
    failed = failed || (method & 15) != kDeflate || (method >> 4) > 7 ||
             (method * 256 + flags) % 31 != 0 || (flags & kDictionary) != 0;
    for (bool isLast = false; !isLast && !failed;) {
        isLast = Bits(1) != 0;
        Block();
    }
    bits >>= bitCount % 8;
    bitCount -= bitCount % 8;
    uint32_t stated = 0;
    for (int i = 0; i < 4; ++i) {
        stated = stated << 8 | Bits(8);
    }
    return failed || stated != Checksum() ? std::nullopt : std::optional(written);
}

void Inflater::Block() {
    switch (Bits(2)) {
    case 0:
        CopyStored();
        break;
    case 1:
        UseFixedBooks();
        DecodeBlock();
        break;
    case 2:
        if (ReadBooks()) {
            DecodeBlock();
        } else {
            failed = true;
        }
        break;
    default:
        failed = true;
    }
}

void Inflater::CopyStored() {
    bits = 0; // less than a byte is left in them
    bitCount = 0;
    const uint32_t length = Bits(16);
    const uint32_t inverse = Bits(16);
    if (failed || length != (inverse ^ 0xFFFF) || length > in.size() - position ||
        length > out.size() - written) {
        failed = true;
        return;
    }
    std::copy_n(in.begin() + static_cast<ptrdiff_t>(position), length,
                out.begin() + static_cast<ptrdiff_t>(written));
    position += length;
    written += length;
}

void Inflater::UseFixedBooks() {
    std::array<uint8_t, kMostSymbols> lengths{};
    for (size_t i = 0; i < lengths.size(); ++i) {
        lengths[i] = i < 144 ? 8 : i < 256 ? 9 : i < 280 ? 7 : 8;
    }
    std::array<uint8_t, kMostDistances> five{};
    five.fill(5);
    failed = !literals.Make(lengths) || !distances.Make(five) || failed;
}

/// The lengths of both books stand in a code of their own, in which runs are short.
bool Inflater::ReadBooks() {
    constexpr std::array<uint8_t, 19> kOrder = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                11, 4,  12, 3, 13, 2, 14, 1, 15};
    const size_t literalCount = Bits(5) + 257;
    const size_t distanceCount = Bits(5) + 1;
    const size_t lengthCount = Bits(4) + 4;
    if (literalCount > kMostLiterals || distanceCount > kMostDistances) {
        return false;
    }
    std::array<uint8_t, kMostLiterals + kMostDistances> lengths{};
    for (size_t i = 0; i < lengthCount; ++i) {
        lengths[kOrder[i]] = static_cast<uint8_t>(Bits(3));
    }
    code_book book;
    if (!book.Make(std::span(lengths).first(kOrder.size()))) {
        return false;
    }
    const size_t total = literalCount + distanceCount;
    for (size_t i = 0; i < total;) {
        const uint32_t symbol = Symbol(book);
        if (failed) {
            return false;
        }
        size_t run = 1;
        uint8_t length = static_cast<uint8_t>(symbol);
        if (symbol >= 16) {
            if (symbol == 16 && i == 0) {
                return false; // nothing to repeat
            }
            length = symbol == 16 ? lengths[i - 1] : uint8_t{0};
            run = symbol == 16 ? 3 + Bits(2) : symbol == 17 ? 3 + Bits(3) : 11 + Bits(7);
        }
        if (run > total - i) {
            return false;
        }
        std::fill_n(lengths.begin() + static_cast<ptrdiff_t>(i), run, length);
        i += run;
    }
    const std::span all(lengths);
    return !failed && lengths[kEndOfBlock] != 0 && literals.Make(all.first(literalCount)) &&
           distances.Make(all.subspan(literalCount, distanceCount));
}

void Inflater::DecodeBlock() {
    while (!failed) {
        const uint32_t symbol = Symbol(literals);
        if (symbol == kEndOfBlock) {
            return;
        }
        if (symbol < kEndOfBlock) {
            if (written >= out.size()) {
                failed = true;
                return;
            }
            out[written++] = static_cast<uint8_t>(symbol);
            continue;
        }
        const size_t kind = symbol - kEndOfBlock - 1;
        if (kind >= kFirstLength.size()) {
            failed = true;
            return;
        }
        const size_t length = kFirstLength[kind] + Bits(kLengthBits[kind]);
        const uint32_t from = Symbol(distances);
        if (failed || from >= kFirstDistance.size()) {
            failed = true;
            return;
        }
        CopyMatch(length, kFirstDistance[from] + Bits(kDistanceBits[from]));
    }
}

// A match may overlap what it makes, so it is copied byte by byte.
void Inflater::CopyMatch(size_t length, size_t distance) {
    if (failed || distance > written || length > out.size() - written) {
        failed = true;
        return;
    }
    for (size_t i = 0; i < length; ++i, ++written) {
        out[written] = out[written - distance];
    }
}

/// Adler-32. A sum of 5552 bytes fits into 32 bits.
uint32_t Inflater::Checksum() const {
    constexpr uint32_t kPrime = 65521;
    constexpr size_t kRun = 5552;
    uint32_t low = 1;
    uint32_t high = 0;
    for (size_t i = 0; i < written; ++i) {
        low += out[i];
        high += low;
        if (i % kRun == kRun - 1) {
            low %= kPrime;
            high %= kPrime;
        }
    }
    return high % kPrime << 16 | low % kPrime;
}

} // namespace tessarin
