#include "apps/tessarin/pictures/spectrum_columns.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

#include "apps/tessarin/console/failure.h"

namespace {

constexpr double kFrameMs = 32; // of the transform, whatever the window: fine steps
constexpr double kLeveledAboveHz = 1000;
constexpr float kStepsPerDecibel = 2; // of the engine's display spectrum
constexpr float kHeadroom = 32;       // lifts soft sounds over the display's lowest level

using spectral_source_handle =
    std::unique_ptr<tessarin::ISpectralDataSource, tessarin::destroyer<DestroySpectralDataSource>>;

spectral_source_handle MakeSpectralSource() {
    tessarin::ISpectralDataSource* made = nullptr;
    const int32_t code = CreateSpectralDataSource(&made);
    if (code != tessarin::kNoError) {
        throw EngineFailure("spectra", code);
    }
    return spectral_source_handle(made);
}

/// A short window in the middle of a long frame: the frame gives fine steps in frequency, the
/// window decides what is heard. Its sum is that of the frame, so that levels keep.
std::vector<float> MiddleWindow(size_t frameSize, double windowSamples) {
    std::vector<float> window(frameSize);
    const auto size = std::clamp<size_t>(static_cast<size_t>(windowSamples), 4, frameSize);
    const size_t first = (frameSize - size) / 2;
    for (size_t i = 0; i < size; ++i) {
        const double phase =
            2 * std::numbers::pi * (static_cast<double>(i) + 0.5) / static_cast<double>(size);
        window[first + i] = static_cast<float>(
            (1 - std::cos(phase)) * static_cast<double>(frameSize) / static_cast<double>(size));
    }
    return window;
}

class ColumnMeter {
public:
    ColumnMeter(tessarin::IPCMDataSource& samples, const spectrum_settings& wanted)
        : source(samples), settings(wanted), rateHz(samples.GetSampleRate() / 65536.0),
          spectra(MakeSpectralSource()) {
        const double shortest = std::max(kFrameMs, settings.windowMs) * rateHz / 1000;
        frameSize = std::bit_ceil(static_cast<size_t>(std::clamp(shortest, 4.0, 65536.0)));
        window = MiddleWindow(frameSize, settings.windowMs * rateHz / 1000);
        frame.resize(frameSize);
    }

    void Measure(double middle, float* levels) {
        Hear(static_cast<int64_t>(middle) - static_cast<int64_t>(frameSize / 2));
        const int32_t code = spectra->ComputeFrameFloat(
            frame.data(), static_cast<int32_t>(frameSize), false, nullptr);
        if (code != tessarin::kNoError) {
            throw EngineFailure("spectra", code);
        }
        for (int row = 0; row < settings.rows; ++row) {
            const double hz = settings.highestHz * row / (settings.rows - 1);
            levels[row] = LevelAt(hz);
        }
    }

private:
    /// Fills the frame from sample `first` on; there is silence around the recording.
    void Hear(int64_t first) {
        std::ranges::fill(frame, 0.0f);
        const int64_t begin = std::max<int64_t>(first, 0);
        auto count = static_cast<uint32_t>(std::clamp<int64_t>(
            first + static_cast<int64_t>(frameSize) - begin, 0, static_cast<int64_t>(frameSize)));
        if (begin < source.GetNumSamples() && count > 0) {
            (void)source.ReadSamplesFloat(frame.data() + (begin - first),
                                          static_cast<int32_t>(begin), &count, 1);
        }
        for (size_t i = 0; i < frameSize; ++i) {
            frame[i] *= window[i] * kHeadroom;
        }
    }

    /// Between the two nearest bins, with what speech loses to the top given back.
    float LevelAt(double hz) const {
        const auto size = static_cast<double>(frameSize);
        const double bin = std::min(hz * size / rateHz, size / 2);
        const auto low = static_cast<size_t>(bin);
        const size_t high = std::min(low + 1, frameSize / 2);
        const auto share = static_cast<float>(bin - static_cast<double>(low));
        const float steps = frame[low] + (frame[high] - frame[low]) * share;
        const double gain = hz > kLeveledAboveHz ? 20 * std::log10(hz / kLeveledAboveHz) : 0;
        return steps / kStepsPerDecibel + static_cast<float>(gain);
    }

    tessarin::IPCMDataSource& source;
    const spectrum_settings& settings;
    double rateHz;
    spectral_source_handle spectra;
    size_t frameSize;
    std::vector<float> window;
    std::vector<float> frame;
};

} // namespace

spectrum_columns MeasureSpectrum(tessarin::IPCMDataSource& source,
                                 const spectrum_settings& settings,
                                 tessarin::ProgressSink& progress) {
    spectrum_columns result;
    result.rows = settings.rows;
    result.levels.resize(static_cast<size_t>(settings.columns) *
                         static_cast<size_t>(settings.rows));
    ColumnMeter meter(source, settings);
    const double step =
        static_cast<double>(settings.range.end - settings.range.first) / settings.columns;
    progress.SetStatus("Drawing");
    for (int column = 0; column < settings.columns; ++column) {
        if (progress.OnProgress(static_cast<uint32_t>(column),
                                static_cast<uint32_t>(settings.columns))) {
            throw EngineFailure("spectrogram", tessarin::kUserCancelled);
        }
        meter.Measure(
            settings.range.first + (column + 0.5) * step,
            &result.levels[static_cast<size_t>(column) * static_cast<size_t>(settings.rows)]);
    }
    return result;
}
