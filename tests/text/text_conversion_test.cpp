#include "text/text_conversion.h"

#include <clocale>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utf8.h>

#include "base/text_copy.h"
#include "tessarin/transcriber.h"
#include "text/code_pages.h"

namespace tessarin::test {
namespace {

using converted_ptr = counted_ptr<IQuibConvertedText>;

TranscriberInfo InfoWith(uint32_t codePage, const char* locale = "") {
    TranscriberInfo info = {};
    info.code_page = codePage;
    CopyText(info.locale, locale);
    return info;
}

converted_ptr Convert(std::string text, uint32_t encoding, uint32_t codePage = 1252) {
    const TranscriberInfo info = InfoWith(codePage);
    return ConvertText(&info, text.data(), static_cast<int32_t>(text.size()), encoding);
}

std::string Utf16Bytes(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

TEST(TextConversion, TheSameTextInEachEncodingGivesTheSameForms) {
    const std::string narrow = "caf\xE9 \x93no\x94 \x80";
    const std::u16string wide = u"café “no” €";
    const std::string utf8 = "café “no” €";
    const struct {
        std::string text;
        uint32_t encoding;
        uint32_t reported;
    } cases[] = {
        {narrow, kLocalText, kLocalText},
        {narrow, 0, kLocalText},
        {narrow, 77, kLocalText},
        {utf8, kUtf8Text, kUtf8Text},
        {"\xEF\xBB\xBF" + utf8, kUtf8Text, kUtf8Text},
        {"\xEF\xBB\xBF" + utf8, kLocalText, kUtf8Text},
        {Utf16Bytes(wide), kUtf16Text, kUtf16Text},
        {Utf16Bytes(u"\uFEFF" + wide), kUtf16Text, kUtf16Text},
        {Utf16Bytes(u"\uFEFF" + wide), kUtf8Text, kUtf16Text},
        {Utf16Bytes(wide) + "x", kUtf16Text, kUtf16Text}, // half a unit at the end
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::PrintToString(each.text) + " " + std::to_string(each.encoding));
        const converted_ptr converted = Convert(each.text, each.encoding);
        ASSERT_TRUE(converted);
        EXPECT_EQ(converted->GetText(), narrow);
        EXPECT_EQ(converted->GetWideText(), wide);
        EXPECT_EQ(converted->GetUtf8Text(), utf8);
        EXPECT_EQ(converted->GetEncoding(), each.reported);
    }
}

TEST(TextConversion, EmptyTextsGiveEmptyForms) {
    for (const uint32_t encoding : {kLocalText, kUtf16Text, kUtf8Text}) {
        const converted_ptr converted = Convert("", encoding);
        ASSERT_TRUE(converted);
        EXPECT_STREQ(converted->GetText(), "");
        EXPECT_STREQ(converted->GetUtf8Text(), "");
        EXPECT_EQ(converted->GetWideText(), std::u16string());
    }
    EXPECT_STREQ(ConvertText(nullptr, nullptr, 5, kLocalText)->GetText(), "");
    char text[] = "abc";
    EXPECT_STREQ(ConvertText(nullptr, text, -1, kLocalText)->GetText(), "");
}

TEST(TextConversion, ReadsNoByteBehindTheLength) {
    std::string text = "hello";
    EXPECT_STREQ(ConvertText(nullptr, text.data(), 2, kLocalText)->GetText(), "he");
    const std::string cut(1, '\xEF');
    for (const uint32_t encoding : {kLocalText, kUtf16Text}) {
        std::vector<char> exact(cut.begin(), cut.end()); // the sanitizer watches its end
        EXPECT_TRUE(ConvertText(nullptr, exact.data(), 1, encoding));
    }
}

TEST(TextConversion, FormsEndAtAZero) {
    const converted_ptr local = Convert(std::string("ab\0cd", 5), kLocalText);
    EXPECT_EQ(local->GetWideText(), std::u16string(u"ab"));
    EXPECT_STREQ(Convert(std::string("ab\0cd", 5), kUtf8Text)->GetText(), "ab");
}

TEST(TextConversion, InvalidTextThrows) {
    for (const char* text : {"\xC3(", "\xFF", "\xC0\x80", "\xED\xA0\x80"}) {
        SCOPED_TRACE(testing::PrintToString(text));
        EXPECT_THROW(Convert(text, kUtf8Text), utf8::exception);
    }
    EXPECT_THROW(Convert("\xE9t\xE9", kUtf8Text), utf8::invalid_utf8);
    EXPECT_THROW(Convert("ab\xE2\x82", kUtf8Text), utf8::exception);
    EXPECT_THROW(Convert(Utf16Bytes(u"a\xD83D"), kUtf16Text), utf8::invalid_utf16);
    EXPECT_THROW(Convert(Utf16Bytes(u"\xDE00 b"), kUtf16Text), utf8::invalid_utf16);
}

TEST(TextConversion, CharactersThatTheCodePageLacksGiveNothing) {
    EXPECT_FALSE(Convert("smile \xF0\x9F\x98\x80", kUtf8Text));
    EXPECT_FALSE(Convert("Привет", kUtf8Text));
    EXPECT_FALSE(Convert(Utf16Bytes(u"Łódź"), kUtf16Text));
    EXPECT_STREQ(Convert("Привет", kUtf8Text, 1251)->GetText(), "\xCF\xF0\xE8\xE2\xE5\xF2");
    EXPECT_STREQ(Convert("Łódź", kUtf8Text, 1250)->GetText(), "\xA3\xF3"
                                                              "d\x9F");
    // A page that we have no table of counts as 1252.
    EXPECT_STREQ(Convert("é", kUtf8Text, 65001)->GetText(), "\xE9");
}

TEST(TextConversion, EachByteOfACodePageComesBack) {
    std::string all;
    for (int byte = 1; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    for (const uint32_t number : {1250u, 1251u, 1252u}) {
        SCOPED_TRACE(number);
        const code_page page = code_page::Find(number);
        EXPECT_EQ(page.ToNarrow(page.ToWide(all)), all);
    }
    EXPECT_EQ(code_page::Find(1252).ToWide("\x80\x81\x8D\x8F\x90\x9D\xFF"),
              u"\u20AC\u0081\u008D\u008F\u0090\u009D\u00FF");
}

// A byte-swapped mark is not a mark: such text is read as the host calls it.
TEST(TextConversion, ABigEndianMarkIsPartOfTheText) {
    const converted_ptr converted = Convert("\xFE\xFFhi", kLocalText);
    EXPECT_STREQ(converted->GetText(), "\xFE\xFFhi");
    EXPECT_EQ(converted->GetEncoding(), kLocalText);
}

TEST(TextConversion, MendsLineEndsInTheCallersBuffer) {
    std::string text("a\0\r\n\n\r", 6);
    const converted_ptr converted =
        ConvertText(nullptr, text.data(), static_cast<int32_t>(text.size()), kUtf16Text);
    EXPECT_EQ(text, std::string("a\0\r\0\n\r", 6));
    EXPECT_FALSE(converted); // U+0D0A is in no code page, so what was left alone is seen here

    std::string marked("\xEF\xBB\xBF\r\nab", 7);
    const converted_ptr asUtf8 =
        ConvertText(nullptr, marked.data(), static_cast<int32_t>(marked.size()), kUtf16Text);
    EXPECT_EQ(marked, std::string("\xEF\xBB\xBF\r\0ab", 7));
    EXPECT_EQ(asUtf8->GetEncoding(), kUtf8Text);
    EXPECT_EQ(asUtf8->GetWideText(), std::u16string(u"\r"));
}

TEST(TextConversion, TheLocaleOfARecordIsSetForTheCallAlone) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    std::string text = "h\xC3\xA9";
    const auto length = static_cast<int32_t>(text.size());
    const TranscriberInfo unknown = InfoWith(1252, "no such locale");
    EXPECT_STREQ(ConvertText(&unknown, text.data(), length, kUtf8Text)->GetText(), "h\xE9");
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);

