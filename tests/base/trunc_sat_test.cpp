#include "base/trunc_sat.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace tessarin {

namespace {

template <class Int> class TruncSatOf : public testing::Test {};
using integers =
    testing::Types<int8_t, uint8_t, int16_t, uint16_t, int32_t, uint32_t, int64_t, uint64_t>;
TYPED_TEST_SUITE(TruncSatOf, integers);

TYPED_TEST(TruncSatOf, HoldsToTheRange) {
    using limits = std::numeric_limits<TypeParam>;
    const double infinity = std::numeric_limits<double>::infinity();
    const double above = std::ldexp(1.0, limits::digits);
    const double below = limits::is_signed ? -above : 0.0;
    EXPECT_EQ(TruncSat<TypeParam>(infinity), limits::max());
    EXPECT_EQ(TruncSat<TypeParam>(above), limits::max());
    EXPECT_EQ(TruncSat<TypeParam>(static_cast<float>(above)), limits::max());
    EXPECT_EQ(TruncSat<TypeParam>(below), limits::min());
    EXPECT_EQ(TruncSat<TypeParam>(-infinity), limits::min());
    EXPECT_EQ(TruncSat<TypeParam>(std::nan("")), TypeParam{0});
    EXPECT_EQ(TruncSat<TypeParam>(-0.9), TypeParam{0});
    EXPECT_EQ(TruncSat<TypeParam>(99.9f), TypeParam{99});
    // The last value inside the range that the floating type has.
    const double inside = std::nextafter(above, 0.0);
    EXPECT_EQ(TruncSat<TypeParam>(inside), static_cast<TypeParam>(inside));
}

TEST(TruncToLow16, WrapsWhatDoesNotFitASample) {
    EXPECT_EQ(TruncToLow16(-1.9f), -1);
    EXPECT_EQ(TruncToLow16(32767.9f), 32767);
    EXPECT_EQ(TruncToLow16(32768.0f), -32768);
    EXPECT_EQ(TruncToLow16(-32769.0), 32767);
    EXPECT_EQ(TruncToLow16(65536.5), 0);
}

} // namespace

} // namespace tessarin
