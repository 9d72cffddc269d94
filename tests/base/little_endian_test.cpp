#include "base/little_endian.h"

#include <gtest/gtest.h>
#include <string>

#include "support/temp_file.h"

namespace tessarin {

namespace {

TEST(LittleEndian, PutsTheLowByteFirst) {
    uint8_t raw[9] = {};
    StoreLittleEndian(raw + 1, 0x04030201u);
    EXPECT_EQ(std::string(raw + 1, raw + 5), "\1\2\3\4");
    StoreLittleEndian(raw + 1, -2.5); // at an odd address
    EXPECT_EQ(raw[8], 0xC0);
    EXPECT_EQ(LoadLittleEndian<double>(raw + 1), -2.5);
    EXPECT_EQ(LoadLittleEndian<int16_t>("\xFE\xFF"), -2);
    char16_t text[] = u"ab";
    ToLittleEndian(text);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(text), 6), std::string("a\0b\0\0\0", 6));
}

TEST(LittleEndian, WritesToFiles) {
    const test::TempFile path;
    FILE* file = std::fopen(path.Path(), "wb");
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(WriteU16(file, 0x4241));
    EXPECT_TRUE(WriteU32(file, 0x46454443));
    std::fclose(file);
    EXPECT_EQ(path.Content(), "ABCDEF");
    file = std::fopen(path.Path(), "rb");
    ASSERT_NE(file, nullptr);
    EXPECT_FALSE(WriteU32(file, 1)) << "a file that is only read takes nothing";
    std::fclose(file);
}

} // namespace

} // namespace tessarin
