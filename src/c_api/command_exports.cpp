#include "c_api/create.h"
#include "session/spoken_commands.h"
#include "tessarin/tessarin_c.h"

using namespace tessarin;

static_assert(sizeof(tessarin_command_options) == 12 &&
              (sizeof(void*) != 8 || sizeof(tessarin_command_match) == 16));

int32_t tessarin_create_commands(const tessarin_model* model,
                                 const tessarin_command_options* options, tessarin_commands** out) {
    return Create(model != nullptr, out, [&](std::unique_ptr<tessarin_commands>& made) {
        auto commands = std::make_unique<tessarin_commands>();
        const error_code code = commands->Open(model->hmm, options);
        if (code == kNoError) {
            made = std::move(commands);
        }
        return code;
    });
}

int32_t tessarin_add_command_text(tessarin_commands* commands, tessarin_language* language,
                                  const char* name, const char* text) {
    if (commands == nullptr || language == nullptr || name == nullptr || text == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] { return commands->AddText(name, *language, text); });
}

int32_t tessarin_add_command_phonemes(tessarin_commands* commands, const char* name,
                                      const char* phonemes) {
    if (commands == nullptr || name == nullptr || phonemes == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] { return commands->AddPhonemes(name, phonemes); });
}

int32_t tessarin_add_command_sample(tessarin_commands* commands, const char* name,
                                    const tessarin_audio* audio,
                                    const tessarin_search_options* options) {
    if (commands == nullptr || name == nullptr || audio == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] { return commands->AddSample(name, *audio, options); });
}

int32_t tessarin_add_packed_command_samples(tessarin_commands* commands, const void* data,
                                            uint64_t size) {
    if (commands == nullptr || data == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] {
        return commands->AddPacked({static_cast<const char*>(data), static_cast<size_t>(size)});
    });
}

int32_t tessarin_pack_command_samples(tessarin_commands* commands, uint64_t* size,
                                      const void** out) {
    if (out == nullptr || size == nullptr) {
        return kInvalidArgument;
    }
    *out = nullptr;
    *size = 0;
    if (commands == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] {
        const error_code code = commands->Pack();
        if (code == kNoError) {
            *out = commands->packed.data();
            *size = commands->packed.size();
        }
        return code;
    });
}

int32_t tessarin_rank_commands(tessarin_commands* commands, const tessarin_audio* audio,
                               const tessarin_search_options* options,
                               const tessarin_progress* progress) {
    if (commands == nullptr || audio == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] { return commands->Rank(*audio, options, progress); });
}

int32_t tessarin_push_command_audio(tessarin_commands* commands, const int16_t* samples,
                                    uint32_t count, int32_t* has_ended) {
    if (has_ended == nullptr) {
        return kInvalidArgument;
    }
    *has_ended = 0;
    if (commands == nullptr || (samples == nullptr && count > 0)) {
        return kInvalidArgument;
    }
    return Guarded([&] {
        bool isOver = false;
        const error_code code = commands->Push({samples, count}, isOver);
        *has_ended = isOver ? 1 : 0;
        return code;
    });
}

int32_t tessarin_rank_utterance(tessarin_commands* commands, const tessarin_progress* progress) {
    return commands == nullptr ? kInvalidArgument
                               : Guarded([&] { return commands->RankUtterance(progress); });
}

const tessarin_command_match* tessarin_get_command_ranking(const tessarin_commands* commands,
                                                           uint32_t* count) {
    return Items(commands != nullptr ? &commands->ranking : nullptr, count);
}

void tessarin_free_commands(tessarin_commands* commands) {
    delete commands;
}
