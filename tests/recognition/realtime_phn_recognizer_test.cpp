#include "recognition/live/realtime_phn_recognizer.h"

#include <chrono>
#include <cmath>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "features/scripted_pcm_stream.h"
#include "features/test_descriptors.h"
#include "fixtures.h"
#include "recognition/live/live_search.h"
#include "recognition/textless_phn_recognizer.h"
#include "results/concrete_sync_marker_collection.h"
#include "support/signals.h"

namespace tessarin::test {
namespace {

constexpr uint32_t kRate = 16000;

/// The sounds that the model knows, as `ms` of audio.
std::vector<float> Sound(const std::string& label, int ms, uint32_t rateHz = kRate) {
    const size_t count = rateHz / 1000 * static_cast<size_t>(ms);
    if (label == "AA") {
        return Sine(count, 400, rateHz, 6000);
    }
    if (label == "IY") {
        return Sine(count, 2500, rateHz, 6000);
    }
    return label == "s" ? WhiteNoise(count, 3000, 5) : WhiteNoise(count, 20, 9);
}

std::vector<int16_t> Sounds(const std::vector<std::string>& labels, int msEach,
                            uint32_t rateHz = kRate) {
    std::vector<int16_t> samples;
    for (const std::string& label : labels) {
        for (const float sample : Sound(label, msEach, rateHz)) {
            samples.push_back(static_cast<int16_t>(sample));
        }
    }
    return samples;
}

/// A stream over `samples` as a recording.
struct recording {
    recording(const std::vector<float>& samples, const CSpectralFeatureDescriptor& descriptor)
        : reader(samples) {
        EXPECT_EQ(spectral.Init2(&reader, 1, &descriptor), 0);
        reader.Start();
    }
    ~recording() { spectral.SetSource(nullptr); }

    ScriptedPcmStream reader;
    CSpectralStream spectral;
};

/// A model of four sounds, wide enough that no observation is impossible.
std::unique_ptr<CAccousticHMM> SoundModel() {
    auto model = MakeLikelihoodModel({"x", "AA", "IY", "s"}, 0.8f);
    SetMelBands(model->descriptor, 24);
    model->descriptor.numFeatures = 15;
    for (size_t phone = 0; phone < 4; ++phone) {
        recording sound(Sound(model->labels[phone], 200), model->descriptor);
        std::vector<float> features(kObservationScratch);
        float energy = 0.0f;
        for (int i = 0; i < 10; ++i) { // the tenth has sound all around it
            EXPECT_EQ(sound.spectral.GetObservation(features.data(), &energy), 0);
        }
        features.resize(15);
        for (CAccousticHMMState& state : model->models[phone].states) {
            state.mixtures[0].mean = features;
            state.mixtures[0].inverseCovariance.assign(15, 0.02f);
        }
        for (size_t state = phone * 3; state < phone * 3 + 3; ++state) {
            model->transitions[state][state] = 0.8f;
            if (state % 3 < 2) {
                model->transitions[state][state + 1] = 0.2f;
            }
            for (size_t to = 0; state % 3 == 2 && to < 12; to += 3) {
                model->transitions[state][to] = 0.05f;
            }
        }
    }
    model->AnalyseTopology();
    model->BuildScoring();
    return model;
}

/// How many observations can be made of so much audio, if a read waits for whole hops.
size_t ObservationsIn(size_t samples) {
    return (samples - 352) / 160 - 2; // five frames ahead of the first, which counts as three
}

bool WaitForPending(CRealtimePhnRecognizer& recognizer, size_t frames) {
    using clock = std::chrono::steady_clock;
    const auto limit = clock::now() + std::chrono::seconds(60);
    while (recognizer.GetPendingFrames() < frames && clock::now() < limit) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return recognizer.GetPendingFrames() >= frames;
}

void Push(CRealtimePhnRecognizer& recognizer, const std::vector<int16_t>& samples,
          size_t blockBytes = 640) {
    const auto* data = reinterpret_cast<const uint8_t*>(samples.data());
    const size_t size = samples.size() * 2;
    for (size_t i = 0; i < size; i += blockBytes) {
        const auto count = static_cast<uint32_t>(std::min(blockBytes, size - i));
        ASSERT_EQ(recognizer.WriteBytes(data + i, count), 0);
        ASSERT_EQ(recognizer.WriteBytes(data, 0), 0);
    }
}

/// "label start end" of each marker.
std::vector<std::string> Lines(ISyncResultsCollection& results) {
    std::vector<std::string> lines;
    for (const CSyncMarker* marker = results.begin(); marker != results.end(); ++marker) {
        lines.push_back(std::string(marker->label) + " " + std::to_string(marker->start) + " " +
                        std::to_string(marker->end));
    }
    return lines;
}

class RealtimeRecognizer : public testing::Test {
protected:
    void Begin(int32_t rateHz = kRate, int32_t bits = 16, int32_t channels = 1) {
        ASSERT_EQ(recognizer.Init(rateHz, bits, channels, 0.0, model.get()), 0);
        ASSERT_EQ(recognizer.Start(), 0);
    }

