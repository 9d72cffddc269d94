#include "base/byte_cursor.h"

#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "support/byte_builder.h"

namespace tessarin {

namespace {

using test::ByteBuilder;
using test::bytes;

/// One field of each kind.
struct record {
    uint32_t number = 0;
    int16_t small = 0;
    std::string text;
    std::array<float, 3> values = {};
    double last = 0;
    bool operator==(const record&) const = default;
};

record Read(ByteCursor& cursor) {
    record result;
    result.number = cursor.ReadU32();
    result.small = cursor.ReadI16();
    result.text = cursor.ReadString();
    cursor.ReadAll(std::span(result.values));
    cursor.Skip(1);
    result.last = cursor.ReadF64();
    return result;
}

TEST(ByteCursor, ReadsARecordOnlyWhole) {
    const bytes content = ByteBuilder()
                              .U32(0x80000001)
                              .U16(0xFFFE)
                              .String("word")
                              .F32(1)
                              .F32(2)
                              .F32(-3)
                              .U8(99)
                              .F64(0.1)
                              .Take();
    ByteCursor whole{std::span(content)};
    EXPECT_EQ(Read(whole), (record{0x80000001, -2, "word", {1, 2, -3}, 0.1}));
    EXPECT_FALSE(whole.Failed());
    EXPECT_EQ(whole.Remaining(), 0u);
    for (size_t length = 0; length < content.size(); ++length) {
        const bytes cut(content.begin(), content.begin() + static_cast<int64_t>(length));
        ByteCursor cursor{std::span(cut)};
        const record partial = Read(cursor);
        EXPECT_TRUE(cursor.Failed()) << length;
        EXPECT_EQ(partial.last, 0) << length;
    }
}

TEST(ByteCursor, StaysFailed) {
    const bytes content = {1, 2, 3};
    ByteCursor cursor{std::span(content)};
    EXPECT_EQ(cursor.ReadU32(), 0u);
    EXPECT_EQ(cursor.ReadU8(), 0) << "though a byte is there";
    EXPECT_TRUE(cursor.ReadBytes(0).empty());
    EXPECT_FALSE(cursor.Skip(0));
    EXPECT_FALSE(cursor.Holds(0));
    EXPECT_TRUE(cursor.ReadString().empty());
    EXPECT_EQ(cursor.Remaining(), 3u);
    EXPECT_TRUE(cursor.Failed());
    ByteCursor nothing(nullptr, 10);
    EXPECT_EQ(nothing.ReadU8(), 0);
    EXPECT_TRUE(nothing.Failed());
}

TEST(ByteCursor, CountsRecordsWithoutOverflow) {
    const bytes content(24);
    const ByteCursor cursor{std::span(content)};
    EXPECT_TRUE(cursor.Holds(2, 12));
    EXPECT_FALSE(cursor.Holds(3, 12));
    EXPECT_FALSE(cursor.Holds(uint64_t{1} << 61, 8));
    EXPECT_FALSE(cursor.Holds(std::numeric_limits<uint64_t>::max()));
    EXPECT_TRUE(cursor.Holds(0, 1000));
}

TEST(BorrowedByteCursor, MovesItsLender) {
    const bytes content = ByteBuilder().U16(7).String("ab").U8(5).Take();
    const uint8_t* place = content.data();
    auto remaining = static_cast<uint32_t>(content.size());
    {
        BorrowedByteCursor cursor(&place, &remaining);
        EXPECT_EQ(cursor.ReadU16(), 7);
        EXPECT_EQ(cursor.ReadString(), "ab");
    }
    EXPECT_EQ(remaining, 1u);
    EXPECT_EQ(*place, 5);
}

} // namespace

} // namespace tessarin
