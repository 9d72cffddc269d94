#include "apps/train/speech_changes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "apps/train/biquad.h"

namespace tessarin::training {
namespace {

constexpr double kPi = std::numbers::pi;

double FromDb(double db) {
    return std::pow(10.0, db / 20.0);
}

void Scale(std::vector<float>& samples, double factor) {
    for (float& sample : samples) {
        sample = static_cast<float>(sample * factor);
    }
}

double MeanSquare(const std::vector<float>& samples) {
    double sum = 0.0;
    for (const float sample : samples) {
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    }
    return samples.empty() ? 0.0 : sum / static_cast<double>(samples.size());
}

/// The mean square over the stretches that are within 30 dB of the loudest one.
double ActiveMeanSquare(const recording& speech) {
    const auto stretch = static_cast<size_t>(speech.rate * 0.02);
    std::vector<double> powers;
    for (size_t start = 0; start + stretch <= speech.samples.size(); start += stretch) {
        const auto first = speech.samples.begin() + static_cast<ptrdiff_t>(start);
        powers.push_back(MeanSquare({first, first + static_cast<ptrdiff_t>(stretch)}));
    }
    if (powers.empty()) {
        return MeanSquare(speech.samples);
    }
    const double threshold = *std::ranges::max_element(powers) * 1e-3;
    double sum = 0.0;
    double count = 0.0;
    for (const double power : powers) {
        if (power >= threshold) {
            sum += power;
            count += 1.0;
        }
    }
    return sum / count;
}

/// Another microphone: a few broad peaks and dips, and a slope of the whole.
void Equalise(recording& speech, random_source& random) {
    for (int band = 0; band < 3; ++band) {
        const double frequency = random.LogUniform(120.0, 6500.0);
        biquad::Peak(speech.rate, frequency, random.Uniform(0.6, 2.0), random.Uniform(-8.0, 8.0))
            .Run(speech.samples);
    }
    biquad::HighShelf(speech.rate, random.LogUniform(800.0, 3000.0), random.Uniform(-7.0, 7.0))
        .Run(speech.samples);
}

/// The companding of telephone networks: 8 bits, finer for small values.
void CompandLikeTelephone(recording& speech) {
    constexpr double kMu = 255.0;
    constexpr double kPeak = 32768.0;
    for (float& sample : speech.samples) {
        const double level = std::min(std::abs(static_cast<double>(sample)) / kPeak, 1.0);
        const double coded = std::round(127.0 * std::log1p(kMu * level) / std::log1p(kMu));
        const double decoded = kPeak * std::expm1(coded / 127.0 * std::log1p(kMu)) / kMu;
        sample = static_cast<float>(std::copysign(decoded, static_cast<double>(sample)));
    }
}

std::vector<float> WhiteNoise(size_t count, random_source& random) {
    std::vector<float> noise(count);
    for (float& sample : noise) {
        sample = static_cast<float>(random.Gaussian());
    }
    return noise;
}

/// Noise of 3 dB less an octave: three poles and zeros, after P. Kellet.
void MakePink(std::vector<float>& noise) {
    double b0 = 0.0;
    double b1 = 0.0;
    double b2 = 0.0;
    for (float& sample : noise) {
        const double white = static_cast<double>(sample);
        b0 = 0.99765 * b0 + white * 0.0990460;
        b1 = 0.96300 * b1 + white * 0.2965164;
        b2 = 0.57000 * b2 + white * 1.0526913;
        sample = static_cast<float>(b0 + b1 + b2 + white * 0.1848);
    }
}

std::vector<float> Hum(size_t count, double rate, random_source& random) {
    const double mainsHz = random.Chance(0.5) ? 50.0 : 60.0;
    std::vector<float> noise = WhiteNoise(count, random);
    Scale(noise, 0.05);
    for (int harmonic = 1; harmonic <= 12; ++harmonic) {
        const double gain = random.Uniform(0.1, 1.0) / harmonic;
        const double phase = random.Uniform(0.0, 2.0 * kPi);
        const double step = 2.0 * kPi * mainsHz * harmonic / rate;
        for (size_t i = 0; i < count; ++i) {
            noise[i] += static_cast<float>(gain * std::sin(phase + step * static_cast<double>(i)));
        }
    }
    return noise;
}

std::vector<float> Babble(size_t count, const std::vector<recording>& voices,
                          random_source& random) {
    std::vector<float> noise(count);
    for (int speaker = 0; speaker < 6; ++speaker) {
        const std::vector<float>& voice = voices[random.Index(voices.size())].samples;
        const double level = std::sqrt(MeanSquare(voice));
        if (voice.empty() || level == 0.0) {
            continue;
        }
        const auto gain = static_cast<float>(random.Uniform(0.4, 1.0) / level);
        size_t place = random.Index(voice.size());
        for (float& sample : noise) {
            sample += gain * voice[place];
            place = place + 1 == voice.size() ? 0 : place + 1;
        }
    }
    return noise;
}

std::vector<float> Noise(noise_kind kind, size_t count, double rate,
                         const std::vector<recording>& voices, random_source& random) {
    if (kind == noise_kind::kBabble && !voices.empty()) {
        return Babble(count, voices, random);
    }
    if (kind == noise_kind::kHum) {
        return Hum(count, rate, random);
    }
    std::vector<float> noise = WhiteNoise(count, random);
    if (kind != noise_kind::kWhite) {
        MakePink(noise);
    }
    if (kind == noise_kind::kRumble) {
        biquad::LowPass(rate, 500.0, 0.7).Run(noise);
    }
    return noise;
}

/// Windowed sinc functions for interpolation at places between two samples, the place rounded to
/// 1/1024 of a sample. `cutoff` is the band as a share of the rate's own.
class interpolation_table {
public:
    static constexpr int kTaps = 32;

