#pragma once

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tessarin/owned.h"

/// What the tests of the flat interface share: the model, the language and the demo recording.
namespace tessarin::test {

inline constexpr const char* kData = TESSARIN_SOURCE_DIR "/data";
inline constexpr const char* kDemo = TESSARIN_SOURCE_DIR "/data/demo/echo-test";

inline std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The times, labels and texts of a result, to compare.
inline std::vector<std::string> Lines(const tessarin_result* result, int32_t shiftMs = 0) {
    std::vector<std::string> lines;
    const auto add = [&](int32_t start, int32_t end, const char* text) {
        lines.push_back(std::to_string(start + shiftMs) + " " + std::to_string(end + shiftMs) +
                        " " + text);
    };
    uint32_t count = 0;
    const tessarin_phoneme* phonemes = tessarin_get_phonemes(result, &count);
    for (uint32_t i = 0; i < count; ++i) {
        add(phonemes[i].start_ms, phonemes[i].end_ms, phonemes[i].label);
    }
    const tessarin_span* words = tessarin_get_words(result, &count);
    for (uint32_t i = 0; i < count; ++i) {
        add(words[i].start_ms, words[i].end_ms, words[i].text);
    }
    return lines;
}

class FlatInterface : public testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_EQ(tessarin_create_model_from_file((std::string(kData) + "/en-us.model").c_str(),
                                                  Out(model)),
                  TESSARIN_OK);
        ASSERT_EQ(tessarin_create_language_from_file(
                      (std::string(kData) + "/en-us.lexicon").c_str(), Out(language)),
                  TESSARIN_OK);
        ASSERT_EQ(
            tessarin_create_audio_from_file((std::string(kDemo) + ".wav").c_str(), 1, Out(audio)),
            TESSARIN_OK);
        text = Content(std::string(kDemo) + ".txt");
    }
    static void TearDownTestSuite() {
        audio.reset();
        language.reset();
        model.reset();
    }

    static flat::result_owner Align(const tessarin_search_options* options = nullptr,
                                    const std::string& said = text) {
        flat::result_owner result;
        EXPECT_EQ(tessarin_create_alignment(model.get(), language.get(), audio.get(), said.c_str(),
                                            options, nullptr, Out(result)),
                  TESSARIN_OK);
        return result;
    }

    static inline flat::model_owner model;
    static inline flat::language_owner language;
    static inline flat::audio_owner audio;
    static inline std::string text;
};

} // namespace tessarin::test
