#include "audio/sample_conversion.h"

#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/byte_builder.h"

namespace tessarin {
namespace {

using test::ByteBuilder;
using test::bytes;
using testing::ElementsAre;

TEST(SampleConversion, FloatsKeepThe16BitRange) {
    const bytes words = ByteBuilder().U16(0x8000).U16(0x7FFF).U16(0xFFFF).U16(0).Take();
    std::vector<float> floats(4);
    FloatsFromInt16(floats, words.data(), 2);
    EXPECT_THAT(floats, ElementsAre(-32768, 32767, -1, 0));

    const bytes octets = {128, 0, 255, 129};
    FloatsFromUint8(floats, octets.data(), 1);
    EXPECT_THAT(floats, ElementsAre(0, -32768, 32512, 256));
}

TEST(SampleConversion, StrideSelectsOneChannel) {
    const bytes stereo = ByteBuilder().U16(1).U16(2).U16(3).U16(4).Take();
    std::vector<float> right(2);
    FloatsFromInt16(right, stereo.data() + 2, 4);
    EXPECT_THAT(right, ElementsAre(2, 4));

    std::vector<uint16_t> copied(2);
    CopyChannel(copied.data(), stereo.data() + 2, 2, 2, 4);
    EXPECT_THAT(copied, ElementsAre(2, 4));
}

TEST(SampleConversion, FloatsAreTruncatedAndHeldToTheRange) {
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> floats = {1.9f, -1.9f, 32767.9f, -32768.9f, 1e30f, -inf, nan};
    std::vector<int16_t> words(floats.size());
    Int16FromFloats(words, floats);
    EXPECT_THAT(words, ElementsAre(1, -1, 32767, -32768, 32767, -32768, 0));
}

TEST(SampleConversion, WidensInPlaceWithoutOverwritingWhatIsToCome) {
    std::vector<int16_t> samples(3);
    const bytes octets = {0, 128, 255};
    std::copy(octets.begin(), octets.end(), reinterpret_cast<uint8_t*>(samples.data()));
    WidenToInt16(samples);
    EXPECT_THAT(samples, ElementsAre(-32768, 0, 32512));
}

TEST(SampleConversion, TheFactorOf24BitsStaysInsideTheRange) {
    const bytes packed = {0xFF, 0xFF, 0x7F, 0x00, 0x00, 0x80, 0x00, 0x01, 0x00, 0x01, 0x01, 0x00};
    std::vector<int16_t> samples(4);
    Int16From24Bits(samples, packed.data());
    // 256 * 0.0039062 is just below 1, and 257 times it just above.
    EXPECT_THAT(samples, ElementsAre(32767, -32767, 0, 1));
}

} // namespace
} // namespace tessarin
