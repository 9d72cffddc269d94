#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "commands/quib_accoustic_cmd_ctrl.h"
#include "commands/quib_cmd_ctrl.h"
#include "session/search_run.h"
#include "tessarin/tessarin_c.h"

/// A few commands, and which of them was said last.
struct tessarin_commands {
    /// To be called once, and first.
    tessarin::error_code Open(std::shared_ptr<tessarin::CAccousticHMM> acousticModel,
                              const tessarin_command_options* given);

    tessarin::error_code AddText(const char* name, tessarin_language& language, const char* text);
    tessarin::error_code AddPhonemes(const char* name, const char* phonemes);
    tessarin::error_code AddSample(const char* name, const tessarin_audio& audio,
                                   const tessarin_search_options* options);
    tessarin::error_code AddPacked(std::string_view data);
    /// Sets `packed`.
    tessarin::error_code Pack();

    /// These replace the ranking.
    tessarin::error_code Rank(const tessarin_audio& audio, const tessarin_search_options* options,
                              const tessarin_progress* progress);
    tessarin::error_code RankUtterance(const tessarin_progress* progress);

    tessarin::error_code Push(std::span<const int16_t> block, bool& isOver);

    std::string packed; ///< samples, as they are kept in a file
    std::vector<tessarin_command_match> ranking;

private:
    template <class Use>
    tessarin::error_code WithObservations(std::span<const int16_t> samples, uint32_t rateHz,
                                          Use use);
    template <class Add> tessarin::error_code AddSounds(const char* name, Add add);
    tessarin::error_code RankStretch(std::span<const int16_t> samples, uint32_t rateHz,
                                     const tessarin_progress* progress);
    tessarin::error_code BeginUtterance();
    bool AreSampled() const { return isSampled && !names.empty(); }
    bool AreSounds() const { return !isSampled && !names.empty(); }
    void SetRanking(std::vector<tessarin::command_score> scores);

    std::shared_ptr<tessarin::CAccousticHMM> model; ///< outlives the controllers
    std::unique_ptr<tessarin::CQuibCmdCtrl> sounds;
    std::unique_ptr<tessarin::CQuibAccousticCmdCtrl> samples; ///< also hears all live audio
    tessarin::error_code liveCode = 0;                        ///< why it cannot, if it cannot
    bool isSampled = false;                ///< how the commands are known, once there are some
    std::map<uint32_t, std::string> names; ///< by the ids of the controller

    uint32_t liveRateHz = 0;
    bool isUttering = false;
    bool hasEnded = false;
    uint64_t heard = 0;             ///< samples of the utterance
    std::vector<int16_t> utterance; ///< they, where commands are known by their sounds
};