    std::unique_ptr<CAccousticHMM> model = SoundModel();
    CConcreteSyncMarkerCollection results;
    CRealtimePhnRecognizer recognizer;
};

TEST_F(RealtimeRecognizer, AcceptsWhatMicrophonesGive) {
    struct {
        int32_t rateHz, bits, channels, code;
    } const cases[] = {{4000, 16, 1, 0},  {50000, 8, 2, 0},   {3999, 16, 1, 2},
                       {50001, 16, 1, 2}, {16000, 12, 1, 2},  {16000, 24, 1, 2},
                       {16000, 16, 0, 2}, {16000, 16, -1, 2}, {16000, 16, 65537, 2}};
    for (const auto& [rateHz, bits, channels, code] : cases) {
        SCOPED_TRACE(rateHz);
        EXPECT_EQ(recognizer.Init(rateHz, bits, channels, 0.1, model.get()), code);
        CRealtimePhnRecognizer unused;
        EXPECT_EQ(unused.Init(rateHz, bits, channels, 0.1, model.get()), code);
        EXPECT_EQ(unused.IsStopped(), code != 0); // stopped by Stop and by failure only
        EXPECT_EQ(recognizer.Start(), code == 0 ? 0 : kNotInitialized);
        EXPECT_EQ(recognizer.IsActive(), code == 0 ? 1u : 0u);
        recognizer.Stop();
    }
    for (const double latency : {std::nan(""), -1.0, 1e300}) {
        EXPECT_EQ(recognizer.Init(16000, 16, 1, latency, model.get()), 0);
    }
    EXPECT_EQ(recognizer.Init(16000, 16, 1, 0.1, nullptr), kInvalidArgument);
    std::vector<std::string> labels(86, "x");
    const auto large = MakeLikelihoodModel(labels); // 258 states
    SetMelBands(large->descriptor, 24);
    EXPECT_EQ(recognizer.Init(16000, 16, 1, 0.1, large.get()), kOutOfRange);
    CAccousticHMM empty;
    EXPECT_NE(recognizer.Init(16000, 16, 1, 0.1, &empty), 0);
    CRealtimePhnRecognizer fresh;
    EXPECT_EQ(fresh.Start(), kNotInitialized);
    EXPECT_FALSE(fresh.FlushResults(&results, -1));
    EXPECT_EQ(fresh.WriteBytes("ab", 2), 0); // nobody listens
    EXPECT_EQ(fresh.WriteBytes("ab", 0x80000000u), kOutOfRange);
}

/// What flushes of a recognizer give while audio comes in by and by.
std::vector<std::string> FlushesOf(CRealtimePhnRecognizer& recognizer, CAccousticHMM& model,
                                   const std::vector<int16_t>& samples, int32_t rateHz,
                                   size_t blockBytes, bool waits) {
    EXPECT_EQ(recognizer.Init(rateHz, 16, 1, 0.0, &model), 0);
    EXPECT_EQ(recognizer.Start(), 0);
    EXPECT_EQ(recognizer.IsActive(), 1u);
    CConcreteSyncMarkerCollection results;
    std::vector<std::string> all;
    const size_t half = samples.size() / 2;
    for (const auto& part : {std::vector<int16_t>(samples.begin(), samples.begin() + half),
                             std::vector<int16_t>(samples.begin() + half, samples.end())}) {
        Push(recognizer, part, blockBytes);
        if (waits) { // until the worker has heard all that it can
            size_t before = 0;
            do {
                before = recognizer.GetPendingFrames();
                std::this_thread::sleep_for(std::chrono::milliseconds(150));
            } while (recognizer.GetPendingFrames() != before);
        }
        all.push_back(std::to_string(recognizer.GetPendingFrames()));
        EXPECT_TRUE(recognizer.FlushResults(&results, -1));
        const std::vector<std::string> lines = Lines(results);
        all.insert(all.end(), lines.begin(), lines.end());
    }
    recognizer.Stop();
    EXPECT_EQ(recognizer.IsActive(), 0u);
    return all;
}

TEST_F(RealtimeRecognizer, HearsTheSameWithoutAWorker) {
    const auto samples = Sounds({"x", "AA", "s", "IY", "AA", "x", "s", "x"}, 150);
    CRealtimePhnRecognizer alone(false);
    for (const int32_t rateHz : {16000, 8000, 48000, 44100, 11025, 22050}) {
        SCOPED_TRACE(rateHz);
        const auto expected = FlushesOf(recognizer, *model, samples, rateHz, 640, true);
        EXPECT_EQ(FlushesOf(alone, *model, samples, rateHz, 640, false), expected);
        EXPECT_EQ(FlushesOf(alone, *model, samples, rateHz, 7, false), expected);
        // A second run begins like the first.
        EXPECT_EQ(alone.Start(), 0);
        Push(alone, samples);
        EXPECT_GT(alone.GetPendingFrames(), 0u);
    }
}

TEST_F(RealtimeRecognizer, HearsWhatTheFreeSearchHears) {
    model->hasLongTransitions = 1; // so that all transitions are tried
    const auto samples = Sounds({"x", "AA", "s", "IY", "AA", "x"}, 150);
    const std::vector<float> asFloats(samples.begin(), samples.end());
    recording whole(asFloats, model->descriptor);
    const size_t frames = ObservationsIn(samples.size());
    whole.spectral.SetMaxObservations(static_cast<uint32_t>(frames));
    CConcreteSyncMarkerCollection expected;
    CTextlessPhnRecognizer textless;
    ASSERT_EQ(textless.RecognizePhonemes(&whole.spectral, model.get(), nullptr, &expected), 0);
    ASSERT_EQ(expected.size(), 6);
    for (const size_t blockBytes : {1u, 3u, 320u, 100000u}) {
        SCOPED_TRACE(blockBytes);
        Begin();
        Push(recognizer, samples, blockBytes);
        ASSERT_TRUE(WaitForPending(recognizer, frames));
        ASSERT_TRUE(recognizer.FlushResults(&results, 1000000));
        EXPECT_EQ(Lines(results), Lines(expected));
        for (int32_t i = 0; i < 5; ++i) {
            EXPECT_EQ(results[i].score, std::trunc(expected[i].score));
        }
        EXPECT_FALSE(recognizer.FlushResults(&results, 1000000)); // nothing more came
        EXPECT_EQ(recognizer.GetPendingFrames(), 0u);
    }
}

TEST_F(RealtimeRecognizer, HearsAnyFormat) {
    struct {
        uint32_t rateHz;
        uint16_t bits, channels;
    } const formats[] = {{44100, 16, 2}, {8000, 16, 1}, {16000, 8, 1}, {48000, 16, 3}};
    for (const auto& [rateHz, bits, channels] : formats) {
        SCOPED_TRACE(rateHz);
        const auto mono = Sounds({"x", "AA", "x"}, 300, rateHz);
        std::vector<uint8_t> bytes;
        for (const int16_t sample : mono) {
            for (uint16_t channel = 0; channel < channels; ++channel) {
                const int16_t value = channel == 0 ? sample : int16_t{9999};
                if (bits == 16) {
                    bytes.push_back(static_cast<uint8_t>(value & 0xff));
                }
                bytes.push_back(static_cast<uint8_t>((value >> 8) + (bits == 8 ? 128 : 0)));
            }
        }
        Begin(static_cast<int32_t>(rateHz), bits, channels);
        ASSERT_EQ(recognizer.WriteBytes(bytes.data(), static_cast<uint32_t>(bytes.size())), 0);
        ASSERT_TRUE(WaitForPending(recognizer, 80));
        ASSERT_TRUE(recognizer.FlushResults(&results, 1000000));
        ASSERT_GE(results.size(), 3);
        EXPECT_STREQ(results[1].label, "AA");
        EXPECT_NEAR(results[1].start, 300, 40);
        EXPECT_NEAR(results[1].end, 600, 40);
    }
}

TEST_F(RealtimeRecognizer, CutsOffAtFourFifthsOfTheBand) {
    const auto energyOf = [&](double hz) {
        realtime_audio_chain chain;
        const PCMFormat format{48000u << 16, 16, 1};
        EXPECT_EQ(chain.Init(format, model->descriptor), 0);
        chain.spectral.Restart();
        std::vector<int16_t> samples;
        for (const float sample : Sine(24000, hz, 48000, 8000)) {
            samples.push_back(static_cast<int16_t>(sample));
        }
        EXPECT_EQ(chain.input.AddBuffer(samples.data(), 48000), 0);
        std::vector<float> features(kObservationScratch);
        float energy = 0.0f;
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(chain.spectral.GetObservation(features.data(), &energy), 0);
        }
        return energy;
    };
    EXPECT_NEAR(energyOf(6400) / energyOf(500), 0.5, 0.05); // half way between pass and stop
}

TEST_F(RealtimeRecognizer, FlushesLeaveTheRecentPast) {
    Begin();
    EXPECT_FALSE(recognizer.GetMicVisemix(&results, 100));
    Push(recognizer, Sounds({"x", "AA", "IY"}, 200));
    const size_t frames = ObservationsIn(9600);
    ASSERT_TRUE(WaitForPending(recognizer, frames));
    EXPECT_FALSE(recognizer.GetMicVisemix(nullptr, 100));
    EXPECT_FALSE(recognizer.GetMicVisemix(&results, 300)); // 550 ms are less than twice that
    EXPECT_EQ(recognizer.GetPendingFrames(), frames);
    ASSERT_TRUE(recognizer.GetMicVisemix(&results, 200));
    EXPECT_EQ(recognizer.GetPendingFrames(), 20u);
    ASSERT_GE(results.size(), 2);
    EXPECT_EQ(results[0].start, 5);
    EXPECT_EQ(results[results.size() - 1].end, static_cast<int32_t>(frames - 20) * 10 + 5);
    EXPECT_FALSE(recognizer.GetMicVisemix(&results, 200)); // that is all for now
    // Times count from each flush; -1 and other ends before what is pending take all of it.
    ASSERT_TRUE(recognizer.FlushResults(&results, 7));
    EXPECT_EQ(results[0].start, 5);
    EXPECT_EQ(results[results.size() - 1].end, 205);
    EXPECT_EQ(recognizer.GetPendingFrames(), 0u);
    EXPECT_FALSE(recognizer.FlushResults(&results, -1));
    EXPECT_FALSE(recognizer.SetResultOverlap(-1));
    EXPECT_TRUE(recognizer.SetResultOverlap(0));
}

TEST_F(RealtimeRecognizer, StartBeginsAnew) {
    Begin();
    Push(recognizer, Sounds({"IY"}, 400));
    ASSERT_TRUE(WaitForPending(recognizer, 10));
    Begin(8000); // another format
    Push(recognizer, Sounds({"AA"}, 400, 8000));
    ASSERT_TRUE(WaitForPending(recognizer, 30));
    ASSERT_TRUE(recognizer.FlushResults(&results, 1000000));
    EXPECT_STREQ(results[0].label, "AA");
    recognizer.Stop();
    EXPECT_EQ(recognizer.IsActive(), 0u);
    EXPECT_FALSE(recognizer.FlushResults(&results, 1000000));
    EXPECT_TRUE(recognizer.StartThread()); // which is not Start, and has nothing to do
    recognizer.Stop();
    EXPECT_EQ(recognizer.GetPendingFrames(), 0u);
}

TEST_F(RealtimeRecognizer, NothingOfARunReachesTheNext) {
    const auto flushOf = [&](CRealtimePhnRecognizer& live) {
        live.SetResultOverlap(80);
        const auto samples = Sounds({"x", "IY", "s"}, 150);
        Push(live, samples);
        EXPECT_TRUE(WaitForPending(live, ObservationsIn(samples.size())));
        EXPECT_TRUE(live.FlushResults(&results, 1000000));
        std::vector<std::string> lines = Lines(results);
        for (const CSyncMarker& marker : static_cast<TArray<CSyncMarker>&>(results)) {
            lines.push_back(std::to_string(marker.score));
        }
        return lines;
    };
    Begin();
    const std::vector<std::string> first = flushOf(recognizer);
    ASSERT_EQ(recognizer.Start(), 0); // of a run that has flushed and goes on
    Push(recognizer, Sounds({"AA", "s"}, 300));
    ASSERT_TRUE(WaitForPending(recognizer, 30));
    ASSERT_TRUE(recognizer.FlushResults(&results, 250)); // and of one that has audio left
    recognizer.Stop();
    ASSERT_EQ(recognizer.Start(), 0);
    EXPECT_EQ(flushOf(recognizer), first);
}

/// Reports which search it was led to.
class curious_recognizer final : public CRealtimePhnRecognizer {
public:
    ~curious_recognizer() override { Stop(); }
    void Viterbi() override {
        full = true;
        CRealtimePhnRecognizer::Viterbi();
    }
    void ViterbiModel0() override {
        full = false;
        CRealtimePhnRecognizer::ViterbiModel0();
    }

