#include "base/packed_file.h"

#include <algorithm>

#include "base/byte_cursor.h"
#include "base/little_endian.h"
#include "base/whole_file.h"
#include "base/zlib_stream.h"

namespace tessarin {
namespace {

constexpr uint32_t kPackedMagic = 0x42514350; // "PCQB"
constexpr size_t kPackedHeaderSize = 8;

/// Deflate codes at most 258 bytes in two bits, so a stream cannot hold more than this for each of
/// its bytes.
constexpr uint64_t kMaxRatio = 1032;
constexpr uint64_t kRatioSlack = 64;

} // namespace

void quib_pack_base::LoadFile(const char* path) {
    uint32_t read = 0;
    std::unique_ptr<uint8_t[]> bytes = ReadWholeFile(path, &read, false);
    if (bytes != nullptr && read <= uint32_t{INT32_MAX}) {
        data = std::move(bytes);
        size = static_cast<int32_t>(read);
    }
}

void quib_pack_base::LoadBuffer(const void* source, int32_t newSize) {
    const int32_t count = source == nullptr ? 0 : std::max(newSize, 0);
    auto copy = std::make_unique_for_overwrite<uint8_t[]>(static_cast<size_t>(count));
    std::copy_n(static_cast<const uint8_t*>(source), count, copy.get());
    data = std::move(copy);
    size = count;
}

error_code quib_packer::WritePacked(const char* path) const {
    uint32_t packedSize = 0;
    const std::unique_ptr<uint8_t[]> packed = Pack(&packedSize);
    return packed == nullptr ? kInvalidFile : WriteWholeFile(path, {packed.get(), packedSize});
}

std::unique_ptr<uint8_t[]> quib_packer::Pack(uint32_t* packedSize) const {
    return PackBytes(Bytes(), packedSize);
}

std::unique_ptr<uint8_t[]> quib_unpacker::Unpack(uint32_t* newSize) const {
    return UnpackBytes(Bytes(), newSize);
}

std::unique_ptr<uint8_t[]> PackBytes(std::span<const uint8_t> plain, uint32_t* packedSize) {
    constexpr size_t kSlack = 12;
    if (plain.size() > uint32_t{INT32_MAX}) {
        return nullptr;
    }
    const size_t room = plain.size() * 2 + kSlack;
    auto packed = std::make_unique_for_overwrite<uint8_t[]>(room + kPackedHeaderSize);
    const std::optional<size_t> length =
        DeflateZlib(plain, {packed.get() + kPackedHeaderSize, room});
    if (!length || *length > UINT32_MAX - kPackedHeaderSize) {
        return nullptr;
    }
    StoreLittleEndian(packed.get(), kPackedMagic);
    StoreLittleEndian(packed.get() + sizeof(kPackedMagic), static_cast<uint32_t>(plain.size()));
    *packedSize = static_cast<uint32_t>(*length + kPackedHeaderSize);
    return packed;
}

std::unique_ptr<uint8_t[]> UnpackBytes(std::span<const uint8_t> packed, uint32_t* plainSize) {
    ByteCursor cursor(packed);
    const uint32_t magic = cursor.ReadU32();
    const uint32_t stated = cursor.ReadU32();
    if (cursor.Failed() || magic != kPackedMagic ||
        stated > kMaxRatio * cursor.Remaining() + kRatioSlack) {
        return nullptr;
    }
    const size_t room = std::max<size_t>(stated, 1); // one too many is seen
    auto plain = std::make_unique_for_overwrite<uint8_t[]>(room);
    if (InflateZlib({cursor.Position(), cursor.Remaining()}, {plain.get(), room}) != stated) {
        return nullptr;
    }
    *plainSize = stated;
    return plain;
}

} // namespace tessarin
