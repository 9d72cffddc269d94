#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "c_api/flat_fixture.h"
#include "tessarin/owned.h"

namespace {

using namespace tessarin::flat;
using namespace tessarin::test;
using tessarin::Out;
using testing::ElementsAre;

class FlatTexts : public FlatInterface {};

TEST_F(FlatTexts, TokensStandWhereTheyStandInUtf8) {
    transcript_owner transcript;
    ASSERT_EQ(
        tessarin_create_transcript(language.get(), "\xEF\xBB\xBFZoë “is” Łódź", Out(transcript)),
        TESSARIN_OK);
    uint32_t count = 0;
    const tessarin_token* tokens = tessarin_get_transcript_tokens(transcript.get(), &count);
    std::vector<std::string> found;
    for (uint32_t i = 0; i < count; ++i) {
        if (tokens[i].kind == TESSARIN_WORD) {
            found.push_back(std::to_string(tokens[i].text_offset) + "+" +
                            std::to_string(tokens[i].text_length) + " " + tokens[i].text);
        }
    }
    EXPECT_THAT(found, ElementsAre("3+4 Zoë", "11+2 is", "17+7 Łódź"));
    EXPECT_STREQ(tokens[0].phonemes, "zOWIY");
    EXPECT_EQ(tessarin_create_transcript(language.get(), "caf\xE9", Out(transcript)),
              TESSARIN_INVALID_UTF8);
    EXPECT_EQ(transcript, nullptr);
}

/// The tokens of a script as their kind, place and spelling.
std::vector<std::string> Tokens(const tessarin_transcript* transcript) {
    std::vector<std::string> lines;
    uint32_t count = 0;
    const tessarin_token* tokens = tessarin_get_transcript_tokens(transcript, &count);
    for (uint32_t i = 0; i < count; ++i) {
        lines.push_back(std::to_string(tokens[i].kind) + " " +
                        std::to_string(tokens[i].text_offset) + " " + tokens[i].text);
    }
    return lines;
}

TEST_F(FlatTexts, AScriptIsReadUnlessItIsLiteral) {
    const char* const written = "JOE: In 1905 (beat) “Zoë”";
    tessarin_script_options options{};
    options.size = sizeof options;
    tessarin_transcript* transcript = nullptr;
    ASSERT_EQ(tessarin_create_script_transcript(language.get(), written, &options, &transcript),
              TESSARIN_OK);
    const transcript_owner owner(transcript);
    EXPECT_THAT(Tokens(transcript),
                ElementsAre("6 0 JOE:", "1 5 In", "1 8 1905", "7 13 (beat)", "1 23 Zoë"));

    options.speaker = "MARY";
    ASSERT_EQ(tessarin_create_script_transcript(language.get(), written, &options, &transcript),
              TESSARIN_OK);
    EXPECT_THAT(Tokens(transcript_owner(transcript).get()), ElementsAre());

    options.flags = TESSARIN_SCRIPT_LITERAL;
    ASSERT_EQ(tessarin_create_script_transcript(language.get(), written, &options, &transcript),
              TESSARIN_OK);
    EXPECT_EQ(Tokens(transcript_owner(transcript).get()).front(), "1 0 JOE");

    const auto codeOf = [&](uint32_t size, uint32_t flags, uint32_t format, const char* table) {
        const tessarin_script_options bad{size, flags, format, nullptr, table};
        return tessarin_create_script_transcript(language.get(), written, &bad, &transcript);
    };
    EXPECT_EQ(codeOf(sizeof options, 0, 0, "[units]\nlg\tleague\n"), TESSARIN_OK);
    tessarin_free_transcript(transcript);
    EXPECT_EQ(codeOf(8, 0, 0, nullptr), TESSARIN_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf(sizeof options, 8, 0, nullptr), TESSARIN_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf(sizeof options, 0, 6, nullptr), TESSARIN_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf(sizeof options, 0, 0, "[of no kind]\n"), TESSARIN_INVALID_FILE);
}

TEST_F(FlatTexts, AnAlignedScriptHasItsWordsAndEventsAtTheirPlaces) {
    std::string script = "ALLISON (V.O.): " + text;
    script.replace(script.find("everything"), 10, "EVERYTHING");
    const result_owner result = Align(nullptr, script);
    EXPECT_EQ(Lines(result.get()).size(), Lines(Align().get()).size());
    uint32_t count = 0;
    const tessarin_span* events = tessarin_get_events(result.get(), &count);
    ASSERT_GT(count, 0u);
    EXPECT_EQ(events[0].kind, TESSARIN_SPEAKER);
    EXPECT_STREQ(events[0].text, "ALLISON (V.O.):");
    const tessarin_span* words = tessarin_get_words(result.get(), &count);
    for (uint32_t i = 0; i < count; ++i) {
        const auto offset = static_cast<size_t>(words[i].text_offset);
        EXPECT_EQ(script.substr(offset, static_cast<size_t>(words[i].text_length)), words[i].text);
        EXPECT_EQ(tessarin_get_word_flags(result.get(), i),
                  words[i].text == std::string_view("EVERYTHING") ? 1u : 0u);
    }
    EXPECT_EQ(tessarin_get_word_flags(result.get(), count), 0u);
    EXPECT_EQ(tessarin_get_word_flags(nullptr, 0), 0u);
}

TEST_F(FlatTexts, AReadingIsTheOneThatWasSaid) {
    std::string script = text;
    script.replace(script.find("echo"), 4, "0");
    // Once the usual way and once the other one is said.
    for (const char* const table : {"[cardinals]\n0\techo\n[words]\noh\tumbrella\n",
                                    "[cardinals]\n0\tumbrella\n[words]\noh\techo\n"}) {
        tessarin_script_options how{sizeof how, 0, 0, nullptr, table};
        tessarin_search_options options{};
        options.size = sizeof options;
        options.script = &how;
        const result_owner result = Align(&options, script);
        EXPECT_EQ(Lines(result.get()).size(), Lines(Align().get()).size());
        uint32_t count = 0;
        const tessarin_span* words = tessarin_get_words(result.get(), &count);
        for (uint32_t i = 0; i < count; ++i) {
            EXPECT_STREQ(tessarin_get_word_reading(result.get(), i),
                         words[i].text == std::string_view("0") ? "echo" : "");
        }
        EXPECT_STREQ(tessarin_get_word_reading(result.get(), count), "");
        how.flags = TESSARIN_SCRIPT_ONE_READING;
        EXPECT_STREQ(tessarin_get_word_reading(Align(&options, script).get(), 5), "");

        tessarin_script* made = nullptr;
        ASSERT_EQ(tessarin_create_script(language.get(), "0 is 42", nullptr, &made), TESSARIN_OK);
        const char* const* const readings = tessarin_get_script_readings(made, 0, &count);
        ASSERT_EQ(count, 1u);
        EXPECT_STREQ(readings[0], "oh");
        EXPECT_EQ(tessarin_get_script_readings(made, 2, &count), nullptr);
        tessarin_free_script(made);
    }
}

TEST_F(FlatTexts, ATableIsCheckedLineByLine) {
    char reason[24] = "left";
    EXPECT_EQ(tessarin_check_script_table("[units]\nlg\tleague\n", reason, sizeof reason),
              TESSARIN_OK);
    EXPECT_STREQ(reason, "");
    EXPECT_EQ(tessarin_check_script_table("[units]\nlg\n", reason, sizeof reason),
              TESSARIN_INVALID_FILE);
    EXPECT_STREQ(reason, "line 2: an entry of thi"); // as much as there is room for
    EXPECT_EQ(tessarin_check_script_table("x", nullptr, 0), TESSARIN_INVALID_FILE);
    EXPECT_EQ(tessarin_check_script_table(nullptr, nullptr, 0), TESSARIN_INVALID_ARGUMENT);
}

TEST_F(FlatTexts, AScriptReportsWhatItsPartsStandFor) {
    tessarin_script* script = nullptr;
    const char* const written = "1\n00:00:01,000 --> 00:00:02,000\nPaid $5 \U0001F644 (sighs)";
    ASSERT_EQ(tessarin_create_script(language.get(), written, nullptr, &script), TESSARIN_OK);
    const std::unique_ptr<tessarin_script, tessarin::destroyer<tessarin_free_script>> owner(script);
    uint32_t count = 0;
    const tessarin_script_part* words = tessarin_get_script_words(script, &count);
    ASSERT_EQ(count, 2u);
    EXPECT_STREQ(words[1].spoken, "five dollars");
    EXPECT_EQ(words[1].text_offset, 37);
    EXPECT_EQ(words[1].text_length, 2);
    EXPECT_EQ(tessarin_get_script_events(script, &count)[0].kind, TESSARIN_DIRECTION);
    EXPECT_EQ(tessarin_get_script_unsaid(script, &count)[0].text_length, 4);
    const tessarin_script_part* cues = tessarin_get_script_cues(script, &count);
    ASSERT_EQ(count, 1u);
    EXPECT_EQ(cues[0].start_ms, 1000);
    EXPECT_EQ(cues[0].end_ms, 2000);

    const std::string said = tessarin_get_script_text(script);
    const auto stand = static_cast<int32_t>(said.find('_'));
    tessarin_script_part part{};
    ASSERT_EQ(tessarin_find_script_part(script, stand, 1, &part), TESSARIN_OK);
    EXPECT_EQ(part.text_offset, 37);
    EXPECT_EQ(tessarin_find_script_part(script, 0, static_cast<int32_t>(said.size()) + 1, &part),
              TESSARIN_OUT_OF_RANGE);
    EXPECT_EQ(tessarin_create_script(nullptr, "caf\xE9", nullptr, &script), TESSARIN_INVALID_UTF8);
}

TEST_F(FlatTexts, TheNumbersOfAnotherLanguageAreNotSaidInEnglish) {
    std::string lexicon = Content(std::string(kData) + "/en-us.lexicon");
    lexicon[lexicon.find('\0', 6) + 1] = 7; // the language, after the name
    language_owner other;
    ASSERT_EQ(tessarin_create_language_from_memory(
                  lexicon.data(), static_cast<uint32_t>(lexicon.size()), Out(other)),
              TESSARIN_OK);
    tessarin_script* script = nullptr;
    EXPECT_EQ(tessarin_create_script(other.get(), "5 km", nullptr, &script),
              TESSARIN_NOT_AVAILABLE);
    EXPECT_EQ(script, nullptr);
    const tessarin_script_options own{sizeof own, 0, 0, nullptr, ""};
    ASSERT_EQ(tessarin_create_script(other.get(), "5 km", &own, &script), TESSARIN_OK);
    tessarin_free_script(script);
}

} // namespace