    std::atomic<bool> full = false;
};

TEST_F(RealtimeRecognizer, ChoosesTheSearchThatTheModelAllows) {
    curious_recognizer curious;
    ASSERT_EQ(curious.Init(16000, 16, 1, 0, model.get()), 0);
    ASSERT_EQ(curious.Start(), 0);
    Push(curious, Sounds({"AA"}, 200));
    ASSERT_TRUE(WaitForPending(curious, 5));
    EXPECT_FALSE(curious.full);
    EXPECT_GT(RealtimeSearchNs(), 0);
    curious.Stop();
    model->transitions[3][5] = 0.1f;
    model->AnalyseTopology();
    ASSERT_EQ(curious.Start(), 0);
    Push(curious, Sounds({"AA"}, 200));
    ASSERT_TRUE(WaitForPending(curious, 5));
    EXPECT_TRUE(curious.full);
}

TEST_F(RealtimeRecognizer, LatencyHoldsFlushesBackUntilTheFirstStart) {
    CCritSection lock;
    live_run run(*model, 10.0, 3, lock);
    for (const bool isHeldBack : {true, true, true, false}) {
        EXPECT_EQ(run.IsHeldBack(), isHeldBack);
        run.heard.Push(run.heard.TakeRow(12), 0, 0.0f, {});
    }
    // A thread that was not begun by Start reads silence without end from the closed chain.
    curious_recognizer early;
    constexpr double kTwoMonths = 5e6;
    ASSERT_EQ(early.Init(16000, 16, 1, kTwoMonths, model.get()), 0);
    ASSERT_TRUE(early.StartThread());
    ASSERT_TRUE(WaitForPending(early, 5));
    EXPECT_FALSE(early.FlushResults(&results, -1));
    // Kept: Start forgets the latency.
    ASSERT_EQ(early.Start(), 0);
    Push(early, Sounds({"AA"}, 200));
    ASSERT_TRUE(WaitForPending(early, 5));
    EXPECT_TRUE(early.FlushResults(&results, -1));
}

TEST_F(RealtimeRecognizer, StopsAtAnyMoment) {
    using clock = std::chrono::steady_clock;
    const auto samples = Sounds({"x", "AA", "IY"}, 400);
    const auto begin = clock::now();
    for (int i = 0; i < 60; ++i) {
        model->descriptor.flags = i < 40 ? 0 : kCalcSpectralMean; // nothing to rewind
        CRealtimePhnRecognizer short_lived;
        ASSERT_EQ(short_lived.Init(16000, 16, 1, 0, model.get()), 0);
        ASSERT_EQ(short_lived.Start(), 0);
        if (i % 3 != 0) { // else it waits for the first sample
            Push(short_lived, samples, 7777);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(i * 40));
        if (i % 2 == 0) {
            short_lived.Stop();
            short_lived.Stop();
            EXPECT_EQ(short_lived.Start(), 0);
        }
    }
    EXPECT_LT(clock::now() - begin, std::chrono::seconds(60));
}

TEST_F(RealtimeRecognizer, ThreadsMayPushFlushAndStopAtOnce) {
    // Two recognizers share the model; each has a thread that pushes, one that asks, one that
    // stops.
    const auto samples = Sounds({"x", "AA", "IY", "s"}, 100);
    const auto live = [&] {
        CRealtimePhnRecognizer shared;
        EXPECT_EQ(shared.Init(16000, 16, 1, 0, model.get()), 0);
        std::atomic<bool> isOver = false;
        std::thread pusher([&] {
            while (!isOver) {
                Push(shared, samples, 321);
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            }
        });
        std::thread asker([&] {
            CConcreteSyncMarkerCollection heard;
            while (!isOver) {
                shared.SetResultOverlap(20);
                shared.GetMicVisemix(&heard, 50);
                shared.FlushResults(&heard, 70);
                shared.IsActive();
                std::this_thread::sleep_for(std::chrono::microseconds(100));
            }
        });
        for (int i = 0; i < 10; ++i) {
            EXPECT_EQ(shared.Start(), 0);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            if (i % 2 == 0) {
                shared.Stop();
            }
        }
        isOver = true;
        pusher.join();
        asker.join();
    };
    std::thread other(live);
    live();
    other.join();
}

} // namespace
} // namespace tessarin::test
