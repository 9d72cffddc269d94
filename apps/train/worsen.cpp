#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "apps/train/observations.h"
#include "apps/train/speech_changes.h"

using namespace tessarin::training;

namespace {

constexpr const char* kUsage =
    "usage: tessarin-worsen CONDITION RECORDING.wav\n"
    "\n"
    "Writes the first channel of a recording as it would sound under a bad condition, as raw "
    "16-bit\n"
    "little-endian samples, to the standard output. The same recording and condition give the "
    "same\n"
    "samples.\n"
    "\n"
    "  none                  as it is\n"
    "  noise-20 -10 -5       white noise, softer than the speech by so many dB\n"
    "  pink-10               pink noise\n"
    "  telephone             300 to 3400 Hz\n"
    "  echo                  a room that rings for 0.4 s, 6 dB below the direct sound\n"
    "  softer                by 20 dB\n"
    "  louder                by 10 dB, cut off at the largest sample\n"
    "  slower, faster        0.9 and 1.1 times as fast, with the pitch\n";

using change = std::function<void(recording&, random_source&)>;

change Noise(noise_kind kind, double snrDb) {
    return [=](recording& speech, random_source& random) {
        AddNoise(speech, kind, snrDb, 0.0, {}, random);
    };
}

change Level(double db) {
    return [=](recording& speech, random_source&) { ChangeLevel(speech, db); };
}

change Speed(double speed) {
    return [=](recording& speech, random_source&) { speech = ChangeSpeed(speech, speed); };
}

const std::map<std::string, change>& Conditions() {
    static const std::map<std::string, change> conditions = {
        {"none", [](recording&, random_source&) {}},
        {"noise-20", Noise(noise_kind::kWhite, 20.0)},
        {"noise-10", Noise(noise_kind::kWhite, 10.0)},
        {"noise-5", Noise(noise_kind::kWhite, 5.0)},
        {"pink-10", Noise(noise_kind::kPink, 10.0)},
        {"telephone", [](recording& speech, random_source&) { BandLimitToTelephone(speech); }},
        {"echo",
         [](recording& speech, random_source& random) { AddEcho(speech, 0.4, 6.0, random); }},
        {"softer", Level(-20.0)},
        {"louder", Level(10.0)},
        {"slower", Speed(0.9)},
        {"faster", Speed(1.1)},
    };
    return conditions;
}

bool WriteSamples(const recording& speech) {
    std::vector<uint8_t> bytes;
    bytes.reserve(2 * speech.samples.size());
    for (const float sample : speech.samples) {
        const auto value = static_cast<uint16_t>(static_cast<int16_t>(sample));
        bytes.push_back(static_cast<uint8_t>(value & 0xff));
        bytes.push_back(static_cast<uint8_t>(value >> 8));
    }
    return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() &&
           std::fflush(stdout) == 0;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 3 || !Conditions().contains(arguments[1])) {
        std::fputs(kUsage, stderr);
        return 1;
    }
    const std::string path = arguments[2];
    recording speech;
    if (!ReadRecording(path, speech)) {
        std::fprintf(stderr, "tessarin-worsen: %s cannot be read\n", path.c_str());
        return 2;
    }
    // What is random hangs on the name of the file alone, so that a corpus may be moved.
    random_source random(path.substr(path.find_last_of('/') + 1), 0);
    Conditions().at(arguments[1])(speech, random);
    RoundToSamples(speech);
    if (!WriteSamples(speech)) {
        std::fputs("tessarin-worsen: the samples cannot be written\n", stderr);
        return 2;
    }
    return 0;
}
