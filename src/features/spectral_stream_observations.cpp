// What CSpectralStream computes from a frame: energies, cepstra, observations and the mean.

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/guarded.h"
#include "base/timed_progress.h"
#include "features/delta_layouts.h"
#include "features/power_spectrum.h"
#include "features/spectral_feature_descriptor.h"
#include "features/spectral_stream.h"

namespace tessarin {

namespace {

// A louder frame is clipped or broken, and says nothing about the level of the speech.
constexpr float kMaxPlausibleRoot = 10000.0f;
constexpr uint32_t kProgressInterval = 1000;

} // namespace

error_code CSpectralStream::PrepareSpectrum() {
    const auto size = static_cast<size_t>(windowSize);
    const auto numBands = static_cast<size_t>(bands.GetNumBands());
    return Guarded([&] {
        if (spectrum.empty()) {
            spectrum.resize(std::max(2 * size, size / 2 + 1 + numBands));
        }
        return bands.Prepare(windowSize / 2, sampleRate) ? kNoError : kInvalidArgument;
    });
}

error_code CSpectralStream::CalcPowers(float* decibels, float* power) {
    if (window.empty()) {
        return kInvalidArgument;
    }
    error_code code = PrepareSpectrum();
    if (code == kNoError) {
        code = CalcFrameSpectrum(spectrum.data(), decibels);
    }
    if (code == kNoError) {
        *power = PowerSpectrum(spectrum, windowSize);
    }
    return code;
}

error_code CSpectralStream::CalcCepstrum(float* out, int32_t count, float* energy) {
    float decibels = 0.0f;
    float power = 0.0f;
    error_code code = CalcPowers(&decibels, &power);
    if (code != kNoError) {
        return code;
    }
    const std::span<float> energies = std::span(spectrum).subspan(
        static_cast<size_t>(windowSize) / 2 + 1, static_cast<size_t>(bands.GetNumBands()));
    bands.Apply(spectrum, energies);
    if ((processingFlags & kSubtractNoiseFloor) != 0) {
        code = Guarded([&] { noiseFloor.Reduce(energies); });
    }
    cosineTransform.Apply(energies, {out, static_cast<size_t>(numCepstra)});

    const float root = std::sqrt(power);
    *energy = (processingFlags & kDecibelEnergy) != 0 ? decibels : root;
    TrackEnergy(*energy, root);
    if (hasEnergy) {
        out[count] = decibels / 20.0f;
    }
    return code;
}

void CSpectralStream::TrackEnergy(float energy, float root) {
    if (energy > maxEnergy && root < kMaxPlausibleRoot) {
        maxEnergy = energy;
    }
    if (energy < minEnergy) {
        minEnergy = energy;
    }
}

error_code CSpectralStream::GetBandEnergies(float* out, uint32_t* count) {
    if (out == nullptr || count == nullptr) {
        return kInvalidArgument;
    }
    *count = 0;
    error_code code = EnsureSpectralMean();
    float decibels = 0.0f;
    float power = 0.0f;
    if (code == kNoError) {
        code = CalcPowers(&decibels, &power);
    }
    if (code == kNoError) {
        const auto numBands = static_cast<size_t>(bands.GetNumBands());
        bands.Apply(spectrum, {out, numBands});
        *count = static_cast<uint32_t>(numBands);
    }
    return code;
}

error_code CSpectralStream::GetObservation(float* features, float* energy) {
    if (features == nullptr || energy == nullptr) {
        return kInvalidArgument;
    }
    error_code code = EnsureSpectralMean();
    if (code == kNoError) {
        code = ReadObservation(energy);
    }
    const int32_t given = std::min(numFeatures, kObservationScratch);
    std::copy_n(observation.begin(), given, features);
    std::fill(features + given, features + numFeatures, 0.0f);
    return code;
}

// The layouts have widths of their own, whatever the number of features says, so they are written
// to a scratch that holds the widest.
error_code CSpectralStream::ReadObservation(float* energy) {
    observation.fill(0.0f);
    return numFeatures < kThreeLayerFeatures
               ? GetObservationDelta1(observation.data(), numCepstra, energy)
               : GetObservationDelta2(observation.data(), numCepstra, energy);
}

bool CSpectralStream::FitsFrame(int32_t count) const {
    return count >= 1 && count <= kMaxFrameValues - (hasEnergy ? 1 : 0);
}

error_code CSpectralStream::FillFiveFrames(int32_t count) {
    history.featureWidth = count;
    history.observationCount = 0;
    error_code code = kNoError; // of the last frame: one that fails leaves the others
    for (size_t i = 0; i < history.frameHistory.size(); ++i) {
        code = CalcCepstrum(history.frameHistory[i].data(), count, &history.energyHistory[i]);
    }
    return code;
}

// Kept: the newest frame also stands in the place before it, so that frame 4 of a run is never the
// middle one. Models are trained on observations that are made so.
error_code CSpectralStream::AdvanceFiveFrames(int32_t count) {
    auto& frames = history.frameHistory;
    auto& energies = history.energyHistory;
    ShiftFiveFrames(history);
    const error_code code = CalcCepstrum(frames[4].data(), count, &energies[4]);
    if (code == kNoError) {
        frames[3] = frames[4];
        energies[3] = energies[4];
    }
    return code;
}

// The first three observations are alike, for the two frames that the layout looks ahead; so the
// stream keeps step with GetNumObservations.
error_code CSpectralStream::GetObservationDelta1(float* out, int32_t count, float* energy) {
    if (!FitsFrame(count)) {
        return kInvalidArgument;
    }
    error_code code = kNoError;
    if (count != history.featureWidth) {
        code = FillFiveFrames(count);
    } else if (history.observationCount > 2) {
        code = AdvanceFiveFrames(count);
    }
    WriteFiveFrameLayout(history, count, hasEnergy,
                         {out, static_cast<size_t>(kObservationScratch)});
    *energy = history.energyHistory[2];
    ++history.observationCount;
    return code;
}

error_code CSpectralStream::GetObservationDelta2(float* out, int32_t count, float* energy) {
    if (!FitsFrame(count)) {
        return kInvalidArgument;
    }
    const error_code code = CalcCepstrum(out, count, energy);
    if (code != kNoError) {
        return code;
    }
    const int32_t width = count + (hasEnergy ? 1 : 0);
    const std::span<float> values(out, static_cast<size_t>(kObservationScratch));
    if (width != history.featureWidth) {
        history.featureWidth = width;
        BeginThreeLayers(history, values.first(static_cast<size_t>(width)));
    }
    AppendDifferences(history, width, values);
    PackThreeLayers(width, hasEnergy, (descriptorFlags & kKeepLastCepstrum) != 0, values);
    return code;
}

// The pass reads observations itself, so it starts here, before the first one, and not in the midst
// of filling the history of a run.
error_code CSpectralStream::EnsureSpectralMean() {
    return firstFrame && !meanDone ? CalcSpectralMean(sink) : kNoError;
}

// Kept: no stage subtracts the mean from anything, since the models are trained without it.
error_code CSpectralStream::CalcSpectralMean(ProgressSink* progress) {
    meanDone = true; // before the pass, which reads through the operations that start it
    if ((descriptorFlags & kCalcSpectralMean) == 0) {
        return kNoError;
    }
    std::array<float, std::tuple_size_v<decltype(spectralMean)>> mean{};
    if (progress != nullptr) {
        progress->SetStatus("Calculating Spectral Mean...");
    }
    const error_code code = SumSpectralMean(progress, mean);
    spectralMean = mean;
    if (progress != nullptr) {
        progress->SetStatus("Recognizing...");
    }
    // Audio that is still arriving has no length yet, so nothing of it was read, and beginning
    // again would throw away what waits.
    if (code == kNoError && !firstFrame) {
        Restart();
    }
    meanDone = true;
    return code;
}

error_code CSpectralStream::SumSpectralMean(ProgressSink* progress, std::span<float> mean) {
    const uint32_t total = GetNumObservations();
    const size_t used = std::min(static_cast<size_t>(windowSize) / 2, mean.size());
    timed_progress timed(progress);
    for (uint32_t i = 0; i < total; ++i) {
        float energy = 0.0f;
        const error_code code = ReadObservation(&energy);
        if (code != kNoError) {
            return code;
        }
        for (size_t bin = 0; bin < used; ++bin) {
            mean[bin] += spectrum[bin] / static_cast<float>(total);
        }
        if (timed.Report(i, total, i % kProgressInterval == 0)) {
            return kUserCancelled;
        }
    }
    return kNoError;
}

} // namespace tessarin
