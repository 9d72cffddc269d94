#include "commands/feature_stream.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

#include "base/little_endian.h"
#include "commands/time_warp.h"
#include "recognition/observation_source.h"

namespace tessarin {
namespace {

constexpr int32_t kPoolBlockBytes = 32768;
constexpr int32_t kBehindFeatures = 2; // an unused value, and the energy

/// The last features of an observation: the energy and its changes. How loud the two recordings
/// were taken does not distinguish commands.
constexpr int32_t kEnergyFeatures = 3;

constexpr size_t kCountsBytes = 12;
constexpr uint32_t kMaxLoadedFeatures = 64;
constexpr uint32_t kMaxLoadedFrames = 1000000;

} // namespace

CFeatureStream::CFeatureStream() : pool(kPoolBlockBytes) {}

error_code CFeatureStream::Record(IObservationStream& source, int32_t featureCount,
                                  float energyFloor) {
    if (featureCount < 1 || featureCount > INT32_MAX / 8) {
        return kInvalidArgument;
    }
    numFeatures = featureCount;
    stride = featureCount + kBehindFeatures;
    observation_source observations(source, featureCount);
    if (const error_code code = observations.Open(nullptr); code != kNoError) {
        return code;
    }
    source.GetFrameGeometry(&frameSize, &frameOverlap);
    sampleRate = source.GetSampleRate();
    for (uint32_t left = observations.GetCount(); left > 0; --left) {
        const std::span<float> frame = AppendFrame();
        if (const error_code code = observations.Next(); code != kNoError) {
            return code;
        }
        std::copy_n(observations.GetFeatures(), featureCount, frame.data());
        frame.back() = observations.GetEnergy();
        MarkActive(energyFloor);
    }
    source.GetEnergyRange(&minEnergy, &maxEnergy);
    return kNoError;
}

std::span<float> CFeatureStream::AppendFrame() {
    auto* memory = static_cast<float*>(pool.Alloc(stride * static_cast<int32_t>(sizeof(float))));
    if (memory == nullptr || frames.size() == INT32_MAX) {
        throw std::bad_alloc();
    }
    std::uninitialized_fill_n(memory, stride, 0.0f);
    frames.push_back(memory);
    return {memory, static_cast<size_t>(stride)};
}

/// Whether the newest frame takes part.
void CFeatureStream::MarkActive(float energyFloor) {
    const float energy = frames.back()[stride - 1];
    if (energyFloor <= 0.0f || energy > energyFloor) {
        active.push_back(static_cast<int32_t>(frames.size() - 1));
    }
}

error_code CFeatureStream::GetObservation(float* features, float* energy) {
    if (cursor >= active.size()) {
        return kOutOfRange;
    }
    const float* frame = ActiveFrame(cursor);
    ++cursor;
    std::copy_n(frame, numFeatures, features);
    *energy = frame[stride - 1];
    return kNoError;
}

void CFeatureStream::GetFrameGeometry(uint32_t* windowSize, uint32_t* overlap) {
    *windowSize = frameSize;
    *overlap = frameOverlap;
}

void CFeatureStream::GetEnergyRange(float* minimum, float* maximum) {
    *minimum = minEnergy;
    *maximum = maxEnergy;
}

error_code CFeatureStream::GetBandEnergies(float*, uint32_t* count) {
    *count = 0;
    return kNotAvailable;
}

error_code CFeatureStream::SetNoiseFloor(uint32_t, const float*, int32_t) {
    return kNotAvailable;
}

void CFeatureStream::MatchStream(const CFeatureStream& other, float* distance) const {
    *distance = kNoWarpDistance;
    if (numFeatures != other.numFeatures || active.empty() || other.active.empty()) {
        return;
    }
    // Kept: the energy takes no part here, while a live match compares all features; distances of
    // the two kinds are not for comparison with each other.
    const int32_t compared = numFeatures - kEnergyFeatures;
    time_warp warp;
    std::vector<float> row(other.active.size());
    for (size_t i = 0; i < active.size(); ++i) {
        for (size_t j = 0; j < row.size(); ++j) {
            row[j] = FrameDistance(ActiveFrame(i), other.ActiveFrame(j), compared);
        }
        warp.AddRow(row);
    }
    *distance = warp.Distance(row.size() - 1);
}

uint64_t CFeatureStream::SaveFrames(uint8_t* buffer) const {
    const uint64_t frameBytes = uint64_t{sizeof(float)} * static_cast<uint64_t>(stride);
    const uint64_t size = kCountsBytes + frames.size() * frameBytes;
    if (buffer == nullptr) {
        return size;
    }
    StoreLittleEndian(buffer, static_cast<uint32_t>(frames.size()));
    StoreLittleEndian(buffer + 4, static_cast<uint32_t>(numFeatures));
    StoreLittleEndian(buffer + 8, static_cast<uint32_t>(stride));
    uint8_t* place = buffer + kCountsBytes;
    for (const float* frame : frames) {
        for (int32_t k = 0; k < stride; ++k) {
            StoreLittleEndian(place, frame[k]);
            place += sizeof(float);
        }
    }
    return size;
}

bool CFeatureStream::LoadFrames(const uint8_t* data, float energyFloor) {
    const auto count = LoadLittleEndian<uint32_t>(data);
    const auto features = LoadLittleEndian<uint32_t>(data + 4);
    const auto width = LoadLittleEndian<uint32_t>(data + 8);
    if (count > kMaxLoadedFrames || features < 1 || features > kMaxLoadedFeatures ||
        width != features + kBehindFeatures) {
        return false;
    }
    numFeatures = static_cast<int32_t>(features);
    stride = static_cast<int32_t>(width);
    const uint8_t* place = data + kCountsBytes;
    for (uint32_t i = 0; i < count; ++i) {
        for (float& value : AppendFrame()) {
            value = LoadLittleEndian<float>(place);
            place += sizeof(float);
            if (!std::isfinite(value)) {
                return false;
            }
        }
        MarkActive(energyFloor);
    }
    return true;
}

} // namespace tessarin
