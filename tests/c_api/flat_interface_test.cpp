#include <cmath>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/riff_builder.h"
#include "support/temp_file.h"
#include "tessarin/tessarin.h"
#include "tessarin/tessarin_c.h"

namespace {

using tessarin::test::TempFile;
using testing::ElementsAre;

constexpr const char* kData = TESSARIN_SOURCE_DIR "/data";
constexpr const char* kDemo = TESSARIN_SOURCE_DIR "/data/demo/echo-test";

template <auto Free> struct freer {
    template <class T> void operator()(T* object) const { Free(object); }
};
using model_handle = std::unique_ptr<tessarin_model, freer<tessarin_free_model>>;
using language_handle = std::unique_ptr<tessarin_language, freer<tessarin_free_language>>;
using audio_handle = std::unique_ptr<tessarin_audio, freer<tessarin_free_audio>>;
using result_handle = std::unique_ptr<tessarin_result, freer<tessarin_free_result>>;
using track_handle = std::unique_ptr<tessarin_track, freer<tessarin_free_track>>;
using transcript_handle = std::unique_ptr<tessarin_transcript, freer<tessarin_free_transcript>>;

std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The times, labels and texts of a result, to compare.
std::vector<std::string> Lines(const tessarin_result* result, int32_t shiftMs = 0) {
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
        tessarin_model* openedModel = nullptr;
        tessarin_language* openedLanguage = nullptr;
        tessarin_audio* openedAudio = nullptr;
        ASSERT_EQ(tessarin_create_model_from_file((std::string(kData) + "/en-us.model").c_str(),
                                                  &openedModel),
                  TESSARIN_OK);
        ASSERT_EQ(tessarin_create_language_from_file(
                      (std::string(kData) + "/en-us.lexicon").c_str(), &openedLanguage),
                  TESSARIN_OK);
        ASSERT_EQ(
            tessarin_create_audio_from_file((std::string(kDemo) + ".wav").c_str(), 1, &openedAudio),
            TESSARIN_OK);
        model.reset(openedModel);
        language.reset(openedLanguage);
        audio.reset(openedAudio);
        text = Content(std::string(kDemo) + ".txt");
    }
    static void TearDownTestSuite() {
        audio.reset();
        language.reset();
        model.reset();
    }

    static result_handle Align(const tessarin_search_options* options = nullptr,
                               const std::string& said = text) {
        tessarin_result* result = nullptr;
        EXPECT_EQ(tessarin_create_alignment(model.get(), language.get(), audio.get(), said.c_str(),
                                            options, nullptr, &result),
                  TESSARIN_OK);
        return result_handle(result);
    }

    static inline model_handle model;
    static inline language_handle language;
    static inline audio_handle audio;
    static inline std::string text;
};

