#include "recognition/sentences/sentence_viterbi.h"

#include <chrono>
#include <cmath>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "features/test_descriptors.h"
#include "fixtures.h"
#include "literal_sentence_search.h"
#include "recognition/graph/forward_graph.h"
#include "recognition/graph/phone_durations.h"
#include "recognition/graph/state_graph.h"
#include "recognition/live/realtime_phn_recognizer.h"
#include "recognition/textbased_phn_recognizer.h"
#include "recognition/textless_phn_recognizer.h"
#include "recognition/trellis/trellis_viterbi.h"
#include "results/concrete_sync_marker_collection.h"
#include "support/signals.h"

namespace tessarin::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::vector<std::string> kLabels = {"x", "TH", "AA", "s", "f", "h", "t"};
constexpr size_t kStates = 21;

/// A model that goes from phone to phone at random.
std::unique_ptr<CAccousticHMM> MakeModel(const std::vector<std::string>& labels = kLabels) {
    auto model = MakeLikelihoodModel(labels, 0.6f);
    const auto total = static_cast<size_t>(model->GetTotalStates());
    for (size_t s = 0; s < total; ++s) {
        model->transitions[s][s] = 0.6f;
        for (size_t to = 0; to < total; to += 3) {
            if (s % 3 == 2 && to / 3 != s / 3) {
                model->transitions[s][to] = 0.4f / static_cast<float>(labels.size() - 1);
            }
        }
        if (s % 3 < 2) {
            model->transitions[s][s + 1] = 0.4f;
        }
    }
    return model;
}

/// A text of sentences, each a list of words.
void AddSentences(ready_transcriber& transcriber,
                  const std::vector<std::vector<std::string>>& sentences) {
    for (const std::vector<std::string>& words : sentences) {
        for (const std::string& word : words) {
            const auto at = static_cast<uint32_t>(transcriber.transcribed.size());
            transcriber.tokens.AddWord(at, at + 1, word);
            transcriber.transcribed += "w ";
        }
        const auto at = static_cast<uint32_t>(transcriber.transcribed.size());
        transcriber.tokens.Add(kPunctuationToken, at, at + 1, {});
        transcriber.transcribed += ". ";
    }
}

class Sentences : public testing::Test {
protected:
    /// So many observations of 10 ms of each state of each phone.
    void Speak(const std::vector<size_t>& phones, int observations = 3) {
        for (const size_t phone : phones) {
            for (size_t state = 0; state < 3; ++state) {
                stream.AddOnly(phone * 3 + state, model->GetTotalStates(), observations, 50.0f,
                               1e-4);
            }
        }
    }
    error_code Search(ProgressSink* progress = nullptr) {
        static_cast<void>(recognizer.SetOutputOptions(1, 1));
        return recognizer.AlignTranscription(&stream, model.get(), &transcriber, progress,
                                             &results);
    }
    std::vector<int32_t> TextOffsets() {
        std::vector<int32_t> offsets;
        for (const CSyncMarker& marker : static_cast<TArray<CSyncMarker>&>(results)) {
            EXPECT_EQ(marker.type, uint32_t{kWordMarker});
            EXPECT_EQ(marker.text, nullptr);
            offsets.push_back(marker.text_offset);
        }
        return offsets;
    }

    std::unique_ptr<CAccousticHMM> model = MakeModel();
    list_stream stream;
    ready_transcriber transcriber;
    CConcreteSyncMarkerCollection results;
    CTextbasedPhnRecognizer recognizer;
};

TEST_F(Sentences, AreFoundAmongOtherSpeech) {
    AddSentences(transcriber, {{"sAA", "t"}, {"AAtAA"}, {"tst", "AAs"}});
    Speak({0, 4, 5, 4, 0});
    Speak({3, 2, 6}); // the first sentence
    Speak({0, 5, 1, 5, 0});
    Speak({2, 6, 2}); // the second
    Speak({0, 1, 4, 5, 0});
    Speak({6, 3, 6, 2, 3}); // the third
    Speak({0, 4, 0});
    EXPECT_EQ(Search(), kNoError);
    EXPECT_THAT(TextOffsets(), ElementsAre(0, 6, 10));
    EXPECT_EQ(results[0].text_length, 3);
    EXPECT_EQ(results[2].text_length, 3);
    EXPECT_NEAR(results[0].start, 450, 10);
    EXPECT_NEAR(results[0].end, 720, 10);
    EXPECT_NEAR(results[1].start, 1170, 10);
    EXPECT_NEAR(results[1].end, 1440, 10);
    EXPECT_NEAR(results[2].start, 1890, 10);
    EXPECT_NEAR(results[2].end, 2355, 20) << "somewhere in the silence after";
}

