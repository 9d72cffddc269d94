#include "commands/quib_accoustic_cmd_ctrl.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "audio/host_stream.h"
#include "features/observation_chain.h"
#include "features/spectral_stream.h"
#include "features/test_descriptors.h"
#include "model/accoustic_hmm.h"
#include "recognition/fixtures.h"
#include "support/byte_builder.h"
#include "support/signals.h"

namespace tessarin {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

constexpr int32_t kFeatures = 15;
constexpr float kFloorDb = 20.0f;
constexpr PCMFormat kFormat = {16000u << 16, 16, 1};

/// A controller with its reference.
struct commander {
    explicit commander(float energyFloor = 0.0f) : controller(*new CQuibAccousticCmdCtrl) {
        controller.AddRef();
        test::SetMelBands(model.descriptor, 24);
        EXPECT_EQ(controller.InitFeatures(&model, energyFloor), kNoError);
    }
    ~commander() { controller.Release(); }

    uint32_t AddSample(test::list_stream stream) {
        return controller.AddCommandFromStream(&stream);
    }
    uint32_t Recognize(test::list_stream stream, float* distance = nullptr) {
        return controller.RecognizeStream(&stream, nullptr, distance);
    }
    uint32_t RecognizeLive(bool finished, float* distance, std::string* lines = nullptr) {
        testing::internal::CaptureStdout();
        const uint32_t id = controller.RecognizeLive(finished, distance);
        std::fflush(stdout);
        const std::string captured = testing::internal::GetCapturedStdout();
        if (lines != nullptr) {
            *lines = captured;
        }
        return id;
    }
    test::bytes Data(uint32_t id) {
        test::bytes data(controller.GetCommandData(id, nullptr));
        EXPECT_EQ(controller.GetCommandData(id, data.data()), data.size());
        return data;
    }