TEST_F(FlatInterface, FindsWhatTheClassesFind) {
    const std::string image = Content(std::string(kData) + "/en-us.model");
    tessarin::CAccousticHMM* hmm = nullptr;
    tessarin::IVisemixTranscriber* transcriber = nullptr;
    tessarin::IObservationStream* stream = nullptr;
    tessarin::ISyncResultsCollection* markers = nullptr;
    tessarin::ITextBasedPhnRecognizer* aligner = nullptr;
    tessarin::ITextlessPhnRecognizer* recognizer = nullptr;
    const std::string path = std::string(kDemo) + ".wav";
    ASSERT_EQ(CreateAccHMM(image.data(), static_cast<uint32_t>(image.size()), nullptr, &hmm), 0);
    ASSERT_EQ(CreateTranscriberFromLexiconFile((std::string(kData) + "/en-us.lexicon").c_str(),
                                               &transcriber),
              0);
    ASSERT_EQ(CreateObservationStreamFromAudioFile(path.c_str(), hmm, &stream), 0);
    ASSERT_EQ(CreateSyncResultsCollection(tessarin::kPostProcessScores, &markers), 0);
    CreateTextBasedRecognizer(&aligner);
    CreateTextlessPhnRecognizer(&recognizer);
    ASSERT_EQ(aligner->RecognizePhonemes(stream, hmm, text.c_str(), transcriber, nullptr, markers),
              0);

    const auto expectSame = [&](const tessarin_result* result) {
        std::vector<std::string> phonemes;
        std::vector<std::string> words;
        for (const tessarin::CSyncMarker* m = markers->begin(); m != markers->end(); ++m) {
            const std::string times = std::to_string(m->start) + " " + std::to_string(m->end) + " ";
            if (m->type == tessarin::kPhonemeMarker) {
                phonemes.push_back(times + m->label);
            } else if (m->type == tessarin::kWordMarker) {
                words.push_back(times + m->text);
            }
        }
        phonemes.insert(phonemes.end(), words.begin(), words.end());
        ASSERT_GT(phonemes.size(), 100u);
        EXPECT_EQ(Lines(result), phonemes);
    };
    expectSame(Align().get());

    DestroyObservationStream(stream);
    ASSERT_EQ(CreateObservationStreamFromAudioFile(path.c_str(), hmm, &stream), 0);
    ASSERT_EQ(recognizer->RecognizePhonemes(stream, hmm, nullptr, markers), 0);
    tessarin_result* heard = nullptr;
    ASSERT_EQ(tessarin_create_recognition(model.get(), audio.get(), nullptr, nullptr, &heard),
              TESSARIN_OK);
    const result_handle owner(heard);
    expectSame(heard);

    DestroyTextlessPhnRecognizer(recognizer);
    DestroyTextBasedRecognizer(aligner);
    DestroySyncResultsCollection(markers);
    DestroyObservationStream(stream);
    DestroyTranscriber(transcriber);
    DestroyAccHMM(hmm);
}

TEST_F(FlatInterface, AStretchIsFoundWhereItStandsInTheAudio) {
    uint32_t count = 0;
    const int16_t* samples = tessarin_get_audio_samples(audio.get(), &count);
    const uint32_t rate = tessarin_get_audio_rate_hz(audio.get());
    const uint32_t from = rate; // a second
    const uint32_t to = std::min(count, 4 * rate);
    tessarin_audio* cut = nullptr;
    ASSERT_EQ(tessarin_create_audio_from_int16(samples + from, to - from, rate, &cut), TESSARIN_OK);
    const audio_handle cutOwner(cut);
    tessarin_result* alone = nullptr;
    ASSERT_EQ(tessarin_create_recognition(model.get(), cut, nullptr, nullptr, &alone), TESSARIN_OK);
    const result_handle aloneOwner(alone);
    tessarin_search_options options{sizeof options, 0, 1000, 4000, 0, 0};
    tessarin_result* stretch = nullptr;
    ASSERT_EQ(tessarin_create_recognition(model.get(), audio.get(), &options, nullptr, &stretch),
              TESSARIN_OK);
    const result_handle stretchOwner(stretch);
    EXPECT_EQ(Lines(stretch), Lines(alone, 1000));

    tessarin_track* tracks[2] = {};
    ASSERT_EQ(tessarin_create_track(alone, nullptr, &tracks[0]), TESSARIN_OK);
    ASSERT_EQ(tessarin_create_track(stretch, nullptr, &tracks[1]), TESSARIN_OK);
    const track_handle owners[] = {track_handle(tracks[0]), track_handle(tracks[1])};
    uint32_t numFrames[2] = {};
    const tessarin_frame* early = tessarin_get_track_frames(tracks[0], &numFrames[0]);
    const tessarin_frame* late = tessarin_get_track_frames(tracks[1], &numFrames[1]);
    ASSERT_EQ(numFrames[0], numFrames[1]);
    ASSERT_GT(numFrames[0], 80u);
    EXPECT_EQ(late[50].start_ms, early[50].start_ms + 1000);
    EXPECT_STREQ(late[50].weights[0].label, early[50].weights[0].label);

    const int32_t past = static_cast<int32_t>(count / rate + 1) * 1000;
    for (const tessarin_search_options& bad :
         {tessarin_search_options{sizeof options, 0, -1, 0, 0, 0},
          tessarin_search_options{sizeof options, 0, past, 0, 0, 0},
          tessarin_search_options{sizeof options, 0, 2000, 1000, 0, 0}}) {
        EXPECT_EQ(tessarin_create_recognition(model.get(), audio.get(), &bad, nullptr, &stretch),
                  TESSARIN_OUT_OF_RANGE);
        EXPECT_EQ(stretch, nullptr);
    }
}

