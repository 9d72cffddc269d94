#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tessarin/tessarin.h"

namespace {

namespace fs = std::filesystem;
using tessarin::CSyncMarker;

std::string Content(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

fs::path DemoFile(const char* extension) {
    for (const auto& entry : fs::directory_iterator(TESSARIN_SOURCE_DIR "/data/demo")) {
        if (entry.path().extension() == extension) {
            return entry.path();
        }
    }
    return {};
}

class CancelAtOnce : public tessarin::ProgressSink {
public:
    virtual ~CancelAtOnce() = default;
    void SetStatus(const char*) override {}
    bool OnProgress(uint32_t, uint32_t) override { return true; }
};

/// The shipped model and lexicon, and the demo recording with its text.
class Alignment : public testing::Test {
protected:
    void SetUp() override {
        const std::string image = Content(TESSARIN_SOURCE_DIR "/data/en-us.model");
        ASSERT_EQ(CreateAccHMM(image.data(), static_cast<uint32_t>(image.size()), nullptr, &model),
                  0);
        ASSERT_EQ(CreateTranscriberFromLexiconFile(TESSARIN_SOURCE_DIR "/data/en-us.lexicon",
                                                   &transcriber),
                  0);
        ASSERT_EQ(CreateSyncResultsCollection(tessarin::kPostProcessScores, &results), 0);
        ASSERT_EQ(CreateTextBasedRecognizer(&recognizer), 0);
        OpenStream();
        text = Content(DemoFile(".txt"));
    }

    void TearDown() override {
        DestroyTextBasedRecognizer(recognizer);
        DestroySyncResultsCollection(results);
        DestroyTranscriber(transcriber);
        DestroyObservationStream(stream);
        DestroyAccHMM(model);
    }

    void OpenStream() {
        DestroyObservationStream(stream);
        ASSERT_EQ(CreateObservationStreamFromAudioFile(DemoFile(".wav").c_str(), model, &stream),
                  0);
    }

    std::vector<std::string> Words() {
        std::vector<std::string> words;
        for (const CSyncMarker* m = results->begin(); m != results->end(); ++m) {
            if (m->type == tessarin::kWordMarker) {
                words.emplace_back(m->text);
            }
        }
        return words;
    }

    tessarin::CAccousticHMM* model = nullptr;
    tessarin::IObservationStream* stream = nullptr;
    tessarin::IVisemixTranscriber* transcriber = nullptr;
    tessarin::ISyncResultsCollection* results = nullptr;
    tessarin::ITextBasedPhnRecognizer* recognizer = nullptr;
    std::string text;
};

TEST_F(Alignment, PutsEveryWordOfTheTextInOrder) {
    const double duration = stream->GetNumObservations() * 10.0;
    ASSERT_EQ(
        recognizer->RecognizePhonemes(stream, model, text.c_str(), transcriber, nullptr, results),
        0);
    uint32_t count = 0;
    const tessarin::CTxMarker* tokens = transcriber->GetOutputMarkers(&count);
    std::vector<std::string> spoken;
    for (uint32_t i = 0; i < count; ++i) {
        if (tokens[i].kind == tessarin::kWordToken) {
            spoken.push_back(
                text.substr(tokens[i].text_start, tokens[i].text_end - tokens[i].text_start));
        }
    }
    EXPECT_EQ(Words(), spoken);

    int32_t reached = 0;
    for (const CSyncMarker* m = results->begin(); m != results->end(); ++m) {
        if (m->type == tessarin::kPhonemeMarker) {
            EXPECT_GE(m->start, reached) << "phonemes follow each other";
            EXPECT_GE(m->end, m->start);
            reached = m->end;
        }
    }
    EXPECT_NEAR(reached, duration, 60.0) << "the phonemes cover the recording";
}

TEST_F(Alignment, SecondRunOnAFreshStreamGivesTheSame) {
    ASSERT_EQ(
        recognizer->RecognizePhonemes(stream, model, text.c_str(), transcriber, nullptr, results),
        0);
    const std::vector<CSyncMarker> first(results->begin(), results->end());
    std::vector<int32_t> times;
    for (const CSyncMarker& marker : first) {
        times.push_back(marker.start);
    }
    results->clear();
    OpenStream();
    ASSERT_EQ(recognizer->AlignTranscription(stream, model, transcriber, nullptr, results), 0);
    std::vector<int32_t> again;
    for (const CSyncMarker* m = results->begin(); m != results->end(); ++m) {
        again.push_back(m->start);
    }
    EXPECT_EQ(again, times);
}

TEST_F(Alignment, ForeignTextIsReportedAndNothingHangs) {
    std::string longText;
    for (int i = 0; i < 300; ++i) {
        longText += "completely different words that nobody said here ";
    }
    EXPECT_EQ(recognizer->RecognizePhonemes(stream, model, longText.c_str(), transcriber, nullptr,
                                            results),
              8);
}

TEST_F(Alignment, CancelsWithFive) {
    CancelAtOnce cancel;
    EXPECT_EQ(
        recognizer->RecognizePhonemes(stream, model, text.c_str(), transcriber, &cancel, results),
        5);
    EXPECT_EQ(results->size(), 0);
    DestroyObservationStream(stream); // before the sink, which it may still know
    stream = nullptr;
}

} // namespace
