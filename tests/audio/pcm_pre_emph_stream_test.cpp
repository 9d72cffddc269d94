#include "audio/pcm_pre_emph_stream.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "memory_stream.h"

namespace tessarin {
namespace {

using test::Format;
using test::Int16Bytes;
using test::MemoryStream;
using test::MonoStream;
using test::ReadAllFloats;
using testing::ElementsAre;

TEST(PcmPreEmphStream, FloatReadFiltersOnceAndStartsFromSilence) {
    const auto source = MonoStream(16000, {8, 8, 0, -4});
    CPCMPreEmphStream stage; // embedded: never deletes itself
    ASSERT_EQ(stage.Instantiate(source.get(), 1, 0.5f), 0);
    EXPECT_STREQ(stage.GetStreamName(), "PreEmph");
    EXPECT_EQ(stage.GetNumSamples(), 4u);
    for (const uint32_t blockSize : {1u, 3u, 4u}) {
        SCOPED_TRACE(blockSize);
        ASSERT_EQ(stage.Start(), 0);
        EXPECT_THAT(ReadAllFloats(stage, blockSize), ElementsAre(8, 4, -4, -4));
    }
}

TEST(PcmPreEmphStream, BlockReadFiltersTwice) {
    const auto source = MonoStream(16000, {10000, 0, 0, 30000});
    CPCMPreEmphStream stage;
    ASSERT_EQ(stage.Instantiate(source.get(), 1, 0.97f), 0);
    stage.Start();
    std::vector<int16_t> samples(3);
    uint32_t frames = 3;
    ASSERT_EQ(stage.ReadBlock(samples.data(), &frames), 0);
    EXPECT_THAT(samples, ElementsAre(10000, -19400, 9409));
    // The second filter keeps its own last input: the once filtered 0.
    frames = 1;
    ASSERT_EQ(stage.ReadBlock(samples.data(), &frames), 0);
    EXPECT_EQ(samples[0], 900); // 30000 - 0.97 * 30000, of the value that is its own predecessor
}

TEST(PcmPreEmphStream, BlockReadHasRoomForTwoChannels) {
    auto stereo = counted_ptr<MemoryStream>::Adopt(
        new MemoryStream(Format(16000, 16, 2), Int16Bytes({1, 2, 3, 4})));
    MemoryStream three(Format(16000, 16, 3), {});
    CPCMPreEmphStream stage;
    ASSERT_EQ(stage.Instantiate(stereo.get(), 0, 0.0f), 0);
    std::vector<int16_t> samples(4);
    uint32_t frames = 2;
    EXPECT_EQ(stage.ReadBlock(samples.data(), &frames), 0);
    EXPECT_THAT(samples, ElementsAre(1, 2, 0, 0));

    EXPECT_EQ(stage.SetSourceStream(&three), 2);
    EXPECT_EQ(stage.GetSourceStream(), stereo.get());
    EXPECT_EQ(stage.Instantiate(&three, 0, 0.0f), 2);
    EXPECT_EQ(stage.Instantiate(&three, 3, 0.0f), 0);
    EXPECT_EQ(stage.Instantiate(nullptr, 1, 0.0f), 2);
}

TEST(PcmPreEmphStream, HoldsOneReferenceToItsSource) {
    bool firstIsGone = false;
    bool secondIsGone = false;
    auto first = MonoStream(16000, {1});
    auto second = MonoStream(16000, {2});
    first->isGone = &firstIsGone;
    second->isGone = &secondIsGone;
    auto* stage = new CPCMPreEmphStream;
    stage->Instantiate(first.get(), 1, 0.5f);
    stage->Instantiate(first.get(), 1, 0.5f); // the same source again
    first.reset();
    EXPECT_FALSE(firstIsGone);
    EXPECT_EQ(stage->SetSourceStream(second.get()), 0);
    EXPECT_TRUE(firstIsGone);
    EXPECT_EQ(stage->GetSourceStream(), second.get());
    second.reset();
    EXPECT_FALSE(secondIsGone);
    EXPECT_EQ(stage->Release(), 0);
    EXPECT_TRUE(secondIsGone);
}

TEST(PcmPreEmphStream, PassesFailuresOn) {
    const auto source = MonoStream(16000, {1, 2, 3});
    CPCMPreEmphStream stage;
    std::vector<float> floats(4);
    uint32_t frames = 3;
    EXPECT_EQ(stage.ReadChannelFloat(floats.data(), &frames, 1), 2); // no source yet
    EXPECT_EQ(frames, 0u);
    stage.Instantiate(source.get(), 1, 0.5f);
    source->readsUntilFailure = 0;
    frames = 3;
    EXPECT_EQ(stage.ReadBlock(floats.data(), &frames), 12);
    EXPECT_EQ(frames, 0u);
    frames = 0xFFFFFFFF;
    EXPECT_EQ(stage.ReadBlock(floats.data(), &frames), 1);
    EXPECT_EQ(frames, 0u);
}

} // namespace
} // namespace tessarin
