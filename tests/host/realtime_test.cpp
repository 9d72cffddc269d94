#include <algorithm>
#include <chrono>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "host/shipped_data.h"
#include "tessarin/tessarin.h"

namespace {

TEST(RealtimeFactory, AnswersWhatIsMissing) {
    const shipped_model shipped;
    auto* recognizer = reinterpret_cast<tessarin::IRealtimePhnRecognizer*>(1);
    EXPECT_EQ(CreateRealtimePhnRecognizer(16000, 16, 1, 0.1, shipped.model, nullptr), 2);
    EXPECT_EQ(CreateRealtimePhnRecognizer(3999, 16, 1, 0.1, shipped.model, &recognizer), 2);
    EXPECT_EQ(recognizer, nullptr);
    EXPECT_EQ(CreateRealtimePhnRecognizer(16000, 16, 1, 0.1, nullptr, &recognizer), 2);
    DestroyRealtimePhnRecognizer(nullptr);
}

TEST(RealtimeRecognition, HearsTheDemoRecordingAsItComes) {
    const shipped_model shipped;
    const std::string audio = DataFile("demo/echo-test.wav"); // its header is heard too, as a click
    tessarin::IRealtimePhnRecognizer* recognizer = nullptr;
    tessarin::ISyncResultsCollection* results = nullptr;
    ASSERT_EQ(CreateRealtimePhnRecognizer(16000, 16, 1, 0.1, shipped.model, &recognizer), 0);
    ASSERT_EQ(CreateSyncResultsCollection(tessarin::kPostProcessScores, &results), 0);
    ASSERT_EQ(recognizer->Start(), 0);
    EXPECT_FALSE(recognizer->GetMicVisemix(results, 200));
    std::thread microphone([&] {
        for (size_t i = 0; i < audio.size(); i += 3200) {
            const auto count = static_cast<uint32_t>(std::min<size_t>(3200, audio.size() - i));
            EXPECT_EQ(recognizer->WriteBytes(audio.data() + i, count), 0);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    int32_t heardMs = 0;
    int numPhonemes = 0;
    int numSilences = 0;
    const auto audioMs = static_cast<int32_t>(audio.size() / 32);
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(120);
    while (heardMs < audioMs - 400 && std::chrono::steady_clock::now() < limit) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (!recognizer->GetMicVisemix(results, 100)) {
            continue;
        }
        for (const auto* marker = results->begin(); marker != results->end(); ++marker) {
            ++numPhonemes;
            numSilences += std::string(marker->label) == "x" ? 1 : 0;
        }
        heardMs += (results->end() - 1)->end - 5;
    }
    microphone.join();
    EXPECT_GE(heardMs, audioMs - 400);
    EXPECT_GT(numPhonemes, audioMs / 300);
    EXPECT_LT(numSilences, numPhonemes / 2);
    EXPECT_GT(GetPerfCount(), 0);
    DestroySyncResultsCollection(results);
    DestroyRealtimePhnRecognizer(recognizer);
}

} // namespace
