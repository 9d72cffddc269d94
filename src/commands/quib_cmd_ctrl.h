#pragma once

#include <cstdint>
#include <vector>

#include "base/quib_allocator.h"
#include "commands/command_list.h"
#include "commands/command_score.h"
#include "recognition/graph/log_state_graph.h"
#include "tessarin/command_controller.h"

namespace tessarin {

class CFeatureStream;

/// Recognizes commands by their phonemes: the utterance is aligned to each, and the one with the
/// best score is it.
class CQuibCmdCtrl : public IQuibCmdCtrl {
public:
    CQuibCmdCtrl(CAccousticHMM& acousticModel, float floor);
    CQuibCmdCtrl(const CQuibCmdCtrl&) = delete;
    CQuibCmdCtrl& operator=(const CQuibCmdCtrl&) = delete;

    int32_t AddRef() override { return ++references; }
    int32_t Release() override;
    uint32_t AddCommandFromTranscriber(const char* text, IVisemixTranscriber* transcriber) override;
    uint32_t AddCommandFromPhonemes(const char* phonemes) override;
    uint32_t AddCommandFromMarkers(CTxMarker* first, CTxMarker* last) override;
    void DeleteCommand(uint32_t id) override { commands.Delete(id); }
    void DisableCommand(uint32_t id) override { commands.Enable(id, false); }
    void EnableCommand(uint32_t id) override { commands.Enable(id, true); }
    uint32_t RecognizeCommand(IObservationStream* stream, ProgressSink* progress,
                              double* score) override;
    virtual ~CQuibCmdCtrl() = default;

    /// Replaces `out` by the score of each enabled command that was found in the utterance, in the
    /// order in which the commands were added; by nothing for one that is too short. Returns 0; 5
    /// when `progress` asked to stop; 1 without memory; or the code of a failed read.
    [[nodiscard]] error_code ScoreCommands(IObservationStream& stream, ProgressSink* progress,
                                           std::vector<command_score>& out);

private:
    struct command {
        virtual ~command() = default;

        uint32_t id = 0;
        log_state_graph graph; // in the pool
        bool enabled = true;
        std::vector<uint32_t> positions; // states in which the command can begin
    };

    uint32_t AddCommand(CTxMarker* first, CTxMarker* last);
    [[nodiscard]] error_code ScoreAll(CFeatureStream& utterance, ProgressSink* progress,
                                      std::vector<command_score>& out);

    int32_t references = 0;
    quib_allocator pool; // keeps the graphs of deleted commands until the end
    command_list<command> commands;
    CAccousticHMM& model;
    float energyFloor;
};

} // namespace tessarin
