#pragma once

#include <cstdint>
#include <vector>

#include "commands/audio_footprint.h"
#include "commands/command_list.h"
#include "commands/command_score.h"
#include "features/buffer_feature_stream.h"
#include "tessarin/acoustic_command_controller.h"

namespace tessarin {

/// Recognizes commands by recorded samples of them.
class CQuibAccousticCmdCtrl : public IQuibAcousticCmdCtrl {
public:
    CQuibAccousticCmdCtrl() = default;
    CQuibAccousticCmdCtrl(const CQuibAccousticCmdCtrl&) = delete;
    CQuibAccousticCmdCtrl& operator=(const CQuibAccousticCmdCtrl&) = delete;

    int32_t AddRef() override { return ++references; }
    int32_t Release() override;
    uint32_t AddCommandFromStream(IObservationStream* stream) override;
    uint32_t GetCommandData(uint32_t id, void* buffer) override;
    uint32_t AddCommandFromData(const void* data) override;
    void DeleteCommand(uint32_t id) override { commands.Delete(id); }
    // Kept: no match looks at the flag.
    void DisableCommand(uint32_t id) override { commands.Enable(id, false); }
    void EnableCommand(uint32_t id) override { commands.Enable(id, true); }
    error_code BeginUtterance(const PCMFormat* format) override;
    error_code ProcessAudio(const void* data, uint32_t size) override;
    uint32_t RecognizeStream(IObservationStream* stream, void* reserved, float* distance) override;
    uint32_t RecognizeLive(bool finished, float* distance) override;
    virtual ~CQuibAccousticCmdCtrl() = default;
    /// Prepares for audio that is analysed as `model` says. Returns the code of why live audio
    /// cannot be.
    virtual error_code InitFeatures(CAccousticHMM* model, float newEnergyFloor);

    /// How many observations of a sample take part in comparisons; 0 for an id that is not known.
    uint32_t GetNumObservations(uint32_t id);
    /// Replaces `out` by the distance of each command that can be compared with the utterance in
    /// `stream`, in the order in which the commands were added; by nothing for an utterance that is
    /// too short. Returns 0, or the code of a failed read.
    [[nodiscard]] error_code FindDistances(IObservationStream& stream,
                                           std::vector<command_score>& out);
    /// The same for the live utterance as far as it was heard. `finished`: no more audio comes.
    void FindLiveDistances(bool finished, std::vector<command_score>& out);

private:
    struct command {
        virtual ~command() = default;

        uint32_t id = 0;
        bool enabled = true;
        audio_footprint footprint;
    };

    std::vector<command_score> Compare(const CFeatureStream& utterance) const;
    bool HasHeardEnough(bool finished);
    std::vector<command_score> CompareLive();

    int32_t references = 0;
    command_list<command> commands;
    int32_t numFeatures = 0; // of an observation
    float energyFloor = 0.0f;
    buffer_feature_stream live;
};

} // namespace tessarin
