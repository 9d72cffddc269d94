#include "platform/floating_point.h"

#include <cfenv>
#include <gtest/gtest.h>

namespace tessarin {

namespace {

#if defined(__GLIBC__)
TEST(MaskFloatUnderflow, SilencesUnderflowAndLeavesTheRestAlone) {
    const int before = fegetexcept();
    feenableexcept(FE_UNDERFLOW | FE_DIVBYZERO);
    MaskFloatUnderflow();
    const int trapped = fegetexcept();
    fedisableexcept(FE_ALL_EXCEPT);
    feenableexcept(before);
    EXPECT_EQ(trapped & FE_UNDERFLOW, 0);
    EXPECT_NE(trapped & FE_DIVBYZERO, 0);
}
#endif

TEST(MaskFloatUnderflow, KeepsDenormals) {
    MaskFloatUnderflow();
    volatile double smallest = 2.2250738585072014e-308;
    EXPECT_GT(smallest / 2, 0.0);
}

} // namespace

} // namespace tessarin
