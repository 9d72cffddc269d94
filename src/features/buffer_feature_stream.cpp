#include "features/buffer_feature_stream.h"

#include <limits>
#include <numeric>
#include <utility>

#include "base/trunc_sat.h"
#include "features/delta_layouts.h"
#include "features/spectral_feature_descriptor.h"

namespace tessarin {

namespace {

constexpr uint32_t kChannel = 1;
constexpr float kStopBandCutoff = 0.8f;
constexpr PCMFormat kResampledFormat{16000u << 16, 16, 1};

constexpr size_t kShortestSpeech = 60; ///< frames before the end is looked for
constexpr size_t kTailFrames = 30;
constexpr double kDropDb = 15.0;

} // namespace

// The stages hold each other, so they are taken apart before the first of them goes.
buffer_feature_stream::~buffer_feature_stream() {
    spectral.SetSource(nullptr);
    static_cast<void>(emphasis.SetSourceStream(nullptr));
    static_cast<void>(resampler.SetSourceStream(nullptr));
}

error_code buffer_feature_stream::Init(const CSpectralFeatureDescriptor* descriptor,
                                       float floorDb) {
    if (descriptor == nullptr) {
        return kInvalidArgument;
    }
    isPrepared = false;
    energyFloor = floorDb;
    numFeatures = descriptor->numFeatures;
    preEmphasis = descriptor->preEmphasis;
    const PCMFormat format{TruncSat<uint32_t>(descriptor->sampleRate * 65536.0f), 16, 1};
    error_code code = input.Instantiate(&format);
    if (code == kNoError) {
        code = resampler.Instantiate(&input, &format, kChannel, kStopBandCutoff);
    }
    if (code != kNoError) {
        return code;
    }
    static_cast<void>(emphasis.Instantiate(&resampler, kChannel, preEmphasis)); // mono always fits
    code = spectral.Init2(&emphasis, kChannel, descriptor);
    spectral.SetProcessingFlags(kDecibelEnergy);
    isPrepared = code == kNoError;
    return code;
}

error_code buffer_feature_stream::Reset(const PCMFormat* newFormat) {
    frames.clear();
    energies.clear();
    headSum = 0.0;
    input.ClearBuffers();
    const uint32_t lastRate = input.GetSampleRate();
    error_code code = input.Instantiate(newFormat);
    if (code != kNoError) {
        return code;
    }
    // Kept: the rate is compared with that of the utterance before, not with the model's: the
    // second utterance at a foreign rate is analysed as if it had the model's.
    CPCMRdrStream* source = &input;
    if (input.GetSampleRate() != lastRate) {
        code = resampler.Instantiate(&input, &kResampledFormat, kChannel, kStopBandCutoff);
        if (code != kNoError) {
            return code;
        }
        source = &resampler;
    }
    static_cast<void>(emphasis.Instantiate(source, kChannel, preEmphasis));
    code = emphasis.Start();
    spectral.Restart();
    finished = false;
    return code;
}

error_code buffer_feature_stream::Process(const void* data, uint32_t size) {
    constexpr uint32_t kMostBytes = std::numeric_limits<int32_t>::max();
    if (finished) {
        return kOutOfRange;
    }
    if (size > kMostBytes) {
        return kOutOfMemory;
    }
    const error_code code = input.AddBuffer(data, static_cast<int32_t>(size));
    return code == kNoError ? Analyse() : code;
}

error_code buffer_feature_stream::Finish() {
    finished = true;
    return Analyse();
}

const float* buffer_feature_stream::GetFeature(int32_t index) {
    return index >= 0 && index < GetNumFeatures() ? frames[static_cast<size_t>(index)].data()
                                                  : nullptr;
}

/// How much audio the next observation is made of. Kept: one hop less than the first observation
/// of the five-frame layout reads, so that the first words of a command are answered 10 ms earlier;
/// the rest of that frame is silence.
uint32_t buffer_feature_stream::NeededSamples() {
    uint32_t windowSize = 0;
    uint32_t overlap = 0;
    spectral.GetFrameGeometry(&windowSize, &overlap);
    const uint32_t hop = windowSize - overlap;
    if (spectral.HasStarted()) {
        return hop;
    }
    return overlap + (numFeatures < kThreeLayerFeatures ? 4 * hop : hop);
}

/// What waits before the pre-emphasis, which itself knows only how much there was at first.
uint32_t buffer_feature_stream::BufferedSamples() {
    CPCMRdrStream* source = emphasis.GetSourceStream();
    return source != nullptr ? source->GetNumSamples() : 0;
}

error_code buffer_feature_stream::Analyse() {
    if (!isPrepared) {
        return kNoError; // nothing to analyse with
    }
    error_code code = kNoError;
    idleReads = 0;
    while (code == kNoError && IsMoving() && BufferedSamples() >= NeededSamples()) {
        code = ReadFrame();
        if (code == kNoError && SpeechHasEnded()) {
            static_cast<void>(emphasis.Stop());
            static_cast<void>(input.Stop());
            finished = true;
            return kOutOfRange;
        }
    }
    // What is left when no more comes is read to the last sample, though the last frames are partly
    // silence.
    while (finished && code == kNoError && IsMoving() && BufferedSamples() != 0) {
        code = ReadFrame();
    }
    return code;
}

/// Whether reads still take audio. An input that was never opened keeps what it holds.
bool buffer_feature_stream::IsMoving() const {
    constexpr int kMostIdleReads = 2; // the first three observations come of one read
    return idleReads <= kMostIdleReads;
}

error_code buffer_feature_stream::ReadFrame() {
    const auto width = static_cast<size_t>(numFeatures);
    std::vector<float> frame(width + 2);
    float energy = 0.0f;
    const uint32_t before = input.GetByteLength();
    const error_code code = spectral.GetObservation(frame.data(), &energy);
    idleReads = input.GetByteLength() != before ? 0 : idleReads + 1;
    frame[width + 1] = energy;
    NoteEnergy(energy);
    if (code == kNoError && energy > energyFloor) {
        frames.push_back(std::move(frame));
    }
    return code;
}

void buffer_feature_stream::NoteEnergy(float energy) {
    energies.push_back(energy);
    if (energies.size() > kTailFrames) {
        headSum += energies[energies.size() - 1 - kTailFrames];
    }
}

bool buffer_feature_stream::SpeechHasEnded() const {
    if (energies.size() < kShortestSpeech) {
        return false;
    }
    const double head = headSum / static_cast<double>(energies.size() - kTailFrames) - kDropDb;
    const double tail = std::accumulate(energies.end() - kTailFrames, energies.end(), 0.0) /
                        static_cast<double>(kTailFrames);
    return head >= tail || energyFloor + 1.0 > tail;
}

} // namespace tessarin
