#pragma once

#include <cstdint>
#include <vector>

#include "audio/pcm_buffer_stream.h"
#include "audio/pcm_pre_emph_stream.h"
#include "audio/resampled_pcm_stream.h"
#include "features/spectral_stream.h"

namespace tessarin {

struct CSpectralFeatureDescriptor;

/// The front end over audio that arrives in pieces. Keeps the observations of one utterance and
/// finds where it ends: where the last 300 ms (at a hop of 10 ms) lie 15 dB below all before, or
/// have come down to the energy floor. One thread at a time.
///
/// Kept: all audio but such as comes at the rate of the utterance before is brought to 16000 Hz,
/// whatever the model's rate, so a host that feeds the model's own rate has the best of it.
class buffer_feature_stream {
public:
    buffer_feature_stream() = default;
    buffer_feature_stream(const buffer_feature_stream&) = delete;
    buffer_feature_stream& operator=(const buffer_feature_stream&) = delete;
    virtual ~buffer_feature_stream();

    /// Builds the chain. Frames of at most `floorDb` decibels are not kept. Returns 0, or the code
    /// of the stage that could not be set up.
    [[nodiscard]] virtual error_code Init(const CSpectralFeatureDescriptor* descriptor,
                                          float floorDb);
    /// Begins an utterance of audio in the format `newFormat`; the frames of the last one go.
    [[nodiscard]] virtual error_code Reset(const PCMFormat* newFormat);
    /// Analyses what is left: no more audio will come. Returns the code of the last read.
    [[nodiscard]] virtual error_code Finish();
    /// Takes in audio and analyses what it can. Returns 0; 3 when the utterance has ended, now or
    /// before; 1 without memory; or the code of a failed read.
    [[nodiscard]] virtual error_code Process(const void* data, uint32_t size);
    /// How many frames are kept.
    virtual int32_t GetNumFeatures() { return static_cast<int32_t>(frames.size()); }
    /// A kept frame, or null out of range: FeatureCount() features, a value without meaning, and
    /// the energy in decibels. Valid until the next Reset.
    virtual const float* GetFeature(int32_t index);

    /// Of one frame.
    int32_t FeatureCount() const { return numFeatures; }

private:
    error_code Analyse();
    bool IsMoving() const;
    error_code ReadFrame();
    uint32_t NeededSamples();
    uint32_t BufferedSamples();
    void NoteEnergy(float energy);
    bool SpeechHasEnded() const;

    CSpectralStream spectral;
    CPCMBufferStream input;
    CResampledPCMStream resampler;
    CPCMPreEmphStream emphasis;
    std::vector<std::vector<float>> frames;
    std::vector<float> energies; ///< of every analysed frame, kept or not
    double headSum = 0.0;        ///< of all energies but the tail
    int idleReads = 0;           ///< in a row, without anything taken from the input
    bool finished = false;
    float energyFloor = 0.0f;
    int32_t numFeatures = 0;
    bool isPrepared = false; ///< the last Init succeeded, so all stages agree about the widths
    float preEmphasis = 0.0f;
};

} // namespace tessarin
