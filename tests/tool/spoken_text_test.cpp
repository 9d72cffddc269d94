#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

struct token {
    std::string text;
    int offset;
    int length;
    std::string phonemes;
    bool operator==(const token&) const = default;
};

void PrintTo(const token& each, std::ostream* out) {
    *out << each.text << "@" << each.offset << "+" << each.length << "=" << each.phonemes;
}

std::vector<token> Transcribe(const std::string& bytes, const std::string& options = "") {
    const tool_run run = RunTool("transcribe - --literal --format json " + options, bytes);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    const json result = json::parse(run.output);
    std::vector<token> tokens;
    for (const json& each : result["tokens"]) {
        tokens.push_back({each["text"], each["text_offset"], each["text_length"],
                          each["phonemes"].empty() ? "" : each["phonemes"][0][0]});
    }
    return tokens;
}

std::string Utf16(const std::u16string& text, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : text) {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>(unit >> 8);
        bytes += bigEndian ? std::string{high, low} : std::string{low, high};
    }
    return bytes;
}

TEST(SpokenText, IsTheSameInEveryEncodingAndLeadsBackToTheUsersBytes) {
    const std::u16string wide = u"Zoë “is” in";
    const std::string utf8 = "Zoë “is” in";
    const auto expect = [](const std::vector<token>& found, int mark, std::vector<int> offsets,
                           std::vector<int> lengths) {
        ASSERT_EQ(found.size(), 3u);
        const std::string texts[] = {"Zoë", "“is”", "in"};
        const std::string phonemes[] = {"zOWIY", "IHz", "IHn"};
        for (size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(found[i], (token{texts[i], mark + offsets[i], lengths[i], phonemes[i]}));
        }
    };
    expect(Transcribe("Zo\xEB \x93is\x94 in"), 0, {0, 4, 9}, {3, 4, 2});
    expect(Transcribe("Zo\xEB \x93is\x94 in", "--encoding local"), 0, {0, 4, 9}, {3, 4, 2});
    expect(Transcribe(utf8), 0, {0, 5, 14}, {4, 8, 2});
    expect(Transcribe("\xEF\xBB\xBF" + utf8), 3, {0, 5, 14}, {4, 8, 2});
    for (const bool bigEndian : {false, true}) {
        SCOPED_TRACE(bigEndian);
        expect(Transcribe(Utf16(wide, bigEndian)), 0, {0, 8, 18}, {6, 8, 4});
        expect(Transcribe(Utf16(u"\uFEFF" + wide, bigEndian)), 2, {0, 8, 18}, {6, 8, 4});
    }
    expect(Transcribe(Utf16(wide, false), "--encoding utf-16"), 0, {0, 8, 18}, {6, 8, 4});
}

TEST(SpokenText, ReadsWhatTheCodePageLacksAsWhatIsNearest) {
    EXPECT_THAT(Transcribe("cafe\u0301 \uFB01ne"),
                ElementsAre(token{"cafe\u0301", 0, 6, "kAHfEY"}, token{"\uFB01ne", 7, 5, "fAYn"}));
    EXPECT_EQ(Transcribe("s\u0142ow").at(0).phonemes, Transcribe("slow").at(0).phonemes);
    EXPECT_EQ(Transcribe("one\u2011way").size(), Transcribe("one-way").size());

    const tool_run run = RunTool("transcribe - --literal", "so 😀 it ж is");
    EXPECT_THAT(run.errors, HasSubstr("2 characters that cannot be read"));
    EXPECT_THAT(run.output, HasSubstr("\n8\t10\tword\tit\t"));
}

TEST(SpokenText, RefusesWhatIsNoText) {
    EXPECT_THAT(RunTool("transcribe -", std::string("a\0b\0\1\2\3\4\5\6\7\1\2\3\4", 16)).errors,
                HasSubstr("is not a plain text"));
    EXPECT_THAT(RunTool("transcribe - --encoding local", std::string("a\0b", 3)).errors,
                HasSubstr("is not a plain text"));
    const tool_run invalid = RunTool("transcribe - --encoding utf-8", "caf\xE9");
    EXPECT_EQ(invalid.exitCode, 2);
    EXPECT_THAT(invalid.errors, HasSubstr("(code 20)"));
    EXPECT_THAT(RunTool("transcribe -", "\xFF\xFE\x01\xD8").errors, HasSubstr("(code 20)"));
    EXPECT_EQ(RunTool("transcribe - --encoding latin", "a").exitCode, 1);
}

} // namespace
