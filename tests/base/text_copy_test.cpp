#include "base/text_copy.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace tessarin {

namespace {

TEST(CopyText, CutsTerminatesAndClears) {
    char field[4] = {'?', '?', '?', '?'};
    EXPECT_TRUE(CopyText(field, "a"));
    EXPECT_EQ(std::string(field, 4), std::string("a\0\0\0", 4));
    EXPECT_TRUE(CopyText(field, "abc"));
    EXPECT_STREQ(field, "abc");
    EXPECT_FALSE(CopyText(field, "vwxyz"));
    EXPECT_STREQ(field, "vwx");
    EXPECT_TRUE(CopyText(field, std::string_view()));
    EXPECT_STREQ(field, "");
}

TEST(FieldText, EndsWithTheFieldAtTheLatest) {
    const char full[3] = {'a', 'b', 'c'};
    EXPECT_EQ(FieldText(full), "abc");
    EXPECT_EQ(FieldText("ab\0cd"), "ab");
}

} // namespace

} // namespace tessarin