TEST_F(Sentences, BeginWhereTheirRegionDoes) {
    AddSentences(transcriber, {{"sAAt"}});
    transcriber.tokens.AddCut(500);
    AddSentences(transcriber, {{"AAtAA"}});
    Speak({0, 3, 2, 6, 0, 0}, 3); // 540 ms
    Speak({2, 6, 2, 0});
    EXPECT_EQ(Search(), kNoError);
    ASSERT_THAT(TextOffsets(), ElementsAre(0, 0)) << "a cut begins the second";
    EXPECT_NEAR(results[0].start, 90, 10);
    EXPECT_NEAR(results[0].end, 375, 20);
    EXPECT_NEAR(results[1].start, 540, 10);
    EXPECT_NEAR(results[1].end, 825, 20);
}

TEST_F(Sentences, BeginWithACutBeforeTheAudio) {
    transcriber.tokens.AddCut(-100);
    AddSentences(transcriber, {{"sAAt"}});
    Speak({0, 3, 2, 6, 0, 0}, 3);
    EXPECT_EQ(Search(), kNoError);
    ASSERT_THAT(TextOffsets(), ElementsAre(0));
    EXPECT_GE(results[0].start, -100) << "times count from the cut";
    EXPECT_LT(results[0].start, results[0].end);
    EXPECT_LE(results[0].end, 540);
}

