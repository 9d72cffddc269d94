#include "base/guarded.h"

#include <gtest/gtest.h>
#include <new>
#include <stdexcept>

namespace tessarin {

namespace {

TEST(Guarded, TurnsWhatIsThrownIntoACode) {
    EXPECT_EQ(Guarded([] { return kFileInUse; }), kFileInUse);
    EXPECT_EQ(Guarded([] {}), kNoError);
    EXPECT_EQ(Guarded([]() -> error_code { throw std::bad_array_new_length(); }), kOutOfMemory);
    EXPECT_EQ(Guarded([]() -> error_code { throw std::length_error(""); }), kException);
    EXPECT_EQ(Guarded([] { throw 1; }), kException);
}

} // namespace

} // namespace tessarin
