#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "base/c2d_array.h"
#include "base/tarray.h"
#include "features/half_complex_fft.h"
#include "tessarin/spectral_data_source.h"

namespace tessarin {

/// Spectra and what is derived from them, for tools that show audio; recognition has its own.
class CSpectralDataSource : public ISpectralDataSource {
public:
    CSpectralDataSource() = default;
    CSpectralDataSource(const CSpectralDataSource&) = delete;
    CSpectralDataSource& operator=(const CSpectralDataSource&) = delete;
    ~CSpectralDataSource() override;

    int32_t GetNumFrames() override { return frames.GetSize(); }
    float GetFrameDurationMs() override { return frameDurationMs; }
    error_code ComputeFrame(int16_t* data, int32_t n, bool reserved, float* level) override;
    error_code ComputeFrameFloat(float* data, int32_t n, bool reserved, float* level) override;
    error_code ComputeMeanSpectrum(int32_t n, int16_t* out, IPCMDataSource* source,
                                   ProgressSink* sink) override;
    void SetSpectrumFloor(bool enable, const int16_t* values, int32_t count) override;
    void Destroy() override { delete this; }

    /// Frees the stored frames.
    virtual void Clear();
    /// Half the size of the last frame that was computed.
    virtual int32_t GetNumBins() { return windowLength / 2; }
    /// The stored frame at `ms`, or null when there is none. `actualMs`, unless null, receives the
    /// time at which that frame begins or would begin.
    virtual int16_t* GetFrameAt(int32_t ms, uint32_t* actualMs);
    /// The cepstrum of a display spectrum of `n` samples: the cosine transform of bins 1 to n / 2 -
    /// 1 (bin 0 holds no speech), c[j] = 2 / n sum over i of cos((i - 1/2) pi j / (n / 2))
    /// spectrum[i], for `count` values from j = 0. Returns 0; 2 for a null pointer, an `n` that is
    /// not a power of two from 4 to 8192 or a count not from 0 to n / 2; 1 without memory.
    virtual error_code ComputeCepstrum(const float* spectrum, int32_t n, float* cepstrum,
                                       int32_t count);
    /// Replaces the `n` samples at `data` by their display spectrum and gives its cepstrum.
    virtual error_code ComputeCepstrumFrame(float* data, int32_t n, float* cepstrum, int32_t count);
    /// What a linear predictor of `order` coefficients (at most 31) leaves of the `n` values at
    /// `x`; the first order + 1 values of `residual` are 0. Returns 0.
    virtual error_code GetResidual(const float* x, uint32_t n, float* residual, uint32_t order);

protected:
    /// Spectra that were computed before, each from `alloc`, for classes that keep them.
    TArray<int16_t*> frames{256};
    float frameDurationMs = 10.0f;

private:
    template <class Sample> error_code ComputeAnyFrame(Sample* data, int32_t n, float* level);
    void PrepareWindow(int32_t n);
    error_code PrepareTable(int32_t n);
    void ApplyFloor(std::span<float> levels) const;
    error_code SumSpectra(std::span<int16_t> frame, IPCMDataSource& source, ProgressSink* sink,
                          std::span<float> sums);

    int32_t windowLength = 0;
    std::vector<float> window;
    std::vector<float> workspace;
    int32_t windowSize = 0; ///< that the table is laid out for
    ForwardHalfComplexFFT fft;
    std::unique_ptr<C2DArray<float>> table; ///< [j][i] = cos((i - 1/2) pi j / (n / 2))
    int32_t floorCount = 0;
    bool floorEnabled = false;
    std::array<float, 2048> floor{};
};

} // namespace tessarin
