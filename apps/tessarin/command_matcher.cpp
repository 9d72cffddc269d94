#include "apps/tessarin/command_matcher.h"

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/silenced_output.h"
#include "apps/tessarin/readers/spoken_text.h"

namespace {

/// Energies are told in decibels, as live audio has them.
constexpr uint32_t kDecibelEnergy = 2;

std::string NameOf(const std::map<uint32_t, std::string>& names, uint32_t id) {
    const auto found = names.find(id);
    return found != names.end() ? found->second : "";
}

} // namespace

TextCommands::TextCommands(tessarin::CAccousticHMM& model, double floorDb) {
    tessarin::IQuibCmdCtrl* made = nullptr;
    const int32_t code = CreateQuibCmdCtrl(nullptr, &model, static_cast<float>(floorDb), &made);
    if (code != tessarin::kNoError) {
        throw EngineFailure("commands", code);
    }
    made->AddRef();
    controller.reset(made);
}

void TextCommands::Add(const std::vector<listed_command>& list,
                       tessarin::IVisemixTranscriber& transcriber) {
    for (const listed_command& command : list) {
        uint32_t id = 0;
        if (command.phonemes.empty()) {
            const SpokenText text(command.place, command.name, "auto", transcriber);
            id = controller->AddCommandFromTranscriber(text.GetLocal().c_str(), &transcriber);
        } else {
            id = controller->AddCommandFromPhonemes(command.phonemes.c_str());
        }
        if (id == 0) {
            throw Failure(kExitFailed,
                          command.place + ": cannot be said: " +
                              (command.phonemes.empty() ? command.name : command.phonemes));
        }
        names[id] = command.name;
    }
}

command_match TextCommands::Match(tessarin::IObservationStream& utterance,
                                  tessarin::ProgressSink* progress) const {
    const SilencedOutput silenced;
    utterance.SetProcessingFlags(kDecibelEnergy);
    double score = 0.0;
    const uint32_t id = controller->RecognizeCommand(&utterance, progress, &score);
    return {NameOf(names, id), score};
}

SampledCommands::SampledCommands(tessarin::CAccousticHMM& model, double floorDb) {
    tessarin::IQuibAcousticCmdCtrl* made = nullptr;
    const int32_t code =
        CreateQuibAcousticCmdCtrl(nullptr, &model, static_cast<float>(floorDb), &made);
    if (made != nullptr) {
        made->AddRef();
        controller.reset(made);
    }
    if (code != tessarin::kNoError) {
        throw EngineFailure("commands", code);
    }
}

void SampledCommands::Record(const std::string& name, const std::string& source,
                             tessarin::IObservationStream& sample) {
    sample.SetProcessingFlags(kDecibelEnergy);
    Keep(controller->AddCommandFromStream(&sample), name, source);
}

void SampledCommands::Load(const command_sample& sample, const std::string& source) {
    Keep(controller->AddCommandFromData(sample.data.data()), sample.name, source);
}

void SampledCommands::Keep(uint32_t id, const std::string& name, const std::string& source) {
    if (id == 0) {
        throw Failure(kExitFailed, source + ": cannot be used as a sample of \"" + name + "\"");
    }
    names[id] = name;
}

std::vector<command_sample> SampledCommands::Samples() const {
    std::vector<command_sample> samples;
    for (const auto& [id, name] : names) {
        std::string data(controller->GetCommandData(id, nullptr), '\0');
        controller->GetCommandData(id, data.data());
        samples.push_back({name, std::move(data)});
    }
    return samples;
}

command_match SampledCommands::MatchOf(uint32_t id, float distance) const {
    return {NameOf(names, id), static_cast<double>(distance)};
}

command_match SampledCommands::Match(tessarin::IObservationStream& utterance) const {
    utterance.SetProcessingFlags(kDecibelEnergy);
    float distance = 0.0f;
    const uint32_t id = controller->RecognizeStream(&utterance, nullptr, &distance);
    return MatchOf(id, distance);
}

void SampledCommands::BeginUtterance(uint32_t rateHz) {
    const tessarin::PCMFormat format{rateHz << 16, 16, 1};
    const int32_t code = controller->BeginUtterance(&format);
    if (code != tessarin::kNoError) {
        throw EngineFailure("standard input", code);
    }
}

bool SampledCommands::Hear(const void* data, uint32_t size) {
    const int32_t code = controller->ProcessAudio(data, size);
    if (code != tessarin::kNoError && code != tessarin::kOutOfRange) {
        throw EngineFailure("standard input", code);
    }
    return code == tessarin::kNoError;
}

command_match SampledCommands::MatchHeard() {
    const SilencedOutput silenced;
    float distance = 0.0f;
    const uint32_t id = controller->RecognizeLive(true, &distance);
    return MatchOf(id, distance);
}
