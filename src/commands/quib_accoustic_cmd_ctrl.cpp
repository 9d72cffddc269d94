#include "commands/quib_accoustic_cmd_ctrl.h"

#include <cinttypes>
#include <cstdio>
#include <limits>
#include <memory>

#include "base/guarded.h"
#include "base/little_endian.h"
#include "model/accoustic_hmm.h"
#include "platform/floating_point.h"

namespace tessarin {
namespace {

/// An utterance below this is not worth a comparison.
constexpr int64_t kMinFrames = 3;

constexpr uint32_t kDataVersion = 0;
constexpr uint32_t kVersionAndIdBytes = 8;

/// The command that is nearest so far.
struct nearest_command {
    uint32_t id = 0;
    float distance = std::numeric_limits<float>::max();

    /// Of equals the first stays. What could not be compared is never the nearest.
    void Offer(uint32_t candidate, float candidateDistance) {
        if (candidateDistance < distance && candidateDistance < kNoWarpDistance) {
            id = candidate;
            distance = candidateDistance;
        }
    }

    uint32_t Report(float* out) const {
        if (out != nullptr) {
            *out = distance;
        }
        return id;
    }
};

} // namespace

int32_t CQuibAccousticCmdCtrl::Release() {
    if (references > 1) {
        return --references;
    }
    delete this;
    return 0;
}

error_code CQuibAccousticCmdCtrl::InitFeatures(CAccousticHMM* model, float newEnergyFloor) {
    numFeatures = model->descriptor.numFeatures;
    energyFloor = newEnergyFloor;
    return live.Init(&model->descriptor, energyFloor);
}

uint32_t CQuibAccousticCmdCtrl::AddCommandFromStream(IObservationStream* stream) {
    uint32_t id = 0;
    static_cast<void>(Guarded([&]() -> error_code {
        if (stream == nullptr) {
            return kInvalidArgument;
        }
        auto added = std::make_unique<command>();
        const error_code code = added->footprint.Record(*stream, numFeatures, energyFloor);
        if (code == kNoError) {
            id = commands.Add(std::move(added));
        }
        return code;
    }));
    return id;
}

uint32_t CQuibAccousticCmdCtrl::GetCommandData(uint32_t id, void* buffer) {
    const command* saved = commands.Find(id);
    if (saved == nullptr) {
        return 0;
    }
    const uint64_t size = kVersionAndIdBytes + saved->footprint.SaveFrames(nullptr);
    if (size > UINT32_MAX) {
        return 0;
    }
    if (buffer != nullptr) {
        auto* bytes = static_cast<uint8_t*>(buffer);
        StoreLittleEndian(bytes, kDataVersion);
        StoreLittleEndian(bytes + 4, id);
        static_cast<void>(saved->footprint.SaveFrames(bytes + kVersionAndIdBytes));
    }
    return static_cast<uint32_t>(size);
}

uint32_t CQuibAccousticCmdCtrl::AddCommandFromData(const void* data) {
    uint32_t id = 0;
    static_cast<void>(Guarded([&]() -> error_code {
        const auto* bytes = static_cast<const uint8_t*>(data);
        if (bytes == nullptr || LoadLittleEndian<uint32_t>(bytes) != kDataVersion) {
            return kInvalidArgument;
        }
        // Kept: the stored id is not used; samples of several users go into one controller.
        auto added = std::make_unique<command>();
        if (!added->footprint.LoadFrames(bytes + kVersionAndIdBytes, energyFloor)) {
            return kInvalidFile;
        }
        id = commands.Add(std::move(added));
        return kNoError;
    }));
    return id;
}

error_code CQuibAccousticCmdCtrl::BeginUtterance(const PCMFormat* format) {
    if (format == nullptr) {
        return kInvalidArgument;
    }
    for (command* each : commands) {
        each->footprint.ResetMatch();
    }
    return Guarded([&] { return live.Reset(format); });
}

error_code CQuibAccousticCmdCtrl::ProcessAudio(const void* data, uint32_t size) {
    if (data == nullptr && size > 0) {
        return kInvalidArgument;
    }
    return Guarded([&] { return live.Process(data, size); });
}

uint32_t CQuibAccousticCmdCtrl::RecognizeStream(IObservationStream* stream, void*,
                                                float* distance) {
    MaskFloatUnderflow();
    uint32_t id = 0;
    static_cast<void>(Guarded([&]() -> error_code {
        if (stream == nullptr) {
            return kInvalidArgument;
        }
        CFeatureStream utterance;
        const error_code code = utterance.Record(*stream, numFeatures, energyFloor);
        if (code != kNoError || utterance.GetNumObservations() < kMinFrames) {
            return code;
        }
        nearest_command nearest;
        for (const command* each : commands) {
            float candidate = kNoWarpDistance;
            each->footprint.MatchStream(utterance, &candidate);
            nearest.Offer(each->id, candidate);
        }
        id = nearest.Report(distance);
        return kNoError;
    }));
    return id;
}

uint32_t CQuibAccousticCmdCtrl::RecognizeLive(bool finished, float* distance) {
    MaskFloatUnderflow();
    uint32_t id = 0;
    static_cast<void>(Guarded([&]() -> error_code {
        if (finished) {
            static_cast<void>(live.Finish());
        }
        if (live.GetNumFeatures() < kMinFrames) {
            return kNoError;
        }
        nearest_command nearest;
        for (command* each : commands) {
            float candidate = kNoWarpDistance;
            const uint32_t frames = each->footprint.GetNumObservations();
            if (frames > 0 && each->footprint.MatchLive(live, &candidate) != kNoError) {
                continue;
            }
            nearest.Offer(each->id, candidate);
            std::fprintf(stdout, "mdl %" PRIu32 " %g frames: %" PRIu32 "\n", each->id,
                         static_cast<double>(candidate), frames);
        }
        id = nearest.Report(distance);
        return kNoError;
    }));
    return id;
}

} // namespace tessarin
