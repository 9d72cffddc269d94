#include "audio/pre_emphasis.h"

#include <algorithm>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessarin {
namespace {

using testing::ElementsAre;

std::vector<float> EmphasizedInBlocks(std::vector<float> samples, size_t blockSize) {
    float previous = 0.0f;
    for (size_t i = 0; i < samples.size(); i += blockSize) {
        const size_t size = std::min(blockSize, samples.size() - i);
        PreEmphasize({samples.data() + i, size}, 0.5f, previous);
    }
    return samples;
}

TEST(PreEmphasize, SubtractsTheScaledPreviousSample) {
    EXPECT_THAT(EmphasizedInBlocks({8, 8, 0, -4}, 4), ElementsAre(8, 4, -4, -4));
}

TEST(PreEmphasize, IsIndifferentToBlockSize) {
    const std::vector<float> signal = {3, -1, 4, 1, -5, 9, 2};
    for (size_t blockSize : {1, 2, 3}) {
        SCOPED_TRACE(blockSize);
        EXPECT_EQ(EmphasizedInBlocks(signal, blockSize), EmphasizedInBlocks(signal, 7));
    }
}

} // namespace
} // namespace tessarin
