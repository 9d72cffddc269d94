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

/// What could not be compared has no distance, and is never the nearest.
bool HasNoDistance(const command_score& each) {
    return !(each.score < kNoWarpDistance);
}

/// The nearest command; of equals the first.
uint32_t ReportNearest(const std::vector<command_score>& all, float* distance) {
    command_score nearest{0, std::numeric_limits<float>::max()};
    for (const command_score& each : all) {
        nearest = !HasNoDistance(each) && each.score < nearest.score ? each : nearest;
    }
    if (distance != nullptr) {
        *distance = static_cast<float>(nearest.score);
    }
    return nearest.id;
}

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

/// Of all commands, those without a distance too.
std::vector<command_score> CQuibAccousticCmdCtrl::Compare(const CFeatureStream& utterance) const {
    std::vector<command_score> all;
    for (const command* each : commands) {
        float distance = kNoWarpDistance;
        each->footprint.MatchStream(utterance, &distance);
        all.push_back({each->id, distance});
    }
    return all;
}

bool CQuibAccousticCmdCtrl::HasHeardEnough(bool finished) {
    if (finished) {
        static_cast<void>(live.Finish());
    }
    return live.GetNumFeatures() >= kMinFrames;
}

/// Of all commands but those whose observations are of another width.
std::vector<command_score> CQuibAccousticCmdCtrl::CompareLive() {
    std::vector<command_score> all;
    for (command* each : commands) {
        float distance = kNoWarpDistance;
        if (each->footprint.GetNumObservations() == 0 ||
            each->footprint.MatchLive(live, &distance) == kNoError) {
            all.push_back({each->id, distance});
        }
    }
    return all;
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
        if (code == kNoError && utterance.GetNumObservations() >= kMinFrames) {
            id = ReportNearest(Compare(utterance), distance);
        }
        return code;
    }));
    return id;
}

uint32_t CQuibAccousticCmdCtrl::RecognizeLive(bool finished, float* distance) {
    MaskFloatUnderflow();
    uint32_t id = 0;
    static_cast<void>(Guarded([&] {
        if (!HasHeardEnough(finished)) {
            return;
        }
        const std::vector<command_score> all = CompareLive();
        for (const command_score& each : all) {
            std::fprintf(stdout, "mdl %" PRIu32 " %g frames: %" PRIu32 "\n", each.id, each.score,
                         commands.Find(each.id)->footprint.GetNumObservations());
        }
        id = ReportNearest(all, distance);
    }));
    return id;
}

uint32_t CQuibAccousticCmdCtrl::GetNumObservations(uint32_t id) {
    command* known = commands.Find(id);
    return known != nullptr ? known->footprint.GetNumObservations() : 0;
}

error_code CQuibAccousticCmdCtrl::FindDistances(IObservationStream& stream,
                                                std::vector<command_score>& out) {
    MaskFloatUnderflow();
    out.clear();
    CFeatureStream utterance;
    const error_code code = utterance.Record(stream, numFeatures, energyFloor);
    if (code == kNoError && utterance.GetNumObservations() >= kMinFrames) {
        out = Compare(utterance);
        std::erase_if(out, HasNoDistance);
    }
    return code;
}

void CQuibAccousticCmdCtrl::FindLiveDistances(bool finished, std::vector<command_score>& out) {
    MaskFloatUnderflow();
    out.clear();
    if (HasHeardEnough(finished)) {
        out = CompareLive();
        std::erase_if(out, HasNoDistance);
    }
}

} // namespace tessarin
