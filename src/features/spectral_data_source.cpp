#include "features/spectral_data_source.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <type_traits>

#include "base/allocation.h"
#include "base/guarded.h"
#include "base/trunc_sat.h"
#include "features/display_spectrum.h"
#include "features/lpc.h"

namespace tessarin {

namespace {

constexpr int32_t kSmallestFrame = 4;
constexpr int32_t kLargestCepstrumFrame = 8192; ///< its table takes 64 MiB

bool IsFrameSize(int32_t n) {
    return n >= kSmallestFrame && std::has_single_bit(static_cast<uint32_t>(n));
}

} // namespace

CSpectralDataSource::~CSpectralDataSource() {
    CSpectralDataSource::Clear();
}

void CSpectralDataSource::Clear() {
    for (int16_t*& frame : frames) {
        tessarin::free(frame);
        frame = nullptr;
    }
    frames.RemoveAll();
}

int16_t* CSpectralDataSource::GetFrameAt(int32_t ms, uint32_t* actualMs) {
    const bool isTime = ms >= 0 && frameDurationMs > 0.0f;
    const int32_t index = isTime ? TruncSat<int32_t>(static_cast<float>(ms) / frameDurationMs) : -1;
    if (actualMs != nullptr) {
        *actualMs = isTime ? TruncSat<uint32_t>(static_cast<float>(index) * frameDurationMs) : 0;
    }
    int16_t** const frame = frames.GetAt(index);
    return frame != nullptr ? *frame : nullptr;
}

error_code CSpectralDataSource::ComputeFrame(int16_t* data, int32_t n, bool, float* level) {
    return ComputeAnyFrame(data, n, level);
}

error_code CSpectralDataSource::ComputeFrameFloat(float* data, int32_t n, bool, float* level) {
    return ComputeAnyFrame(data, n, level);
}

template <class Sample>
error_code CSpectralDataSource::ComputeAnyFrame(Sample* data, int32_t n, float* level) {
    if (level != nullptr) {
        *level = 0.0f;
    }
    if (data == nullptr || !IsFrameSize(n)) {
        return kInvalidArgument;
    }
    const error_code code = Guarded([&] { PrepareWindow(n); });
    if (code != kNoError) {
        return code;
    }
    for (size_t i = 0; i < workspace.size(); ++i) {
        workspace[i] = static_cast<float>(data[i]) * window[i];
    }
    fft.Transform(workspace.data(), static_cast<uint32_t>(n));
    const float frameLevel = DisplaySpectrum(workspace);
    const std::span<float> levels = std::span(workspace).first(workspace.size() / 2 + 1);
    ApplyFloor(levels);
    std::ranges::transform(levels, data, [](float value) { return static_cast<Sample>(value); });
    if (level != nullptr) {
        *level = frameLevel;
    }
    return kNoError;
}

void CSpectralDataSource::PrepareWindow(int32_t n) {
    if (n == windowLength) {
        return;
    }
    windowLength = 0; // until all of it is there
    window.resize(static_cast<size_t>(n));
    workspace.resize(static_cast<size_t>(n));
    DisplayWindow(window);
    windowLength = n;
}

void CSpectralDataSource::ApplyFloor(std::span<float> levels) const {
    if (!floorEnabled || windowLength != floorCount) {
        return;
    }
    for (size_t bin = 0; bin + 1 < levels.size(); ++bin) {
        if (levels[bin] <= floor[bin]) {
            levels[bin] = 0.0f;
        }
    }
}

void CSpectralDataSource::SetSpectrumFloor(bool enable, const int16_t* values, int32_t count) {
    floorEnabled = enable && values != nullptr;
    if (floorEnabled) {
        floorCount = std::clamp<int32_t>(count, 0, static_cast<int32_t>(floor.size()));
        std::copy_n(values, floorCount, floor.begin());
    }
}

error_code CSpectralDataSource::ComputeMeanSpectrum(int32_t n, int16_t* out, IPCMDataSource* source,
                                                    ProgressSink* sink) {
    if (out == nullptr || source == nullptr || !IsFrameSize(n)) {
        return kInvalidArgument;
    }
    PCMFormat format{};
    source->GetFormat(&format);
    if (format.channels != 1) {
        return kNotAvailable;
    }
    if (sink != nullptr) {
        sink->SetStatus("Analyzing audio...");
    }
    const std::span<int16_t> frame(out, static_cast<size_t>(n));
    std::ranges::fill(frame, int16_t{0});
    return Guarded([&] {
        std::vector<float> sums(frame.size());
        const error_code code = SumSpectra(frame, *source, sink, sums);
        if (code != kNoError) {
            std::ranges::fill(sums, 0.0f);
        }
        std::ranges::transform(sums, out, [](float sum) { return TruncToLow16(sum); });
        return code;
    });
}

/// Adds the spectra of frames that overlap by half to the lower half of `sums`. `frame` is room for
/// one of them.
error_code CSpectralDataSource::SumSpectra(std::span<int16_t> frame, IPCMDataSource& source,
                                           ProgressSink* sink, std::span<float> sums) {
    const auto n = static_cast<int32_t>(frame.size());
    const auto total = static_cast<uint32_t>(std::max(source.GetNumSamples(), 0));
    // Kept: multiplied, where a mean divides; what hosts have stored is scaled so.
    const float weight = 2.0f * static_cast<float>(total);
    for (uint32_t start = 0; start < total; start += static_cast<uint32_t>(n / 2)) {
        auto count = static_cast<uint32_t>(n);
        error_code code =
            source.ReadSamplesInt16(frame.data(), static_cast<int32_t>(start), &count, 1);
        if (code == kNoError) {
            count = std::min(count, static_cast<uint32_t>(n));   // whatever the host's source says
            std::ranges::fill(frame.subspan(count), int16_t{0}); // beyond the end
            code = ComputeFrame(frame.data(), n, false, nullptr);
        }
        if (code != kNoError) {
            return code;
        }
        for (size_t bin = 0; bin < frame.size() / 2; ++bin) {
            sums[bin] += static_cast<float>(frame[bin]) * weight;
        }
        if (sink != nullptr && sink->OnProgress(std::min(start + count, total), total)) {
            return kUserCancelled;
        }
    }
    return kNoError;
}

error_code CSpectralDataSource::ComputeCepstrum(const float* spectrum, int32_t n, float* cepstrum,
                                                int32_t count) {
    if (spectrum == nullptr || cepstrum == nullptr || !IsFrameSize(n) ||
        n > kLargestCepstrumFrame || count < 0 || count > n / 2) {
        return kInvalidArgument;
    }
    const error_code code = PrepareTable(n);
    if (code != kNoError) {
        return code;
    }
    const size_t half = static_cast<size_t>(n) / 2;
    for (size_t j = 0; j < static_cast<size_t>(count); ++j) {
        const float* const cosines = (*table)[j];
        float sum = 0.0f;
        for (size_t i = 1; i < half; ++i) {
            sum += cosines[i] * spectrum[i];
        }
        cepstrum[j] = sum / static_cast<float>(half);
    }
    return kNoError;
}

error_code CSpectralDataSource::ComputeCepstrumFrame(float* data, int32_t n, float* cepstrum,
                                                     int32_t count) {
    const error_code code = ComputeFrameFloat(data, n, false, nullptr);
    return code == kNoError ? ComputeCepstrum(data, n, cepstrum, count) : code;
}

error_code CSpectralDataSource::PrepareTable(int32_t n) {
    if (n == windowSize) {
        return kNoError;
    }
    windowSize = 0;
    const int32_t half = n / 2;
    const error_code code = Guarded([&] { table = std::make_unique<C2DArray<float>>(half, half); });
    if (code != kNoError || !table->IsAllocated()) {
        return kOutOfMemory;
    }
    const auto size = static_cast<size_t>(half);
    for (size_t j = 0; j < size; ++j) {
        for (size_t i = 0; i < size; ++i) {
            (*table)[j][i] = std::cos((static_cast<float>(i) - 0.5f) * std::numbers::pi_v<float> *
                                      static_cast<float>(j) / static_cast<float>(half));
        }
    }
    windowSize = n;
    return kNoError;
}

error_code CSpectralDataSource::GetResidual(const float* x, uint32_t n, float* residual,
                                            uint32_t order) {
    constexpr uint32_t kMost = std::numeric_limits<int32_t>::max();
    return LPC().Analyse(x, static_cast<int32_t>(std::min(n, kMost)),
                         static_cast<int32_t>(std::min(order, kMost)), residual, nullptr, nullptr,
                         nullptr);
}

} // namespace tessarin