    // The C library knows this one on every system of this family.
    const TranscriberInfo known = InfoWith(1252, "C.UTF-8");
    if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) {
        GTEST_SKIP() << "the system has no locale C.UTF-8";
    }
    std::setlocale(LC_ALL, before.c_str());
    const converted_ptr converted = ConvertText(&known, text.data(), length, kUtf8Text);
    EXPECT_EQ(converted->GetText(), text);
    EXPECT_EQ(converted->GetWideText(), std::u16string(u"hé"));
    const converted_ptr local = ConvertText(&known, text.data(), length, kLocalText);
    EXPECT_EQ(local->GetWideText(), std::u16string(u"hé"));
    std::string broken = "\xE9";
    EXPECT_FALSE(ConvertText(&known, broken.data(), 1, kLocalText));
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);

    // Hosts that guard the call find the locale of the conversion.
    EXPECT_THROW(ConvertText(&known, broken.data(), 1, kUtf8Text), utf8::exception);
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C.UTF-8");
    std::setlocale(LC_ALL, before.c_str());
}

TEST(TextConversion, CountsReferences) {
    IQuibConvertedText* const converted = Convert("a", kUtf8Text).release();
    EXPECT_EQ(converted->AddRef(), 2);
    EXPECT_EQ(converted->Release(), 1);
    EXPECT_EQ(converted->Release(), 0);
}

} // namespace
} // namespace tessarin::test
