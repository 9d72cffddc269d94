#include "apps/tessarin/command_matcher.h"

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/readers/live_audio.h"
#include "apps/tessarin/readers/spoken_text.h"

namespace {

void RequireDone(const std::string& source, int32_t code) {
    if (code != TESSARIN_OK) {
        throw EngineFailure(source, code);
    }
}

} // namespace

CommandMatcher::CommandMatcher(const tessarin_model& model, double floorDb) {
    const tessarin_command_options options{sizeof options, kLiveRateHz,
                                           static_cast<float>(floorDb)};
    RequireDone("commands", tessarin_create_commands(&model, &options, tessarin::Out(commands)));
}

void CommandMatcher::Add(const std::vector<listed_command>& list, tessarin_language& language,
                         tessarin::IVisemixTranscriber& transcriber) {
    for (const listed_command& command : list) {
        int32_t code = TESSARIN_OK;
        if (command.phonemes.empty()) {
            const SpokenText text(command.place, command.name, "auto", transcriber);
            code = tessarin_add_command_text(commands.get(), &language, command.name.c_str(),
                                             text.GetUtf8().c_str());
        } else {
            code = tessarin_add_command_phonemes(commands.get(), command.name.c_str(),
                                                 command.phonemes.c_str());
        }
        if (code == TESSARIN_INVALID_ARGUMENT) {
            throw Failure(kExitFailed,
                          command.place + ": cannot be said: " +
                              (command.phonemes.empty() ? command.name : command.phonemes));
        }
        RequireDone(command.place, code);
    }
}

void CommandMatcher::Record(const std::string& name, const std::string& source,
                            const tessarin_audio& sample) {
    const int32_t code =
        tessarin_add_command_sample(commands.get(), name.c_str(), &sample, nullptr);
    if (code == TESSARIN_INVALID_ARGUMENT) {
        throw Failure(kExitFailed, source + ": cannot be used as a sample of \"" + name + "\"");
    }
    RequireDone(source, code);
}

void CommandMatcher::LoadSamples(const std::string& path) {
    const std::string content = ReadWholeFile(path);
    const int32_t code =
        tessarin_add_packed_command_samples(commands.get(), content.data(), content.size());
    if (code == TESSARIN_INVALID_FILE) {
        throw Failure(kExitFailed, path + ": is not a file of recorded commands, or is cut short");
    }
    RequireDone(path, code);
}

std::string CommandMatcher::PackSamples() {
    uint64_t size = 0;
    const void* packed = nullptr;
    RequireDone("commands", tessarin_pack_command_samples(commands.get(), &size, &packed));
    return {static_cast<const char*>(packed), static_cast<size_t>(size)};
}

command_match CommandMatcher::Match(const std::string& source, const tessarin_audio& recording,
                                    const tessarin_progress& progress) {
    RequireDone(source, tessarin_rank_commands(commands.get(), &recording, nullptr, &progress));
    return Best();
}

bool CommandMatcher::Hear(const std::string& samples) {
    int32_t hasEnded = 0;
    RequireDone("standard input",
                tessarin_push_command_audio(
                    commands.get(), reinterpret_cast<const int16_t*>(samples.data()),
                    static_cast<uint32_t>(samples.size() / sizeof(int16_t)), &hasEnded));
    return hasEnded == 0;
}

command_match CommandMatcher::MatchHeard(const tessarin_progress& progress) {
    const int32_t code = tessarin_rank_utterance(commands.get(), &progress);
    if (code != TESSARIN_CANCELLED) {
        RequireDone("standard input", code);
    }
    return Best();
}

command_match CommandMatcher::Best() const {
    uint32_t count = 0;
    const tessarin_command_match* const ranking =
        tessarin_get_command_ranking(commands.get(), &count);
    return count > 0 ? command_match{ranking->name, ranking->score} : command_match{};
}
