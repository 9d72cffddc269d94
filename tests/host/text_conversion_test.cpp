#include <exception>
#include <string>

#include <gtest/gtest.h>

#include "tessarin/tessarin.h"

namespace {

TEST(TextConversion, MakesWhatATranscriberReads) {
    tessarin::IVisemixTranscriber* transcriber = nullptr;
    ASSERT_EQ(CreateDefaultTranscriber(nullptr, 0, &transcriber), 0);
    std::string text = "\xEF\xBB\xBF“a”";
    tessarin::IQuibConvertedText* converted = ConvertTextForAlignment(
        transcriber, text.data(), static_cast<int32_t>(text.size()), tessarin::kLocalText);
    ASSERT_NE(converted, nullptr);
    EXPECT_STREQ(converted->GetText(), "\x93"
                                       "a\x94");
    EXPECT_STREQ(converted->GetUtf8Text(), "“a”");
    transcriber->Transcribe(converted);
    uint32_t count = 0;
    const tessarin::CTxMarker* markers = transcriber->GetOutputMarkers(&count);
    ASSERT_GE(count, 1u);
    EXPECT_STREQ(markers[0].groups[0].alternatives[0], "EY");
    EXPECT_EQ(converted->Release(), 0);
    EXPECT_EQ(ConvertTextForAlignment(nullptr, text.data(), 1, tessarin::kLocalText), nullptr);
    DestroyTranscriber(transcriber);
}

TEST(TextConversion, ThrowsWhatIsNotValidThroughTheLibrary) {
    std::string text = "\xFF";
    EXPECT_THROW(ConvertTextForAlignment2(nullptr, text.data(), 1, tessarin::kUtf8Text),
                 std::exception);
}

} // namespace