TEST_F(FlatInterface, ThreadsShareAModelALanguageAndAResult) {
    const std::vector<std::string> expected = Lines(Align().get());
    const result_handle shared = Align();
    std::vector<std::vector<std::string>> found(4);
    std::vector<std::thread> threads;
    for (auto& lines : found) {
        threads.emplace_back([&lines, &shared] {
            lines = Lines(Align().get());
            tessarin_track* track = nullptr;
            EXPECT_EQ(tessarin_create_track(shared.get(), nullptr, &track), TESSARIN_OK);
            tessarin_free_track(track);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const auto& lines : found) {
        EXPECT_EQ(lines, expected);
    }
}

TEST_F(FlatInterface, ALostTextStillGivesWhatWasFound) {
    std::string foreign;
    for (int i = 0; i < 300; ++i) {
        foreign += "completely different words that nobody said here ";
    }
    tessarin_result* result = nullptr;
    EXPECT_EQ(tessarin_create_alignment(model.get(), language.get(), audio.get(), foreign.c_str(),
                                        nullptr, nullptr, &result),
              TESSARIN_RECOGNITION_FAILED);
    EXPECT_NE(result, nullptr);
    tessarin_free_result(result);
}

TEST_F(FlatInterface, TokensStandWhereTheyStandInUtf8) {
    tessarin_transcript* transcript = nullptr;
    ASSERT_EQ(tessarin_create_transcript(language.get(), "\xEF\xBB\xBFZoë “is” Łódź", &transcript),
              TESSARIN_OK);
    const transcript_handle owner(transcript);
    uint32_t count = 0;
    const tessarin_token* tokens = tessarin_get_transcript_tokens(transcript, &count);
    std::vector<std::string> found;
    for (uint32_t i = 0; i < count; ++i) {
        if (tokens[i].kind == TESSARIN_WORD) {
            found.push_back(std::to_string(tokens[i].text_offset) + "+" +
                            std::to_string(tokens[i].text_length) + " " + tokens[i].text);
        }
    }
    EXPECT_THAT(found, ElementsAre("3+4 Zoë", "8+8 “is”", "17+7 Łódź"));
    EXPECT_STREQ(tokens[0].phonemes, "zOWIY");
    EXPECT_EQ(tessarin_create_transcript(language.get(), "caf\xE9", &transcript),
              TESSARIN_INVALID_UTF8);
    EXPECT_EQ(transcript, nullptr);
}

TEST_F(FlatInterface, WordsOfOnesOwnCountInEveryKindOfLexicon) {
    constexpr std::string_view kText = "CAT=kAEt\nDOG=dAOg\n";
    const std::string image = Content(std::string(kData) + "/en-us.lexicon");
    for (const std::string_view lexicon : {kText, std::string_view(image)}) {
        tessarin_language* opened = nullptr;
        ASSERT_EQ(tessarin_create_language_from_memory(
                      lexicon.data(), static_cast<uint32_t>(lexicon.size()), &opened),
                  TESSARIN_OK);
        const language_handle owner(opened);
        const auto say = [&](const char* word) {
            tessarin_transcript* transcript = nullptr;
            EXPECT_EQ(tessarin_create_transcript(opened, word, &transcript), TESSARIN_OK);
            const transcript_handle transcriptOwner(transcript);
            return std::string(tessarin_get_transcript_tokens(transcript, nullptr)->phonemes);
        };
        EXPECT_EQ(say("cat"), "kAEt");
        EXPECT_EQ(tessarin_set_word(opened, "cat", "kIHtIY|pUHs"), TESSARIN_OK);
        EXPECT_EQ(tessarin_set_word(opened, "dog", "no phonemes"), TESSARIN_INVALID_ARGUMENT);
        EXPECT_EQ(tessarin_set_word(opened, "d\xF6g", "AH"), TESSARIN_INVALID_UTF8);
        EXPECT_EQ(say("cat"), "kIHtIY|pUHs");
        EXPECT_EQ(say("dog"), "dAOg");
    }
}

TEST_F(FlatInterface, SamplesComeFromFilesAndFromFloats) {
    const std::vector<int16_t> interleaved = {100, 300, -101, -300, 7, 8};
    const TempFile file(tessarin::test::WavFile(8000, 2, interleaved), ".wav");
    const auto samplesOf = [](tessarin_audio* opened) {
        const audio_handle owner(opened);
        uint32_t count = 0;
        const int16_t* samples = tessarin_get_audio_samples(opened, &count);
        return std::vector<int16_t>(samples, samples + count);
    };
    tessarin_audio* opened = nullptr;
    ASSERT_EQ(tessarin_create_audio_from_file(file.Path(), 2, &opened), TESSARIN_OK);
    EXPECT_THAT(samplesOf(opened), ElementsAre(300, -300, 8));
    ASSERT_EQ(tessarin_create_audio_from_file(file.Path(), 0, &opened), TESSARIN_OK);
    EXPECT_THAT(samplesOf(opened), ElementsAre(200, -200, 8)) << "halves go to the even number";
    EXPECT_EQ(tessarin_create_audio_from_file(file.Path(), 3, &opened), TESSARIN_OUT_OF_RANGE);
    EXPECT_EQ(opened, nullptr);
    EXPECT_EQ(tessarin_create_audio_from_file("no-such.wav", 1, &opened), TESSARIN_FILE_NOT_FOUND);

    const float floats[] = {0.5f, -1.0f, 2.0f, std::nanf(""),
                            -std::numeric_limits<float>::infinity()};
    ASSERT_EQ(tessarin_create_audio_from_float(floats, 5, 16000, &opened), TESSARIN_OK);
    EXPECT_THAT(samplesOf(opened), ElementsAre(16384, -32768, 32767, 0, 0));
    EXPECT_EQ(tessarin_create_audio_from_float(floats, 5, 65536, &opened), TESSARIN_OUT_OF_RANGE);
    EXPECT_EQ(tessarin_create_audio_from_float(floats, 5, 0, &opened), TESSARIN_OUT_OF_RANGE);
}

TEST_F(FlatInterface, SearchOptionsOfEveryVersionAreTaken) {
    tessarin_search_options options{};
    options.from_ms = 1000;
    options.flags = 0xdead; // beyond the first version
    options.size = 16;
    const std::vector<std::string> first = Lines(Align(&options).get());
    options.flags = TESSARIN_SEARCH_RETRY;
    options.match_mode = 0xdead; // beyond the second one, which is exact, too
    options.size = 20;
    EXPECT_EQ(Lines(Align(&options).get()), first) << "nothing was lost";
    options.match_mode = TESSARIN_MATCH_EXACT;
    options.size = sizeof options;
    EXPECT_EQ(Lines(Align(&options).get()), first);
    tessarin_result* result = nullptr;
    for (const auto& [size, flags] : {std::pair{20u, 2u}, {12u, 0u}, {28u, 0u}, {0u, 0u}}) {
        options.size = size;
        options.flags = flags;
        EXPECT_EQ(tessarin_create_recognition(model.get(), audio.get(), &options, nullptr, &result),
                  TESSARIN_INVALID_ARGUMENT);
    }
}

TEST_F(FlatInterface, JudgesHowWellTextAndAudioFit) {
    tessarin_model* made = nullptr;
    ASSERT_EQ(tessarin_create_model_from_file((std::string(kData) + "/en-us.model").c_str(), &made),
              TESSARIN_OK);
    const model_handle judging(made);
    const auto align = [&](const std::string& said, uint32_t mode) {
        tessarin_search_options options{};
        options.size = sizeof options;
        options.match_mode = mode;
        tessarin_result* result = nullptr;
        EXPECT_EQ(tessarin_create_alignment(made, language.get(), audio.get(), said.c_str(),
                                            &options, nullptr, &result),
                  TESSARIN_OK);
        return result_handle(result);
    };
    EXPECT_EQ(tessarin_get_match(align(text, TESSARIN_MATCH_EXACT).get()), nullptr);
    const result_handle unknown = align(text, TESSARIN_MATCH_AUTO);
    ASSERT_NE(tessarin_get_match(unknown.get()), nullptr);
    EXPECT_EQ(tessarin_get_match(unknown.get())->verdict, TESSARIN_MATCH_UNKNOWN);

    const std::string calibration = Content(std::string(kData) + "/en-us.calibration");
    const auto size = static_cast<uint32_t>(calibration.size());
    EXPECT_EQ(tessarin_set_model_calibration(made, calibration.data(), size / 2 + 1),
              TESSARIN_INVALID_FILE);
    EXPECT_EQ(tessarin_read_model_calibration(made, "no-such-file"), TESSARIN_FILE_NOT_FOUND);
    ASSERT_EQ(tessarin_set_model_calibration(made, calibration.data(), size), TESSARIN_OK);
    const result_handle right = align(text, TESSARIN_MATCH_AUTO);
    EXPECT_EQ(Lines(right.get()), Lines(unknown.get()));
    EXPECT_EQ(tessarin_get_match(right.get())->verdict, TESSARIN_MATCH_GOOD);
    EXPECT_EQ(tessarin_get_unsaid_words(right.get(), nullptr), nullptr);

    std::string wrong = text; // with a word in UTF-8 that nobody says, and without the end
    wrong.insert(wrong.find("echo test"), "\u00e9lephant ");
    wrong.resize(wrong.find("You may end"));
    const result_handle result = align(wrong, TESSARIN_MATCH_AUTO);
    EXPECT_EQ(tessarin_get_match(result.get())->verdict, TESSARIN_MATCH_DOUBTFUL);
    EXPECT_GT(tessarin_get_match(result.get())->unscripted_ms, 1000);
    uint32_t numUnsaid = 0;
    const tessarin_span* const unsaid = tessarin_get_unsaid_words(result.get(), &numUnsaid);
    ASSERT_GE(numUnsaid, 1u);
    EXPECT_STREQ(unsaid->text, "\u00e9lephant");
    EXPECT_EQ(unsaid->text_offset, static_cast<int32_t>(wrong.find("\u00e9lephant")));
    EXPECT_EQ(unsaid->start_ms, -1);
    uint32_t count = 0;
    uint32_t numWords = 0;
    (void)tessarin_get_words(result.get(), &numWords);
    const tessarin_word_match* const matches = tessarin_get_word_matches(result.get(), &count);
    ASSERT_EQ(count, numWords + numUnsaid);
    EXPECT_EQ(matches[5].is_said, 1); // You are about to enter an
    EXPECT_EQ(matches[6].is_said, 0);
    EXPECT_LT(matches[6].confidence, matches[5].confidence);
    EXPECT_EQ(matches[count - 1].index, numWords - 1);
    const tessarin_span* const events = tessarin_get_events(result.get(), &count);
    EXPECT_TRUE(std::any_of(events, events + count, [](const tessarin_span& event) {
        return event.kind == TESSARIN_UNSCRIPTED && event.end_ms - event.start_ms > 1000;
    }));
    uint32_t numPhonemes = 0;
    (void)tessarin_get_phonemes(result.get(), &numPhonemes);
    (void)tessarin_get_phoneme_confidences(result.get(), &count);
    EXPECT_EQ(count, numPhonemes);
}

TEST_F(FlatInterface, SentencesAreFoundWhereTheyWereSaid) {
    const std::string mixed = text + "\nThe children built a boat of paper by the river.";
    const std::vector<std::string> before = Lines(Align().get());
    tessarin_sentence_search* search = nullptr;
    ASSERT_EQ(tessarin_create_sentence_search(model.get(), language.get(), audio.get(),
                                              mixed.c_str(), 0, nullptr, nullptr, &search),
              TESSARIN_OK);
    uint32_t count = 0;
    const tessarin_sentence* sentences = tessarin_get_sentences(search, &count);
    ASSERT_GE(count, 2u);
    int32_t lastEndMs = 0;
    for (uint32_t i = 0; i + 1 < count; ++i) {
        const tessarin_sentence& each = sentences[i];
        EXPECT_EQ(each.is_found, 1);
        EXPECT_GE(each.start_ms, lastEndMs);
        EXPECT_GT(each.score, 5.5);
        EXPECT_EQ(mixed.substr(static_cast<size_t>(each.text_offset),
                               static_cast<size_t>(each.text_length)),
                  each.text);
        lastEndMs = each.end_ms;
    }
    EXPECT_EQ(sentences[count - 1].is_found, 0);
    EXPECT_EQ(sentences[count - 1].start_ms, -1);
    tessarin_free_sentence_search(search);
    EXPECT_EQ(Lines(Align().get()), before) << "the model is as it was";
    EXPECT_EQ(tessarin_create_sentence_search(model.get(), language.get(), audio.get(), "a",
                                              std::nanf(""), nullptr, nullptr, &search),
              TESSARIN_OUT_OF_RANGE);
    EXPECT_EQ(tessarin_create_sentence_search(model.get(), language.get(), audio.get(), "\xE9", 0,
                                              nullptr, nullptr, &search),
              TESSARIN_INVALID_UTF8);
    EXPECT_EQ(search, nullptr);
}

TEST_F(FlatInterface, AModelSaysWhatItHolds) {
    const tessarin_model_facts& facts = *tessarin_get_model_facts(model.get());
    EXPECT_EQ(facts.version, 1);
    EXPECT_EQ(facts.num_phonemes, 40);
    EXPECT_STREQ(facts.labels[0], "x");
    EXPECT_STREQ(facts.labels[39], "OY");
    EXPECT_EQ(facts.num_features, 38);
    EXPECT_EQ(facts.window_size - facts.window_overlap, 160);
    EXPECT_EQ(facts.rate_hz, 16000.0f);
    EXPECT_EQ(tessarin_get_model_facts(nullptr), nullptr);
}

TEST_F(FlatInterface, BadInputIsACode) {
    tessarin_model* badModel = nullptr;
    tessarin_language* badLanguage = nullptr;
    EXPECT_EQ(tessarin_create_model_from_file("no-such-file", &badModel), TESSARIN_FILE_NOT_FOUND);
    EXPECT_EQ(tessarin_create_model_from_memory("mmhz", 4, &badModel), TESSARIN_INVALID_FILE);
    EXPECT_EQ(tessarin_create_language_from_memory("TCID\2\0\0\0", 8, &badLanguage),
              TESSARIN_INVALID_FILE);
    EXPECT_EQ(badLanguage, nullptr);
    ASSERT_EQ(tessarin_create_language_from_memory(nullptr, 0, &badLanguage), TESSARIN_OK);
    tessarin_transcript* transcript = nullptr;
    EXPECT_EQ(tessarin_create_transcript(badLanguage, "cat", &transcript), TESSARIN_OK);
    EXPECT_STREQ(tessarin_get_transcript_tokens(transcript, nullptr)->phonemes, "kAEt")
        << "the built-in rules are there without a lexicon";
    tessarin_free_transcript(transcript);
    tessarin_free_language(badLanguage);

    const result_handle result = Align();
    tessarin_track* track = nullptr;
    tessarin_track_options options{};
    EXPECT_EQ(tessarin_create_track(result.get(), &options, &track), TESSARIN_INVALID_ARGUMENT)
        << "a struct without its size";
    options.size = sizeof options;
    options.frame_rate = std::nanf("");
    EXPECT_EQ(tessarin_create_track(result.get(), &options, &track), TESSARIN_OUT_OF_RANGE);
    options.frame_rate = 0;
    options.max_weights = 11;
    EXPECT_EQ(tessarin_create_track(result.get(), &options, &track), TESSARIN_OUT_OF_RANGE);
    options.max_weights = 2;
    options.rules = "no rules";
    options.rules_length = 8;
    EXPECT_EQ(tessarin_create_track(result.get(), &options, &track), TESSARIN_INVALID_FILE);
    EXPECT_EQ(track, nullptr);
    options.rules = nullptr;
    ASSERT_EQ(tessarin_create_track(result.get(), &options, &track), TESSARIN_OK);
    const track_handle owner(track);
    uint32_t count = 0;
    const tessarin_frame* frames = tessarin_get_track_frames(track, &count);
    for (uint32_t i = 0; i < count; ++i) {
        EXPECT_LE(frames[i].count, 2);
    }
}

} // namespace
