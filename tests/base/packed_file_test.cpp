#include "base/packed_file.h"

#include <gtest/gtest.h>

#include <string>

#include "base/little_endian.h"
#include "support/byte_builder.h"
#include "support/temp_file.h"

namespace tessarin {
namespace {

using test::bytes;
using test::TempFile;

bytes Packed(const bytes& plain) {
    quib_packer packer;
    packer.LoadBuffer(plain.data(), static_cast<int32_t>(plain.size()));
    uint32_t size = 0;
    const auto packed = packer.Pack(&size);
    return {packed.get(), packed.get() + size};
}

/// The plain bytes as text, or "null".
std::string Unpacked(const bytes& packed) {
    quib_unpacker unpacker;
    unpacker.LoadBuffer(packed.data(), static_cast<int32_t>(packed.size()));
    uint32_t size = 0xFFFF;
    const auto plain = unpacker.Unpack(&size);
    return plain == nullptr ? "null" : std::string(plain.get(), plain.get() + size);
}

bytes Text(std::string_view text) {
    return {text.begin(), text.end()};
}

bytes WithSize(bytes packed, uint32_t stated) {
    StoreLittleEndian(packed.data() + 4, stated);
    return packed;
}

TEST(PackedFile, GivesTheSameBytesBack) {
    std::string mixed;
    for (uint32_t i = 0; i < 100000; ++i) {
        mixed += static_cast<char>(i * i >> 7);
    }
    for (const std::string& plain : {std::string(), std::string("a"), mixed,
                                     std::string(1 << 20, 'z'), std::string(3, '\0')}) {
        bytes packed = Packed(Text(plain));
        EXPECT_EQ(Unpacked(packed), plain);
        packed.resize(packed.size() + 16213, 0x5A);
        EXPECT_EQ(Unpacked(packed), plain) << "with filler after the stream";
    }
}

TEST(PackedFile, HasAHeaderAndAZlibStreamOfTheHighestLevel) {
    const bytes packed = Packed(Text("hello hello hello"));
    EXPECT_EQ(std::string(packed.begin(), packed.begin() + 4), "PCQB");
    EXPECT_EQ(LoadLittleEndian<uint32_t>(packed.data() + 4), 17u);
    EXPECT_EQ(packed[8], 0x78);
    EXPECT_EQ(packed[9], 0xDA);
}

TEST(PackedFile, RefusesWhatDoesNotHoldTogether) {
    const bytes packed = Packed(Text("some text, some text, some more text"));
    for (size_t size = 0; size < packed.size(); ++size) {
        SCOPED_TRACE(size);
        EXPECT_EQ(Unpacked({packed.begin(), packed.begin() + static_cast<ptrdiff_t>(size)}),
                  "null");
    }
    for (const uint32_t stated : {0u, 35u, 37u, 40000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        EXPECT_EQ(Unpacked(WithSize(packed, stated)), "null") << stated;
    }
    EXPECT_EQ(Unpacked(WithSize(Packed(Text("a")), 0)), "null");
    bytes otherMagic = packed;
    otherMagic[0] = 'Q';
    EXPECT_EQ(Unpacked(otherMagic), "null");
    bytes damaged = packed;
    damaged[12] ^= 0x40;
    EXPECT_EQ(Unpacked(damaged), "null");
}

// The most that a stream can hold for its length must pass the check of the stated size.
TEST(PackedFile, TakesTheBestRatioOfTheCompressor) {
    const std::string zeros(16 << 20, '\0');
    const bytes packed = Packed(Text(zeros));
    ASSERT_GT(zeros.size() / packed.size(), 1000u);
    EXPECT_EQ(Unpacked(packed), zeros);
}

// Kept: a file that is missing leaves what was loaded before.
TEST(PackedFile, LoadFileKeepsTheOldBytesWithoutAFile) {
    const TempFile file(Packed(Text("from a file")), ".packed");
    const TempFile missing;
    quib_unpacker unpacker;
    unpacker.LoadFile(file.Path());
    unpacker.LoadFile(missing.Path());
    unpacker.LoadFile(nullptr);
    uint32_t size = 0;
    const auto plain = unpacker.Unpack(&size);
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(std::string(plain.get(), plain.get() + size), "from a file");
}

TEST(PackedFile, WritesAFile) {
    const TempFile file;
    quib_packer packer;
    packer.LoadBuffer("words", 5);
    ASSERT_EQ(packer.WritePacked(file.Path()), 0);
    const std::string content = file.Content();
    EXPECT_EQ(Unpacked({content.begin(), content.end()}), "words");
    EXPECT_EQ(packer.WritePacked((std::string(file.Path()) + "/inside").c_str()), 9);
}

TEST(PackedFile, LoadBufferTakesNothingFromAnEmptySource) {
    quib_packer packer;
    packer.LoadBuffer("words", 5);
    packer.LoadBuffer("words", -5);
    uint32_t size = 0;
    const auto packed = packer.Pack(&size);
    EXPECT_EQ(Unpacked({packed.get(), packed.get() + size}), "");
}

} // namespace
} // namespace tessarin
