#include "features/cosine_transform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tessarin {
namespace {

std::vector<float> Cepstra(const std::vector<float>& energies, int32_t count) {
    CCosineTransform transform;
    transform.Prepare(static_cast<int32_t>(energies.size()), count);
    std::vector<float> cepstra(static_cast<size_t>(count), -1.0f);
    transform.Apply(energies, cepstra);
    return cepstra;
}

TEST(CosineTransform, AgreesWithThePlainSumToTheBit) {
    const float pi = std::atan(1.0f) * 4;
    const std::vector<float> e = {3.5f, 0.0f, 7.25f, 6.1f, 5.9f, 4.4f, 2.02f};
    const std::vector<float> cepstra = Cepstra(e, 12); // more cepstra than bands
    for (size_t j = 0; j < cepstra.size(); ++j) {
        float sum = 0;
        for (size_t i = 1; i <= e.size(); ++i) {
            sum += std::cos((static_cast<float>(i) - 0.5f) * pi * static_cast<float>(j) /
                            static_cast<float>(e.size())) *
                   e[i - 1];
        }
        EXPECT_EQ(cepstra[j], sum) << j;
    }
}

TEST(CosineTransform, OfNoBandsIsNothing) {
    EXPECT_EQ(Cepstra({}, 3), std::vector<float>(3, 0.0f));
}

} // namespace
} // namespace tessarin
