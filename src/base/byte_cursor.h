#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "base/little_endian.h"

namespace tessarin {

/// Reads bytes that come from outside. Every read is checked: one that reaches beyond the end
/// takes nothing, gives zero or an empty view, and fails the cursor for good. So a reader may read
/// a whole record and ask `Failed` once. Numbers are little-endian.
class ByteCursor {
public:
    /// Reads `size` bytes at `data`, which outlive the cursor. Null counts as no bytes.
    ByteCursor(const void* data, size_t size)
        : at(static_cast<const uint8_t*>(data)), remaining(data != nullptr ? size : 0) {}
    explicit ByteCursor(std::span<const uint8_t> bytes) : ByteCursor(bytes.data(), bytes.size()) {}

    uint8_t ReadU8() { return Read<uint8_t>(); }
    uint16_t ReadU16() { return Read<uint16_t>(); }
    int16_t ReadI16() { return Read<int16_t>(); }
    uint32_t ReadU32() { return Read<uint32_t>(); }
    int32_t ReadI32() { return Read<int32_t>(); }
    float ReadF32() { return Read<float>(); }
    double ReadF64() { return Read<double>(); }

    /// Fills `values`, of any numeric type, at the speed of a copy. After a failure they are as
    /// they were.
    template <class T, size_t Extent> bool ReadAll(std::span<T, Extent> values);

    /// The next `count` bytes, in place.
    std::span<const uint8_t> ReadBytes(size_t count);

    /// The text up to the next zero byte, in place; it takes the zero byte too. Bytes without one
    /// are a failure.
    std::string_view ReadString();

    /// Passes over `count` bytes.
    bool Skip(size_t count) { return ReadBytes(count).size() == count && !failed; }

    /// Whether `count` records of `recordSize` bytes are there. Asked before memory for them is.
    bool Holds(uint64_t count, uint64_t recordSize = 1) const {
        return !failed && (recordSize == 0 || count <= remaining / recordSize);
    }

    /// Declares the bytes malformed.
    void Fail() { failed = true; }
    bool Failed() const { return failed; }
    size_t Remaining() const { return remaining; }
    const uint8_t* Position() const { return at; }

    /// Moves a caller's own cursor to where this one stands.
    void MoveTo(const uint8_t** cursor, uint32_t* bytesRemaining) const {
        *cursor = at;
        *bytesRemaining = static_cast<uint32_t>(remaining);
    }

private:
    template <class T> T Read();

    const uint8_t* at;
    size_t remaining;
    bool failed = false;
};

/// A cursor over the bytes at a caller's `(cursor, remaining)` pair, which it moves along when it
/// goes out of scope.
class BorrowedByteCursor : public ByteCursor {
public:
    BorrowedByteCursor(const uint8_t** cursor, uint32_t* bytesRemaining)
        : ByteCursor(*cursor, *bytesRemaining), lender(cursor), lenderRemaining(bytesRemaining) {}
    BorrowedByteCursor(const BorrowedByteCursor&) = delete;
    BorrowedByteCursor& operator=(const BorrowedByteCursor&) = delete;
    ~BorrowedByteCursor() { MoveTo(lender, lenderRemaining); }

private:
    const uint8_t** lender;
    uint32_t* lenderRemaining;
};

template <class T> T ByteCursor::Read() {
    const std::span<const uint8_t> bytes = ReadBytes(sizeof(T));
    return failed ? T{} : LoadLittleEndian<T>(bytes.data());
}

template <class T, size_t Extent> bool ByteCursor::ReadAll(std::span<T, Extent> values) {
    const std::span<const uint8_t> bytes = ReadBytes(values.size_bytes());
    if (failed || values.empty()) {
        return !failed;
    }
    std::memcpy(values.data(), bytes.data(), bytes.size());
    if constexpr (std::endian::native == std::endian::big) {
        for (T& value : values) {
            value = ToLittleEndian(value);
        }
    }
    return true;
}

} // namespace tessarin
