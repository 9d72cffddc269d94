#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "apps/tessarin/readers/command_list_file.h"
#include "apps/tessarin/readers/command_sample_file.h"
#include "tessarin/tessarin.h"

/// Which command an utterance is. The name is empty when it is none, as when it is too short.
struct command_match {
    std::string name;
    double score = 0.0;
};

/// The commands of a list, known by their phonemes. The score is a logarithm; the higher the
/// better.
class TextCommands {
public:
    /// `model` must outlive the object. Throws Failure.
    TextCommands(tessarin::CAccousticHMM& model, double floorDb);

    /// Throws Failure when a command cannot be said.
    void Add(const std::vector<listed_command>& list, tessarin::IVisemixTranscriber& transcriber);
    command_match Match(tessarin::IObservationStream& utterance,
                        tessarin::ProgressSink* progress) const;

private:
    struct releaser {
        void operator()(tessarin::IQuibCmdCtrl* controller) const { controller->Release(); }
    };

    std::unique_ptr<tessarin::IQuibCmdCtrl, releaser> controller;
    std::map<uint32_t, std::string> names;
};

/// Commands that are known by samples. The score is a distance; the lower the better. Listens to
/// live audio too.
class SampledCommands {
public:
    /// Throws Failure.
    SampledCommands(tessarin::CAccousticHMM& model, double floorDb);

    /// Both throw Failure, which names `source`, when the sample cannot be used.
    void Record(const std::string& name, const std::string& source,
                tessarin::IObservationStream& sample);
    void Load(const command_sample& sample, const std::string& source);
    std::vector<command_sample> Samples() const;

    command_match Match(tessarin::IObservationStream& utterance) const;

    /// Begins an utterance of 16-bit mono audio. Throws Failure.
    void BeginUtterance(uint32_t rateHz);
    /// Takes in audio. False once the utterance has ended. Throws Failure.
    bool Hear(const void* data, uint32_t size);
    /// Ends the utterance.
    command_match MatchHeard();

private:
    struct releaser {
        void operator()(tessarin::IQuibAcousticCmdCtrl* controller) const { controller->Release(); }
    };

    void Keep(uint32_t id, const std::string& name, const std::string& source);
    command_match MatchOf(uint32_t id, float distance) const;

    std::unique_ptr<tessarin::IQuibAcousticCmdCtrl, releaser> controller;
    std::map<uint32_t, std::string> names;
};