    CAccousticHMM model;
    CQuibAccousticCmdCtrl& controller;
};

/// Random observations with an energy of 30.
test::list_stream RandomStream(uint32_t seed, size_t count = 12) {
    test::Noise noise(seed);
    test::list_stream stream;
    for (size_t i = 0; i < count; ++i) {
        std::vector<float> features(kFeatures);
        std::generate(features.begin(), features.end(), [&] { return noise.Next(-3, 3); });
        stream.observations.push_back(features);
        stream.energies.push_back(30.0f);
    }
    return stream;
}

/// As a second speaker would say it: every other frame twice, all a little different.
test::list_stream Repeated(const test::list_stream& stream) {
    test::Noise noise(99);
    test::list_stream other;
    for (size_t i = 0; i < stream.observations.size(); ++i) {
        for (size_t times = 1 + i % 2; times > 0; --times) {
            std::vector<float> features = stream.observations[i];
            for (float& value : features) {
                value += noise.Next(-0.3f, 0.3f);
            }
            other.observations.push_back(features);
            other.energies.push_back(30.0f);
        }
    }
    return other;
}

/// Half a second of a gliding tone as 16-bit samples.
test::bytes Glide(double fromHz, double toHz) {
    test::ByteBuilder samples;
    double phase = 0.0;
    for (int i = 0; i < 8000; ++i) {
        phase += 2 * 3.14159265 * (fromHz + (toHz - fromHz) * i / 8000) / 16000;
        samples.U16(static_cast<uint16_t>(static_cast<int16_t>(8000 * std::sin(phase))));
    }
    return samples.Take();
}

uint32_t AddGlide(commander& host, double fromHz, double toHz) {
    test::HostStream audio(kFormat, Glide(fromHz, toHz));
    std::unique_ptr<CSpectralStream> stream;
    EXPECT_EQ(OpenObservationChain(&audio, host.model.descriptor, stream), kNoError);
    stream->SetProcessingFlags(kDecibelEnergy);
    return host.controller.AddCommandFromStream(stream.get());
}

TEST(AcousticCommands, LiveAsLongAsTheyHaveReferences) {
    IQuibAcousticCmdCtrl* controller = new CQuibAccousticCmdCtrl;
    // Kept: a new controller has no reference.
    EXPECT_EQ(controller->AddRef(), 1);
    EXPECT_EQ(controller->AddRef(), 2);
    EXPECT_EQ(controller->Release(), 1);
    EXPECT_EQ(controller->Release(), 0);
    EXPECT_EQ((new CQuibAccousticCmdCtrl)->Release(), 0);
}

TEST(AcousticCommands, AreFoundBySamples) {
    commander host;
    for (const uint32_t seed : {1, 2, 3}) {
        EXPECT_EQ(host.AddSample(RandomStream(seed)), seed);
    }
    float distance = 0.0f;
    for (const uint32_t seed : {1, 2, 3}) {
        EXPECT_EQ(host.Recognize(Repeated(RandomStream(seed)), &distance), seed);
        EXPECT_GT(distance, 0.0f);
        EXPECT_LT(distance, 0.5f);
        EXPECT_EQ(host.Recognize(RandomStream(seed), &distance), seed);
        EXPECT_EQ(distance, 0.0f);
    }
    // Kept: a disabled command is found all the same.
    host.controller.DisableCommand(2);
    EXPECT_EQ(host.Recognize(RandomStream(2)), 2u);
    host.controller.DeleteCommand(2);
    EXPECT_NE(host.Recognize(RandomStream(2)), 2u);
    EXPECT_EQ(host.AddSample(RandomStream(3)), 4u);
    EXPECT_EQ(host.Recognize(RandomStream(3)), 3u) << "the first of equals";
}

TEST(AcousticCommands, IgnoreWhatCannotBeCompared) {
    commander host(kFloorDb);
    test::list_stream silent = RandomStream(1);
    silent.energies.assign(silent.energies.size(), kFloorDb);
    EXPECT_EQ(host.AddSample(silent), 1u);
    float distance = 7.0f;
    EXPECT_EQ(host.Recognize(RandomStream(2), &distance), 0u);
    EXPECT_EQ(distance, std::numeric_limits<float>::max());

    // A sample with other features comes with the data of another model.
    const test::bytes foreign =
        test::ByteBuilder().U32(0).U32(9).U32(1).U32(2).U32(4).F32(1).F32(1).F32(0).F32(50).Take();
    EXPECT_EQ(host.controller.AddCommandFromData(foreign.data()), 2u);
    EXPECT_EQ(host.Recognize(RandomStream(2), &distance), 0u);
    EXPECT_EQ(distance, std::numeric_limits<float>::max());
    EXPECT_EQ(host.AddSample(RandomStream(2)), 3u);
    EXPECT_EQ(host.Recognize(RandomStream(2), &distance), 3u);

    distance = 7.0f;
    test::list_stream shortOne = RandomStream(2);
    std::fill(shortOne.energies.begin() + 2, shortOne.energies.end(), kFloorDb);
    EXPECT_EQ(host.Recognize(shortOne, &distance), 0u);
    test::list_stream broken = RandomStream(2);
    broken.failAt = 4;
    EXPECT_EQ(host.Recognize(broken, &distance), 0u);
    EXPECT_EQ(host.AddSample(broken), 0u);
    EXPECT_EQ(host.controller.RecognizeStream(nullptr, nullptr, &distance), 0u);
    EXPECT_EQ(host.controller.AddCommandFromStream(nullptr), 0u);
    EXPECT_EQ(distance, 7.0f);
}

TEST(AcousticCommands, SurviveSavingAndLoading) {
    commander host(kFloorDb);
    test::list_stream stream = RandomStream(1);
    stream.energies[0] = 1.0f;
    host.AddSample(RandomStream(5, 2));
    ASSERT_EQ(host.AddSample(stream), 2u);
    const test::bytes data = host.Data(2);
    ASSERT_EQ(data.size(), 20u + 12 * (kFeatures + 2) * 4);
    const test::bytes header =
        test::ByteBuilder().U32(0).U32(2).U32(12).U32(kFeatures).U32(kFeatures + 2).Take();
    EXPECT_TRUE(std::equal(header.begin(), header.end(), data.begin()));
    EXPECT_EQ(LoadLittleEndian<float>(&data[20]), stream.observations[0][0]);
    EXPECT_EQ(LoadLittleEndian<float>(&data[20 + 4 * (kFeatures + 1)]), 1.0f) << "energy";

    commander other(kFloorDb);
    // Kept: the stored id is not used.
    EXPECT_EQ(other.controller.AddCommandFromData(data.data()), 1u);
    test::bytes renumbered = data;
    renumbered[4] = 1;
    EXPECT_EQ(other.Data(1), renumbered);
    float distance = 7.0f;
    EXPECT_EQ(other.Recognize(stream, &distance), 1u);
    EXPECT_EQ(distance, 0.0f) << "the silent frame is out of both";

    EXPECT_EQ(host.controller.GetCommandData(3, nullptr), 0u);
    EXPECT_EQ(other.controller.AddCommandFromData(nullptr), 0u);
    for (const size_t place : {0, 3, 11, 12, 16}) { // version, count, features, stride
        test::bytes broken = data;
        broken[place] = 0x7F;
        EXPECT_EQ(other.controller.AddCommandFromData(broken.data()), 0u) << place;
    }
}

TEST(AcousticCommands, AreHeardLive) {
    commander host(kFloorDb);
    ASSERT_EQ(AddGlide(host, 300, 3000), 1u);
    ASSERT_EQ(AddGlide(host, 3000, 300), 2u);
    for (const bool rises : {true, false, true}) {
        SCOPED_TRACE(rises);
        ASSERT_EQ(host.controller.BeginUtterance(&kFormat), kNoError);
        const test::bytes audio = rises ? Glide(300, 3000) : Glide(3000, 300);
        float distance = 0.0f;
        std::string lines;
        for (size_t at = 0; at < audio.size(); at += 1600) { // 50 ms
            ASSERT_EQ(host.controller.ProcessAudio(&audio[at], 1600), kNoError);
            if (at % 3200 == 0) {
                host.RecognizeLive(false, &distance); // tables grow at any pace
            }
        }
        const uint32_t id = host.RecognizeLive(true, &distance, &lines);
        EXPECT_EQ(id, rises ? 1u : 2u);
        EXPECT_LT(distance, 0.3f);
        std::istringstream in(lines);
        for (uint32_t number = 1; number <= 2; ++number) {
            std::string mdl, frames;
            uint32_t printedId = 0;
            float printedDistance = 0.0f;
            uint32_t count = 0;
            in >> mdl >> printedId >> printedDistance >> frames >> count;
            EXPECT_THAT((std::vector<std::string>{mdl, frames}), ElementsAre("mdl", "frames:"));
            EXPECT_EQ(printedId, number);
            EXPECT_NEAR(count, 50u, 3u);
            if (number == id) {
                EXPECT_NEAR(printedDistance, distance, 1e-5);
            }
        }
        EXPECT_EQ(host.controller.ProcessAudio(audio.data(), 1600), kOutOfRange) << "finished";

        const test::bytes other = rises ? Glide(3000, 300) : Glide(300, 3000);
        for (const test::bytes& whole : {other, audio}) { // of which the one leaves no trace
            ASSERT_EQ(host.controller.BeginUtterance(&kFormat), kNoError);
            ASSERT_EQ(
                host.controller.ProcessAudio(whole.data(), static_cast<uint32_t>(whole.size())),
                kNoError);
            float atOnce = 0.0f;
            EXPECT_EQ(host.RecognizeLive(true, &atOnce) == id, whole == audio);
            EXPECT_EQ(atOnce == distance, whole == audio)
                << "how often it is asked makes no difference";
        }
    }
}

TEST(AcousticCommands, HearNothingInLittle) {
    commander host(kFloorDb);
    AddGlide(host, 300, 3000);
    float distance = 7.0f;
    std::string lines;
    EXPECT_EQ(host.controller.BeginUtterance(nullptr), kInvalidArgument);
    EXPECT_EQ(host.controller.ProcessAudio(nullptr, 10), kInvalidArgument);
    ASSERT_EQ(host.controller.BeginUtterance(&kFormat), kNoError);
    EXPECT_EQ(host.RecognizeLive(false, &distance, &lines), 0u);
    EXPECT_EQ(host.RecognizeLive(true, &distance, &lines), 0u);
    EXPECT_EQ(distance, 7.0f);
    EXPECT_EQ(lines, "");
    test::list_stream silent = RandomStream(1);
    silent.energies.assign(silent.energies.size(), 0.0f);
    host.AddSample(silent);
    ASSERT_EQ(host.controller.BeginUtterance(&kFormat), kNoError);
    const test::bytes audio = Glide(300, 3000);
    ASSERT_EQ(host.controller.ProcessAudio(audio.data(), static_cast<uint32_t>(audio.size())),
              kNoError);
    EXPECT_EQ(host.RecognizeLive(true, &distance, &lines), 1u);
    EXPECT_NE(lines.find("mdl 2 2.26855e+38 frames: 0\n"), std::string::npos) << lines;
}

} // namespace
} // namespace tessarin