TEST_F(Sentences, AreSearchedInOneModelByTwoThreadsAsIsAllElse) {
    AddSentences(transcriber, {{"sAA", "t"}});
    Speak({0, 3, 2, 6, 0, 0}, 3);
    SetMelBands(model->descriptor, 24);
    const auto run = [this](int32_t& starts) {
        list_stream mine = stream;
        list_stream free = stream;
        ready_transcriber words;
        AddSentences(words, {{"sAA", "t"}});
        CConcreteSyncMarkerCollection found;
        CTextbasedPhnRecognizer sentences;
        static_cast<void>(sentences.SetOutputOptions(1, 1));
        EXPECT_EQ(sentences.AlignTranscription(&mine, model.get(), &words, nullptr, &found), 0);
        starts = found.GetSize() == 1 ? found[0].start : -1;
        mine.next = 0;
        static_cast<void>(sentences.SetOutputOptions(0, 0));
        const error_code aligned =
            sentences.AlignTranscription(&mine, model.get(), &words, nullptr, &found);
        EXPECT_TRUE(aligned == kNoError || aligned == kRecognitionFailed);
        CTextlessPhnRecognizer textless;
        EXPECT_EQ(textless.RecognizePhonemes(&free, model.get(), nullptr, &found), kNoError);

        mine.next = 0;
        hand_graph graph;
        graph.AddChain({0, 3, 2, 6, 0, 0});
        const log_state_graph logs = log_state_graph::FromProbabilities(graph.records.data(), 18);
        TArray<uint32_t> path;
        TArray<float> energies;
        const std::string file;
        EXPECT_EQ(TrellisViterbi({500, 500, 0, 0.0, file}, *model, logs, {0}, mine, nullptr, &path,
                                 energies, nullptr),
                  kNoError);

        CRealtimePhnRecognizer live;
        ASSERT_EQ(live.Init(16000, 16, 1, 0.0, model.get()), kNoError);
        ASSERT_EQ(live.Start(), kNoError);
        const std::vector<int16_t> silence(8000);
        ASSERT_EQ(live.WriteBytes(silence.data(), 16000), kNoError);
        while (!live.FlushResults(&found, 100)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    };
    int32_t first = 0;
    int32_t second = 0;
    std::thread other([&] { run(second); });
    run(first);
    other.join();
    EXPECT_NEAR(first, 90, 10);
    EXPECT_EQ(second, first);
}

// Kept: the first sentence is not there at all, so nothing is.
TEST_F(Sentences, AreNotFoundWithoutTheFirst) {
    AddSentences(transcriber, {{"fhfhfhfhfhfhfhfh"}, {"s"}});
    Speak({0, 3, 0});
    EXPECT_EQ(Search(), kNoError);
    EXPECT_THAT(TextOffsets(), IsEmpty());
}

TEST_F(Sentences, TakeTextsWithNothingToSay) {
    Speak({0, 3, 0});
    transcriber.transcribed = "..";
    transcriber.tokens.Add(kPunctuationToken, 0, 1, {{{"x"}}});
    recording_sink progress;
    EXPECT_EQ(Search(&progress), kNoError);
    EXPECT_THAT(progress.calls, testing::Contains(testing::Pair(0u, 0u)));
    stream.next = 0;
    transcriber.tokens.Add(kWordToken, 0, 1, {});
    EXPECT_EQ(Search(), kNoError);
    EXPECT_THAT(TextOffsets(), ElementsAre(0)) << "of any length, in the silence";
}

TEST_F(Sentences, AnswerWhatGoesWrong) {
    AddSentences(transcriber, {{"sAAt"}});
    Speak({0, 3, 2, 6, 0}, 10);
    recording_sink cancel(0);
    EXPECT_EQ(Search(&cancel), kUserCancelled);
    EXPECT_THAT(cancel.calls, ElementsAre(testing::Pair(100u, 150u)));
    stream.next = 0;
    stream.slowAt = 42;
    EXPECT_EQ(Search(&cancel), kUserCancelled);
    EXPECT_EQ(cancel.calls.back().first, 42u) << "at half a second";
    stream.slowAt = SIZE_MAX;
    stream.next = 0;
    stream.failAt = 70;
    EXPECT_EQ(Search(), stream.failure);
    EXPECT_THAT(TextOffsets(), IsEmpty());

    stream.failAt = SIZE_MAX;
    for (const auto& [phones, states] : {std::pair{86, 3}, std::pair{3, 2}, std::pair{3, 4}}) {
        SCOPED_TRACE(testing::Message() << phones << ' ' << states);
        std::vector<std::string> labels(static_cast<size_t>(phones), "x");
        model = MakeLikelihoodModel(labels, 0.5f, states);
        stream.next = 0;
        EXPECT_EQ(Search(), kOutOfRange);
    }
}

TEST_F(Sentences, FitSmallModelsAndThoseWithTheMostPhonemes) {
    for (const size_t phones : {size_t{4}, size_t{85}}) {
        SCOPED_TRACE(phones);
        std::vector<std::string> labels = {"x", "AA", "s"};
        for (size_t i = labels.size(); i < phones; ++i) {
            labels.push_back({static_cast<char>('A' + i / 26), static_cast<char>('0' + i % 26)});
        }
        labels.back() = "t"; // of 85 the last one: states 252 to 254
        model = MakeModel(labels);
        stream = list_stream();
        transcriber = {};
        results.clear();
        AddSentences(transcriber, {{"sAAt"}});
        Speak({0, 1, 0, 2, 1, phones - 1, 0, 1, 0});
        EXPECT_EQ(Search(), kNoError);
        ASSERT_THAT(TextOffsets(), ElementsAre(0));
        EXPECT_NEAR(results[0].start, 270, 10);
        EXPECT_NEAR(results[0].end, 540, 30);
    }
}

// The background searches with the kept arithmetic of their states, what counts as entering and
// leaving a sentence, and that no limit of durations is looked at.
TEST(SentenceViterbi, AgreesWithTryingEverything) {
    Noise noise(3);
    int found = 0;
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        const auto model = MakeModel();
        ready_transcriber transcriber;
        std::vector<std::vector<std::string>> sentences(1 + noise.NextU32() % 3);
        for (std::vector<std::string>& words : sentences) {
            words.resize(1 + noise.NextU32() % 2);
            for (std::string& word : words) {
                for (uint32_t i = 1 + noise.NextU32() % 2; i > 0; --i) {
                    word += kLabels[1 + noise.NextU32() % 6];
                }
            }
        }
        AddSentences(transcriber, sentences);
        if (round % 2 == 0) { // several ways in
            transcriber.tokens.Add(kWordToken, 50, 51, {{{"s", "tAA", "h"}}, {{"t", "f"}}});
        }
        list_stream stream;
        for (int t = 0; t < 70; ++t) {
            std::vector<double> likelihoods;
            for (size_t s = 0; s < kStates; ++s) {
                likelihoods.push_back(std::pow(10.0, noise.Next(-3, 0)));
            }
            stream.Add(likelihoods);
        }

        quib_allocator pool(32768);
        std::vector<uint32_t> starts;
        std::vector<uint32_t> ends;
        state_graph_builder builder(*model, pool);
        builder.AddMarkers(transcriber.tokens.markers, true, starts, ends);
        const log_state_graph graph =
            log_state_graph::FromProbabilities(builder.CopyGraph(), builder.StateCount());
        const forward_graph forward = forward_graph::FromLogGraph(graph, pool);
        phone_durations durations;
        const std::vector<word_span> spans = BuildWordSpans(transcriber.tokens.markers, transcriber,
                                                            forward, graph, *model, durations);

        CConcreteSyncMarkerCollection results;
        ASSERT_EQ(SentenceViterbi(500, *model, forward, spans, stream, nullptr, 30, results),
                  kNoError);
        stream.next = 0;
        const literal_sentence_search literal(*model, graph, spans, stream);
        const std::vector<literal_place> expected = LiteralChain(literal.Places());
        ASSERT_EQ(results.GetSize(), static_cast<int32_t>(expected.size()));
        for (int32_t i = 0; i < results.GetSize(); ++i) {
            const literal_place& place = expected[static_cast<size_t>(i)];
            EXPECT_EQ(results[i].start, static_cast<int32_t>(place.start) * 10 + 300);
            EXPECT_EQ(results[i].end, static_cast<int32_t>(place.end) * 10 + 300);
            EXPECT_FLOAT_EQ(results[i].score, static_cast<float>(place.score));
            EXPECT_EQ(results[i].text_offset,
                      static_cast<int32_t>(spans[place.span].first->text_start));
        }
        found += results.GetSize();
    }
    EXPECT_GT(found, 60);
}

} // namespace
} // namespace tessarin::test
