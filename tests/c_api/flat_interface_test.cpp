#include <cmath>
#include <cstddef>
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

#include "c_api/flat_fixture.h"
#include "support/riff_builder.h"
#include "support/temp_file.h"
#include "tessarin/model_adaptation.h"
#include "tessarin/owned.h"

namespace {

using testing::ElementsAre;

using namespace tessarin::flat;
using namespace tessarin::test;
using tessarin::Out;

TEST_F(FlatInterface, FindsWhatTheClassesFind) {
    const std::string image = Content(std::string(kData) + "/en-us.model");
    tessarin::model_owner hmm;
    tessarin::transcriber_owner transcriber;
    tessarin::observations_owner stream;
    tessarin::results_owner markers;
    tessarin::aligner_owner aligner;
    tessarin::free_recognizer_owner recognizer;
    const std::string path = std::string(kDemo) + ".wav";
    ASSERT_EQ(CreateAccHMM(image.data(), static_cast<uint32_t>(image.size()), nullptr, Out(hmm)),
              0);
    ASSERT_EQ(CreateTranscriberFromLexiconFile((std::string(kData) + "/en-us.lexicon").c_str(),
                                               Out(transcriber)),
              0);
    ASSERT_EQ(CreateObservationStreamFromAudioFile(path.c_str(), hmm.get(), Out(stream)), 0);
    ASSERT_EQ(CreateSyncResultsCollection(tessarin::kPostProcessScores, Out(markers)), 0);
    CreateTextBasedRecognizer(Out(aligner));
    CreateTextlessPhnRecognizer(Out(recognizer));
    ASSERT_EQ(aligner->RecognizePhonemes(stream.get(), hmm.get(), text.c_str(), transcriber.get(),
                                         nullptr, markers.get()),
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

    ASSERT_EQ(CreateObservationStreamFromAudioFile(path.c_str(), hmm.get(), Out(stream)), 0);
    ASSERT_EQ(recognizer->RecognizePhonemes(stream.get(), hmm.get(), nullptr, markers.get()), 0);
    result_owner heard;
    ASSERT_EQ(tessarin_create_recognition(model.get(), audio.get(), nullptr, nullptr, Out(heard)),
              TESSARIN_OK);
    expectSame(heard.get());
}

TEST_F(FlatInterface, AStretchIsFoundWhereItStandsInTheAudio) {
    uint32_t count = 0;
    const int16_t* samples = tessarin_get_audio_samples(audio.get(), &count);
    const uint32_t rate = tessarin_get_audio_rate_hz(audio.get());
    const uint32_t from = rate; // a second
    const uint32_t to = std::min(count, 4 * rate);
    audio_owner cut;
    ASSERT_EQ(tessarin_create_audio_from_int16(samples + from, to - from, rate, Out(cut)),
              TESSARIN_OK);
    result_owner alone;
    ASSERT_EQ(tessarin_create_recognition(model.get(), cut.get(), nullptr, nullptr, Out(alone)),
              TESSARIN_OK);
    tessarin_search_options options{sizeof options, 0, 1000, 4000, 0, 0, nullptr, 0};
    result_owner stretch;
    ASSERT_EQ(
        tessarin_create_recognition(model.get(), audio.get(), &options, nullptr, Out(stretch)),
        TESSARIN_OK);
    EXPECT_EQ(Lines(stretch.get()), Lines(alone.get(), 1000));

    track_owner tracks[2];
    ASSERT_EQ(tessarin_create_track(alone.get(), nullptr, Out(tracks[0])), TESSARIN_OK);
    ASSERT_EQ(tessarin_create_track(stretch.get(), nullptr, Out(tracks[1])), TESSARIN_OK);
    uint32_t numFrames[2] = {};
    const tessarin_frame* early = tessarin_get_track_frames(tracks[0].get(), &numFrames[0]);
    const tessarin_frame* late = tessarin_get_track_frames(tracks[1].get(), &numFrames[1]);
    ASSERT_EQ(numFrames[0], numFrames[1]);
    ASSERT_GT(numFrames[0], 80u);
    EXPECT_EQ(late[50].start_ms, early[50].start_ms + 1000);
    EXPECT_STREQ(late[50].weights[0].label, early[50].weights[0].label);

    const int32_t past = static_cast<int32_t>(count / rate + 1) * 1000;
    for (const tessarin_search_options& bad :
         {tessarin_search_options{sizeof options, 0, -1, 0, 0, 0, nullptr, 0},
          tessarin_search_options{sizeof options, 0, past, 0, 0, 0, nullptr, 0},
          tessarin_search_options{sizeof options, 0, 2000, 1000, 0, 0, nullptr, 0}}) {
        EXPECT_EQ(
            tessarin_create_recognition(model.get(), audio.get(), &bad, nullptr, Out(stretch)),
            TESSARIN_OUT_OF_RANGE);
        EXPECT_EQ(stretch, nullptr);
    }
}

TEST_F(FlatInterface, ThreadsShareAModelALanguageAndAResult) {
    const std::vector<std::string> expected = Lines(Align().get());
    const result_owner shared = Align();
    std::vector<std::vector<std::string>> found(4);
    std::vector<std::thread> threads;
    for (auto& lines : found) {
        threads.emplace_back([&lines, &shared] {
            lines = Lines(Align().get());
            track_owner track;
            EXPECT_EQ(tessarin_create_track(shared.get(), nullptr, Out(track)), TESSARIN_OK);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const auto& lines : found) {
        EXPECT_EQ(lines, expected);
    }
}

TEST_F(FlatInterface, WordsOfOnesOwnCountInEveryKindOfLexicon) {
    constexpr std::string_view kText = "CAT=kAEt\nDOG=dAOg\n";
    const std::string image = Content(std::string(kData) + "/en-us.lexicon");
    for (const std::string_view lexicon : {kText, std::string_view(image)}) {
        language_owner owner;
        ASSERT_EQ(tessarin_create_language_from_memory(
                      lexicon.data(), static_cast<uint32_t>(lexicon.size()), Out(owner)),
                  TESSARIN_OK);
        tessarin_language* const opened = owner.get();
        const auto say = [&](const char* word) {
            transcript_owner transcript;
            EXPECT_EQ(tessarin_create_transcript(opened, word, Out(transcript)), TESSARIN_OK);
            return std::string(tessarin_get_transcript_tokens(transcript.get(), nullptr)->phonemes);
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
        const audio_owner owner(opened);
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

TEST_F(FlatInterface, FitsTheModelToTheVoiceWhereThatIsWanted) {
    const auto recognize = [&](uint32_t size, uint32_t mode) {
        tessarin_search_options options{};
        options.size = size;
        options.adapt_mode = mode;
        tessarin_result* result = nullptr;
        EXPECT_EQ(tessarin_create_recognition(model.get(), audio.get(), &options, nullptr, &result),
                  TESSARIN_OK);
        return result_owner(result);
    };
    constexpr uint32_t kSize = sizeof(tessarin_search_options);
    const result_owner plain = recognize(kSize, TESSARIN_ADAPT_OFF);
    EXPECT_EQ(tessarin_get_adaptation_gain(plain.get()), -1.0f);
    EXPECT_EQ(tessarin_get_adaptation_gain(nullptr), -1.0f);
    const result_owner fitted = recognize(kSize, TESSARIN_ADAPT_ON);
    EXPECT_GT(tessarin_get_adaptation_gain(fitted.get()), 0.0f);
    EXPECT_NE(Lines(fitted.get()), Lines(plain.get()));
    EXPECT_EQ(Lines(recognize(kSize, TESSARIN_ADAPT_OFF).get()), Lines(plain.get()))
        << "the model stays as it was";
    // By itself only where the gain is that of a stranger; so, too, for a struct without the mode.
    const bool isStranger = tessarin_get_adaptation_gain(fitted.get()) >= tessarin::kKnownVoiceGain;
    const std::vector<std::string> expected = Lines(isStranger ? fitted.get() : plain.get());
    EXPECT_EQ(Lines(recognize(kSize, TESSARIN_ADAPT_AUTO).get()), expected);
    EXPECT_EQ(Lines(recognize(offsetof(tessarin_search_options, adapt_mode), 0xdead).get()),
              expected);

    tessarin_search_options options{};
    options.size = kSize;
    options.adapt_mode = TESSARIN_ADAPT_ON + 1;
    tessarin_result* result = nullptr;
    EXPECT_EQ(tessarin_create_recognition(model.get(), audio.get(), &options, nullptr, &result),
              TESSARIN_INVALID_ARGUMENT);
}

TEST_F(FlatInterface, TakesStatisticsFromMemoryAsFromAFile) {
    const std::string path = std::string(kData) + "/en-us.trigrams";
    const std::string content = Content(path);
    const auto heard = [&](const auto& addStatistics) {
        tessarin_model* made = nullptr;
        EXPECT_EQ(
            tessarin_create_model_from_file((std::string(kData) + "/en-us.model").c_str(), &made),
            TESSARIN_OK);
        const model_owner hearing(made);
        EXPECT_EQ(addStatistics(made), TESSARIN_OK);
        tessarin_search_options options{};
        options.size = sizeof options;
        options.to_ms = 3000;
        tessarin_result* result = nullptr;
        EXPECT_EQ(tessarin_create_recognition(made, audio.get(), &options, nullptr, &result),
                  TESSARIN_OK);
        return Lines(result_owner(result).get());
    };
    const auto fromFile = heard(
        [&](tessarin_model* to) { return tessarin_read_model_statistics(to, path.c_str(), 1); });
    const auto fromMemory = heard([&](tessarin_model* to) {
        return tessarin_set_model_statistics(to, content.data(),
                                             static_cast<uint32_t>(content.size()), 1);
    });
    EXPECT_EQ(fromMemory, fromFile);
    EXPECT_NE(fromMemory, heard([](tessarin_model*) { return TESSARIN_OK; }));
    EXPECT_EQ(tessarin_set_model_statistics(nullptr, "x 1", 3, 1), TESSARIN_INVALID_ARGUMENT);
}

TEST_F(FlatInterface, JudgesHowWellTextAndAudioFit) {
    tessarin_model* made = nullptr;
    ASSERT_EQ(tessarin_create_model_from_file((std::string(kData) + "/en-us.model").c_str(), &made),
              TESSARIN_OK);
    const model_owner judging(made);
    const auto align = [&](const std::string& said, uint32_t mode) {
        tessarin_search_options options{};
        options.size = sizeof options;
        options.match_mode = mode;
        tessarin_result* result = nullptr;
        EXPECT_EQ(tessarin_create_alignment(made, language.get(), audio.get(), said.c_str(),
                                            &options, nullptr, &result),
                  TESSARIN_OK);
        return result_owner(result);
    };
    EXPECT_EQ(tessarin_get_match(align(text, TESSARIN_MATCH_EXACT).get()), nullptr);
    const result_owner unknown = align(text, TESSARIN_MATCH_AUTO);
    ASSERT_NE(tessarin_get_match(unknown.get()), nullptr);
    EXPECT_EQ(tessarin_get_match(unknown.get())->verdict, TESSARIN_MATCH_UNKNOWN);

    const std::string calibration = Content(std::string(kData) + "/en-us.calibration");
    const auto size = static_cast<uint32_t>(calibration.size());
    EXPECT_EQ(tessarin_set_model_calibration(made, calibration.data(), size / 2 + 1),
              TESSARIN_INVALID_FILE);
    EXPECT_EQ(tessarin_read_model_calibration(made, "no-such-file"), TESSARIN_FILE_NOT_FOUND);
    ASSERT_EQ(tessarin_set_model_calibration(made, calibration.data(), size), TESSARIN_OK);
    const result_owner right = align(text, TESSARIN_MATCH_AUTO);
    EXPECT_EQ(Lines(right.get()), Lines(unknown.get()));
    EXPECT_EQ(tessarin_get_match(right.get())->verdict, TESSARIN_MATCH_GOOD);
    EXPECT_EQ(tessarin_get_unsaid_words(right.get(), nullptr), nullptr);

    std::string wrong = text; // with a word in UTF-8 that nobody says, and without the end
    wrong.insert(wrong.find("echo test"), "\u00e9lephant ");
    wrong.resize(wrong.find("You may end"));
    const result_owner result = align(wrong, TESSARIN_MATCH_AUTO);
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

TEST_F(FlatInterface, MeasuresLoudness) {
    uint32_t numSamples = 0;
    const int16_t* const samples = tessarin_get_audio_samples(audio.get(), &numSamples);
    const uint32_t rateHz = tessarin_get_audio_rate_hz(audio.get());
    uint32_t values = 0;
    EXPECT_EQ(tessarin_measure_loudness(samples, numSamples, rateHz, nullptr, &values),
              TESSARIN_OUT_OF_RANGE)
        << "and says how much room is needed";
    std::vector<float> measured(values);
    ASSERT_EQ(tessarin_measure_loudness(samples, numSamples, rateHz, measured.data(), &values),
              TESSARIN_OK);
    const result_owner result = Align();
    uint32_t count = 0;
    const float* const known = tessarin_get_loudness(result.get(), &count);
    EXPECT_EQ(std::vector<float>(known, known + count), measured);

    const std::vector<float> outside = {-200.0f, 3.0f};
    ASSERT_EQ(tessarin_set_loudness(result.get(), outside.data(), 2), TESSARIN_OK);
    EXPECT_EQ(tessarin_get_loudness(result.get(), &count)[0], -100.0f);
    EXPECT_EQ(tessarin_get_loudness(result.get(), &count)[1], 0.0f);
    EXPECT_EQ(count, 2u);
    const float notANumber = std::nanf("");
    EXPECT_EQ(tessarin_set_loudness(result.get(), &notANumber, 1), TESSARIN_OUT_OF_RANGE);
    EXPECT_EQ(tessarin_measure_loudness(samples, 10, 99, measured.data(), &values),
              TESSARIN_OUT_OF_RANGE);
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

    const result_owner result = Align();
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
    for (const auto& [strength, code] : std::initializer_list<std::pair<tessarin_strength, int>>{
             {{TESSARIN_LIPS, 5.0f}, TESSARIN_OUT_OF_RANGE},
             {{TESSARIN_LIPS, std::nanf("")}, TESSARIN_OUT_OF_RANGE},
             {{0, 1.0f}, TESSARIN_INVALID_ARGUMENT},
             {{16, 1.0f}, TESSARIN_INVALID_ARGUMENT}}) {
        options.strengths = &strength;
        options.strength_count = 1;
        EXPECT_EQ(tessarin_create_track(result.get(), &options, &track), code);
    }
    const std::vector<tessarin_strength> many(100, {TESSARIN_VOWELS, 4.0f});
    options.strengths = many.data();
    options.strength_count = 100;
    track_owner strong;
    ASSERT_EQ(tessarin_create_track(result.get(), &options, Out(strong)), TESSARIN_OK);
    EXPECT_LE(tessarin_get_track_frames(strong.get(), nullptr)->weights[0].weight, 1.0f);
    options.strength_count = 0;
    ASSERT_EQ(tessarin_create_track(result.get(), &options, &track), TESSARIN_OK);
    const track_owner owner(track);
    uint32_t count = 0;
    const tessarin_frame* frames = tessarin_get_track_frames(track, &count);
    for (uint32_t i = 0; i < count; ++i) {
        EXPECT_LE(frames[i].count, 2);
    }
}

} // namespace
