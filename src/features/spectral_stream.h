#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "audio/files/pcm_rdr_stream.h"
#include "base/counted_ptr.h"
#include "base/live_object.h"
#include "features/band_filters.h"
#include "features/cosine_transform.h"
#include "features/delta_layouts.h"
#include "features/half_complex_fft.h"
#include "features/noise_floor.h"
#include "tessarin/observation_stream.h"
#include "tessarin/progress_sink.h"

namespace tessarin {

struct CSpectralFeatureDescriptor;

/// Bits of IObservationStream::SetProcessingFlags.
inline constexpr uint32_t kDecibelEnergy = 2;
inline constexpr uint32_t kSubtractNoiseFloor = 4;

/// The spectral front end, last stage of the chain from audio to observations. Each window of PCM
/// becomes a Hamming-windowed power spectrum, that a bank of triangular band energies in log10,
/// those by a cosine transform a cepstrum, and neighbouring cepstra an observation.
class CSpectralStream : public IObservationStream {
public:
    CSpectralStream();
    ~CSpectralStream() override;
    CSpectralStream(const CSpectralStream&) = delete;
    CSpectralStream& operator=(const CSpectralStream&) = delete;

    /// The spectral stream that a host holds as `held`, or null for a stream of the host's own.
    static CSpectralStream* Find(const IObservationStream* held) { return live_stream::Find(held); }

    uint32_t GetNumObservations() override;
    error_code GetObservation(float* features, float* energy) override;
    void GetFrameGeometry(uint32_t* outWindowSize, uint32_t* outOverlap) override;
    float GetSampleRate() override;
    void GetEnergyRange(float* minimum, float* maximum) override;
    void SetProcessingFlags(uint32_t flags) override { processingFlags = flags; }
    error_code GetBandEnergies(float* out, uint32_t* count) override;
    error_code SetNoiseFloor(uint32_t kind, const float* bandEnergies, int32_t count) override;

    /// Reads channel `sourceChannel` of `pcm` (whose reference count it raises) in windows of
    /// `samples`, a power of two of at most 65536, that overlap by `overlapSamples`. Returns 2 for
    /// a geometry that does not fit and 1 when memory is short; the stream then answers 2 to every
    /// read. May be called again at any time.
    virtual error_code Init(CPCMRdrStream* pcm, uint32_t sourceChannel, int32_t samples,
                            int32_t overlapSamples);
    /// As Init, with geometry, bands and feature layout of `descriptor`, which is copied from.
    virtual error_code Init2(CPCMRdrStream* pcm, uint32_t sourceChannel,
                             const CSpectralFeatureDescriptor* descriptor);
    /// Ends the run and frees the buffers; reads answer 2 until the next Init.
    virtual void Stop();
    /// Reads the next window and writes its transform, as ForwardHalfComplexFFT leaves it, to the
    /// window size of floats at `out`. `decibels` may be null.
    virtual error_code CalcFrameSpectrum(float* out, float* decibels);
    /// Reads the next window and writes its cepstra to `out`, and to `out[count]` a twentieth of
    /// its decibels when the observations have energy.
    virtual error_code CalcCepstrum(float* out, int32_t count, float* energy);
    /// The three-layer layout. `out` has room for kObservationScratch values.
    virtual error_code GetObservationDelta2(float* out, int32_t count, float* energy);
    /// The five-frame layout. `out` has room for kObservationScratch values.
    virtual error_code GetObservationDelta1(float* out, int32_t count, float* energy);
    /// Averages the power spectrum over the whole audio and rewinds; does nothing when the
    /// descriptor does not ask for it. Returns 5 when `progress` cancels.
    virtual error_code CalcSpectralMean(ProgressSink* progress);
    /// Goes back to the first sample.
    virtual void Restart();
    virtual void SetMaxObservations(uint32_t count) { maxObservations = count; }
    virtual void SetProgressSink(ProgressSink* progress) { sink = progress; }
    /// Moves the window on by one hop. Past the end of the audio it fills with silence.
    virtual error_code ReadNextFrame();
    /// How many values an observation has.
    int32_t GetFeatureCount() const { return numFeatures; }
    /// Whether audio has been read since Init or Restart.
    bool HasStarted() const { return !firstFrame; }

    /// The last stage of the chain that is read, or null.
    CPCMRdrStream* GetSource() const { return source.get(); }
    /// Reads `stage` instead, of which it takes a reference; its format is that of the stage
    /// before. Null ends the reading: a chain of members is taken apart from its end.
    void SetSource(CPCMRdrStream* stage) { source = counted_ptr<CPCMRdrStream>::Share(stage); }

protected:
    counted_ptr<CPCMRdrStream> source;

private:
    using live_stream = live_object<CSpectralStream, IObservationStream>;

    error_code PrepareBuffers();
    void FreeBuffers();
    error_code PrepareLayout(const CSpectralFeatureDescriptor& descriptor);
    error_code ReadSamples(float* samples, int32_t count);
    error_code PrepareSpectrum();
    error_code CalcPowers(float* decibels, float* power);
    void TrackEnergy(float energy, float root);
    error_code ReadObservation(float* energy);
    error_code FillFiveFrames(int32_t count);
    error_code AdvanceFiveFrames(int32_t count);
    bool FitsFrame(int32_t count) const;
    error_code EnsureSpectralMean();
    error_code SumSpectralMean(ProgressSink* progress, std::span<float> mean);

    live_stream self{*this};
    uint32_t maxObservations = 0x7FFFFFFF;
    std::vector<float> window; // empty while nothing can be read
    int32_t windowSize = 512;
    int32_t overlap = 256;
    int32_t hop = 256;
    std::vector<float> frame;
    ProgressSink* sink = nullptr;
    std::vector<float> spectrum; // transform, then powers from 0 and band energies after them
    uint32_t channel = 0;
    bool firstFrame = true; // until the first samples have been read
    bool meanDone = false;
    float sampleRate = 0.0f; // Hz
    ForwardHalfComplexFFT fft;
    CBandFilterBank bands;
    CCosineTransform cosineTransform;
    int32_t numFeatures = 0;
    uint32_t descriptorFlags = 0;
    uint32_t processingFlags = 0;
    int32_t numCepstra = 0;
    bool hasEnergy = false;
    delta_history history;
    std::array<float, kObservationScratch> observation{};
    std::array<float, 2048> spectralMean{};
    float minEnergy = 1e33f;
    float maxEnergy = 0.0f;
    CNoiseFloor noiseFloor;
    float previousSample = 0.0f; // before the part of the frame that is measured in decibels
};

} // namespace tessarin