    explicit interpolation_table(double cutoff) : weights((kPhases + 1) * kTaps) {
        for (int phase = 0; phase <= kPhases; ++phase) {
            for (int tap = 0; tap < kTaps; ++tap) {
                const double fraction = static_cast<double>(phase) / kPhases;
                const double distance = tap - (kTaps / 2 - 1) - fraction;
                const double angle = kPi * distance * cutoff;
                const double sinc = std::abs(angle) < 1e-9 ? 1.0 : std::sin(angle) / angle;
                const double window = 0.5 + 0.5 * std::cos(2.0 * kPi * distance / kTaps);
                weights[static_cast<size_t>(phase * kTaps + tap)] =
                    static_cast<float>(cutoff * sinc * window);
            }
        }
    }

    const float* At(double fraction) const {
        return weights.data() + static_cast<size_t>(std::lround(fraction * kPhases)) * kTaps;
    }

private:
    static constexpr int kPhases = 1024;
    std::vector<float> weights;
};

/// Makes the level wander, as backgrounds and breaths do: a new target every quarter of a second,
/// up to `depthDb` to either side.
void LetLevelWander(std::vector<float>& noise, double rate, double depthDb, random_source& random) {
    const auto period = static_cast<size_t>(rate * 0.25);
    double fromDb = random.Uniform(-depthDb, depthDb);
    for (size_t start = 0; start < noise.size(); start += period) {
        const double toDb = random.Uniform(-depthDb, depthDb);
        const double ratio = std::pow(FromDb(toDb - fromDb), 1.0 / static_cast<double>(period));
        double gain = FromDb(fromDb);
        const size_t end = std::min(start + period, noise.size());
        for (size_t i = start; i < end; ++i, gain *= ratio) {
            noise[i] = static_cast<float>(gain * static_cast<double>(noise[i]));
        }
        fromDb = toDb;
    }
}

} // namespace

recording ChangeSpeed(const recording& original, double speed) {
    const interpolation_table table(std::min(1.0, 1.0 / speed));
    const auto source = static_cast<int64_t>(original.samples.size());
    recording result;
    result.rate = original.rate;
    result.samples.resize(static_cast<size_t>(static_cast<double>(source) / speed));
    for (size_t i = 0; i < result.samples.size(); ++i) {
        const double place = static_cast<double>(i) * speed;
        const auto whole = static_cast<int64_t>(place);
        const float* weights = table.At(place - static_cast<double>(whole));
        const int64_t first = whole - interpolation_table::kTaps / 2 + 1;
        const int64_t begin = std::max<int64_t>(0, -first);
        const int64_t end = std::min<int64_t>(interpolation_table::kTaps, source - first);
        float sum = 0.0f;
        for (int64_t tap = begin; tap < end; ++tap) {
            sum += weights[tap] * original.samples[static_cast<size_t>(first + tap)];
        }
        result.samples[i] = sum;
    }
    return result;
}

void AddEcho(recording& speech, double decayS, double directToReverberantDb,
             random_source& random) {
    constexpr int kReflections = 60;
    struct reflection {
        size_t delay;
        double gain;
    };
    std::array<reflection, kReflections> reflections{};
    double energy = 0.0;
    for (reflection& each : reflections) {
        const double seconds = random.Uniform(0.002, decayS * 0.6);
        each.delay = static_cast<size_t>(seconds * speech.rate);
        each.gain = random.Gaussian() * std::pow(10.0, -3.0 * seconds / decayS);
        energy += each.gain * each.gain;
    }
    const double scale = FromDb(-directToReverberantDb) / std::sqrt(energy);
    const std::vector<float> direct = speech.samples;
    for (const reflection& each : reflections) {
        const auto gain = static_cast<float>(each.gain * scale);
        for (size_t i = each.delay; i < direct.size(); ++i) {
            speech.samples[i] += gain * direct[i - each.delay];
        }
    }
}

void ChangeLevel(recording& speech, double db) {
    Scale(speech.samples, FromDb(db));
}

void BandLimitToTelephone(recording& speech) {
    biquad::HighPass(speech.rate, 300.0, 0.707).Run(speech.samples);
    for (const double q : {0.541, 1.307}) { // a Butterworth filter of the fourth order
        biquad::LowPass(speech.rate, 3400.0, q).Run(speech.samples);
    }
}

void AddNoise(recording& speech, noise_kind kind, double snrDb, double wanderDb,
              const std::vector<recording>& voices, random_source& random) {
    std::vector<float> noise = Noise(kind, speech.samples.size(), speech.rate, voices, random);
    LetLevelWander(noise, speech.rate, wanderDb, random);
    const double power = MeanSquare(noise);
    if (power == 0.0) {
        return;
    }
    const double gain = std::sqrt(ActiveMeanSquare(speech) / power) * FromDb(-snrDb);
    for (size_t i = 0; i < noise.size(); ++i) {
        speech.samples[i] += static_cast<float>(gain * static_cast<double>(noise[i]));
    }
}

void RoundToSamples(recording& speech) {
    for (float& sample : speech.samples) {
        sample = std::clamp(std::round(sample), -32768.0f, 32767.0f);
    }
}

changed_copy ChangeSpeech(const recording& original, const std::vector<recording>& voices,
                          const noise_shares& shares, random_source& random) {
    changed_copy copy;
    copy.speed = random.LogUniform(0.84, 1.16);
    copy.speech = ChangeSpeed(original, copy.speed);
    if (random.Chance(0.8)) {
        Equalise(copy.speech, random);
    }
    if (random.Chance(0.35)) {
        const double decayS = random.LogUniform(0.12, 0.5);
        AddEcho(copy.speech, decayS, random.Uniform(2.0, 18.0), random);
    }
    constexpr std::array kKinds = {noise_kind::kWhite,  noise_kind::kPink, noise_kind::kPink,
                                   noise_kind::kRumble, noise_kind::kHum,  noise_kind::kBabble,
                                   noise_kind::kWhite};
    const noise_kind kind = kKinds[random.Index(kKinds.size())];
    const double snrDb =
        random.Chance(shares.loud) ? random.Uniform(4.0, 28.0) : random.Uniform(28.0, 55.0);
    const double wanderDb = random.Chance(0.5) ? random.Uniform(2.0, 8.0) : 0.0;
    if (!random.Chance(shares.none)) {
        AddNoise(copy.speech, kind, snrDb, wanderDb, voices, random);
    }
    if (random.Chance(0.2)) {
        BandLimitToTelephone(copy.speech);
        if (random.Chance(0.5)) {
            CompandLikeTelephone(copy.speech);
        }
    }
    ChangeLevel(copy.speech, random.Uniform(-22.0, 8.0));
    RoundToSamples(copy.speech);
    return copy;
}

} // namespace tessarin::training
