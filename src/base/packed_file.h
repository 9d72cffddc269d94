#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "tessarin/error_codes.h"

namespace tessarin {

/// Bytes that are to be packed or unpacked. A packed block is the magic "PCQB", the number of
/// plain bytes as a u32, and one zlib stream of the highest level.
class quib_pack_base {
public:
    quib_pack_base() = default;
    quib_pack_base(const quib_pack_base&) = delete;
    quib_pack_base& operator=(const quib_pack_base&) = delete;
    virtual ~quib_pack_base() = default;

    /// Takes the bytes of a file. One that does not open, or is larger than 2 GiB, leaves the
    /// object as it was.
    virtual void LoadFile(const char* path);
    /// Takes a copy of `newSize` bytes; a size below 1 makes an empty one.
    virtual void LoadBuffer(const void* source, int32_t newSize);

protected:
    std::span<const uint8_t> Bytes() const { return {data.get(), static_cast<size_t>(size)}; }

private:
    std::unique_ptr<uint8_t[]> data;
    int32_t size = 0;
};

class quib_packer : public quib_pack_base {
public:
    /// Packs into a file. kInvalidFile when the bytes do not pack, and then no file is touched;
    /// otherwise as WriteWholeFile.
    [[nodiscard]] virtual error_code WritePacked(const char* path) const;
    /// A new block of `*packedSize` bytes, or null.
    virtual std::unique_ptr<uint8_t[]> Pack(uint32_t* packedSize) const;
};

class quib_unpacker : public quib_pack_base {
public:
    /// The `*newSize` plain bytes of a block; what follows the stream does not matter. Null when
    /// it is not a block, or does not hold what it says.
    virtual std::unique_ptr<uint8_t[]> Unpack(uint32_t* newSize) const;
};

/// What the two classes do, for bytes that stand somewhere already.
std::unique_ptr<uint8_t[]> PackBytes(std::span<const uint8_t> plain, uint32_t* packedSize);
std::unique_ptr<uint8_t[]> UnpackBytes(std::span<const uint8_t> packed, uint32_t* plainSize);

} // namespace tessarin
