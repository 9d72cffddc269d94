#include "features/spectral_feature_descriptor.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <limits>
#include <sstream>
#include <vector>

#include "support/byte_builder.h"

namespace tessarin {
namespace {

using test::ByteBuilder;
using test::bytes;

/// The fields from the rate on, with `numBands` stated and two bands present.
ByteBuilder Fields(int32_t numFeatures, int32_t numBands, int32_t numCepstra) {
    ByteBuilder builder;
    builder.F32(8000.0f).F32(0.97f).I32(256).I32(96).I32(numFeatures).I32(numBands);
    builder.F32(100.0f).F32(200.0f).F32(300.0f).F32(0.5f);
    builder.F32(200.0f).F32(300.5f).F32(400.0f).F32(-1.0f);
    builder.I32(numCepstra);
    return builder;
}

bytes Record(uint16_t version = 1, int32_t numFeatures = 39, int32_t numBands = 2,
             int32_t numCepstra = 12) {
    return ByteBuilder()
        .Text("taef")
        .U16(version)
        .Bytes(Fields(numFeatures, numBands, numCepstra).Take())
        .U32(4)
        .Take();
}

bool ReadFrom(CSpectralFeatureDescriptor& descriptor, const bytes& record,
              uint32_t* left = nullptr) {
    const uint8_t* cursor = record.data();
    auto remaining = static_cast<uint32_t>(record.size());
    const bool result = descriptor.Read(&cursor, &remaining);
    EXPECT_EQ(cursor + remaining, record.data() + record.size());
    if (left != nullptr) {
        *left = remaining;
    }
    return result;
}

bytes Written(CSpectralFeatureDescriptor& descriptor) {
    std::FILE* file = std::tmpfile();
    EXPECT_TRUE(descriptor.Write(file));
    bytes content(static_cast<size_t>(std::ftell(file)));
    std::rewind(file);
    EXPECT_EQ(std::fread(content.data(), 1, content.size(), file), content.size());
    std::fclose(file);
    return content;
}

TEST(SpectralFeatureDescriptor, ReadsEveryField) {
    bytes record = Record();
    record.insert(record.end(), 7, 0xAA); // the models after it
    CSpectralFeatureDescriptor descriptor;
    uint32_t left = 0;
    ASSERT_TRUE(ReadFrom(descriptor, record, &left));
    EXPECT_EQ(left, 7u);
    EXPECT_EQ(descriptor.sampleRate, 8000.0f);
    EXPECT_EQ(descriptor.preEmphasis, 0.97f);
    EXPECT_EQ(descriptor.windowSize, 256);
    EXPECT_EQ(descriptor.windowOverlap, 96);
    EXPECT_EQ(descriptor.numFeatures, 39);
    EXPECT_EQ(descriptor.numBands, 2);
    ASSERT_EQ(descriptor.bands.GetSize(), 2);
    EXPECT_EQ(descriptor.bands[1].centre, 300.5f);
    EXPECT_EQ(descriptor.bands[0].reserved, 0.5f);
    EXPECT_EQ(descriptor.numCepstra, 12);
    EXPECT_EQ(descriptor.flags, kKeepLastCepstrum);
}

TEST(SpectralFeatureDescriptor, WritesBackWhatItRead) {
    CSpectralFeatureDescriptor descriptor;
    ASSERT_TRUE(ReadFrom(descriptor, Record()));
    EXPECT_EQ(Written(descriptor), Record()); // the fourth value of a band too
}

TEST(SpectralFeatureDescriptor, ReadsTheOldFormAndLeavesTheFlags) {
    CSpectralFeatureDescriptor descriptor;
    descriptor.flags = 8;
    uint32_t left = 0;
    bytes record = Fields(15, 2, 8).U32(4).Take(); // what follows is not its flags
    ASSERT_TRUE(ReadFrom(descriptor, record, &left));
    EXPECT_EQ(left, 4u);
    EXPECT_EQ(descriptor.flags, 8u);
    EXPECT_EQ(descriptor.numFeatures, 15);
}

TEST(SpectralFeatureDescriptor, RefusesARecordCutAnywhere) {
    for (const bytes& record : {Record(), Fields(15, 2, 8).Take()}) {
        for (size_t size = 0; size < record.size(); ++size) {
            CSpectralFeatureDescriptor descriptor;
            const bytes cut(record.begin(), record.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_FALSE(ReadFrom(descriptor, cut)) << size;
        }
    }
}

TEST(SpectralFeatureDescriptor, RefusesMoreWorkThanAnyModelAsksFor) {
    struct {
        float sampleRate;
        int32_t windowSize, windowOverlap;
        bool isRead;
    } const cases[] = {{16000.0f, 512, 352, true},
                       {16000.0f, 512, 504, true}, // every half millisecond
                       {48000.0f, 2048, 2016, true},
                       {192000.0f, 8192, 8064, true},
                       {16000.0f, 65536, 65535, false},
                       {16000.0f, 512, 505, false},
                       {16000.0f, 2, 1, false},
                       {192001.0f, 2048, 0, false},
                       {std::numeric_limits<float>::infinity(), 512, 352, false}};
    for (const auto& [sampleRate, windowSize, windowOverlap, isRead] : cases) {
        SCOPED_TRACE(windowOverlap);
        CSpectralFeatureDescriptor written;
        written.sampleRate = sampleRate;
        written.windowSize = windowSize;
        written.windowOverlap = windowOverlap;
        CSpectralFeatureDescriptor descriptor;
        EXPECT_EQ(ReadFrom(descriptor, Written(written)), isRead);
    }
    for (const int32_t numBands : {256, 257}) {
        CSpectralFeatureDescriptor written;
        ASSERT_EQ(written.bands.SetSize(numBands, 4), 1);
        CSpectralFeatureDescriptor descriptor;
        EXPECT_EQ(ReadFrom(descriptor, Written(written)), numBands == 256);
    }
}

TEST(SpectralFeatureDescriptor, RefusesCountsThatCannotBe) {
    const int32_t huge = std::numeric_limits<int32_t>::max();
    for (const bytes& record :
         {Record(2), Record(1, -1), Record(1, huge), Record(1, 65537), Record(1, 39, -1),
          Record(1, 39, huge), Record(1, 39, 1 << 28), Record(1, 39, 3), Record(1, 39, 2, -1)}) {
        CSpectralFeatureDescriptor descriptor;
        EXPECT_FALSE(ReadFrom(descriptor, record));
    }
}

TEST(SpectralFeatureDescriptor, ShowsItsValuesAsText) {
    CSpectralFeatureDescriptor descriptor;
    ASSERT_TRUE(ReadFrom(descriptor, Record()));
    std::ostringstream text;
    descriptor.WriteText(text);
    EXPECT_EQ(text.str(), "feat\n"
                          "samplerate: 8000\n"
                          "preemphasis: 0.97\n"
                          "windowSize: 256\n"
                          "windowOverlap: 96\n"
                          "numFreatures: 39\n"
                          "numBands: 2\n"
                          "\t100 200 300\n"
                          "\t200 300.5 400\n"
                          "num_cep: 12\n"
                          "flags: 4\n");
}

} // namespace
} // namespace tessarin
