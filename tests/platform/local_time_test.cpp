#include "platform/local_time.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessarin {

namespace {

TEST(LocalTimeText, HasTheFixedFormOfTheCLibrary) {
    EXPECT_THAT(LocalTimeText().data(),
                testing::MatchesRegex("(Sun|Mon|Tue|Wed|Thu|Fri|Sat) "
                                      "(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) "
                                      "[ 1-3][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9] [0-9]+\n"));
}

} // namespace

} // namespace tessarin
