#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "apps/tessarin/readers/command_list_file.h"
#include "tessarin/owned.h"

/// Which command an utterance is. The name is empty when there is none, as for an utterance that is
/// too short.
struct command_match {
    std::string name;
    double score = 0.0;
};

/// Commands by texts or by samples, and their matches with recordings and live audio. All throw
/// Failure.
class CommandMatcher {
public:
    CommandMatcher(const tessarin_model& model, double floorDb);

    /// Adds the commands of a list. `transcriber` reads names that are not UTF-8.
    void Add(const std::vector<listed_command>& list, tessarin_language& language,
             tessarin::IVisemixTranscriber& transcriber);
    void Record(const std::string& name, const std::string& source, const tessarin_audio& sample);
    /// Adds the samples of a file, and gives all there are as the content of one.
    void LoadSamples(const std::string& path);
    std::string PackSamples();

    command_match Match(const std::string& source, const tessarin_audio& recording,
                        const tessarin_progress& progress);

    /// Takes in 16-bit mono audio of kLiveRateHz. False once the utterance has ended.
    bool Hear(const std::string& samples);
    /// Ends the utterance. A search that was stopped matches nothing.
    command_match MatchHeard(const tessarin_progress& progress);

private:
    command_match Best() const;

    tessarin::flat::commands_owner commands;
};
