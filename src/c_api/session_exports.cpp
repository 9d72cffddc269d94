#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <utility>

#include "base/whole_file.h"
#include "c_api/create.h"
#include "model/phoneme_alphabet.h"
#include "model/phoneme_alphabets.h"
#include "session/audio_facts.h"
#include "session/lexicon_facts.h"
#include "session/live_listener.h"
#include "session/noise_gating.h"
#include "session/script_parts.h"
#include "session/script_transcriber.h"
#include "session/search_run.h"
#include "session/sentence_search.h"
#include "session/spoken_language.h"
#include "tessarin/tessarin_c.h"
#include "text/script/script_table.h"

using namespace tessarin;

static_assert(sizeof(tessarin_gate_options) == 24 &&
              (sizeof(void*) != 8 || sizeof(tessarin_live_options) == 48) &&
              sizeof(tessarin_live_phoneme) == 32 && sizeof(tessarin_live_frame) == 104 &&
              sizeof(tessarin_audio_facts) == 28);

namespace {

/// Has `take` replace the stretch of `live`, and lends that to the caller.
template <class Take> int32_t Lend(tessarin_live* live, tessarin_live_stretch* out, Take take) {
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = {};
    if (live == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] {
        live_stretch& stretch = live->stretch;
        const error_code code = take(live->listener, stretch);
        if (code == kNoError) {
            *out = {stretch.startMs,
                    stretch.endMs,
                    live->listener.GetWaitingMs(),
                    stretch.phonemes.empty() ? nullptr : stretch.phonemes.data(),
                    stretch.frames.empty() ? nullptr : stretch.frames.data(),
                    static_cast<uint32_t>(stretch.phonemes.size()),
                    static_cast<uint32_t>(stretch.frames.size())};
        }
        return code;
    });
}

} // namespace

int32_t tessarin_create_gated_audio(const tessarin_audio* audio,
                                    const tessarin_gate_options* options, float* level_db,
                                    tessarin_audio** out) {
    return Create(audio != nullptr, out, [&](std::unique_ptr<tessarin_audio>& made) {
        float levelDb = 0.0f;
        const error_code code = GateAudio(*audio, options, levelDb, made);
        if (code == kNoError && level_db != nullptr) {
            *level_db = levelDb;
        }
        return code;
    });
}

int32_t tessarin_create_live(const tessarin_model* model, const tessarin_live_options* options,
                             tessarin_live** out) {
    return Create(model != nullptr, out, [&](std::unique_ptr<tessarin_live>& made) {
        auto live = std::make_unique<tessarin_live>();
        const error_code code = live->listener.Open(model->hmm, options);
        if (code == kNoError) {
            made = std::move(live);
        }
        return code;
    });
}

int32_t tessarin_push_live_audio(tessarin_live* live, const void* samples, uint32_t size) {
    if (live == nullptr || (samples == nullptr && size > 0)) {
        return kInvalidArgument;
    }
    return Guarded([&] { return size > 0 ? live->listener.Push(samples, size) : kNoError; });
}

// Nothing here may wait or allocate, not even a line of the trace.
int32_t tessarin_push_live_samples(tessarin_live* live, const void* samples, uint32_t count) {
    if (live == nullptr || (samples == nullptr && count > 0)) {
        return kInvalidArgument;
    }
    return live->listener.PushFromCallback(samples, count);
}

int64_t tessarin_get_lost_live_ms(const tessarin_live* live) {
    return live != nullptr ? live->listener.GetLostMs() : 0;
}

int32_t tessarin_take_live_weights(tessarin_live* live, int64_t time_ms, float* weights,
                                   int64_t* at_ms) {
    if (weights == nullptr) {
        return kInvalidArgument;
    }
    const std::span<float, LiveWeights::kVisemes> out(weights, LiveWeights::kVisemes);
    std::ranges::fill(out, 0.0f);
    int64_t atMs = 0;
    const error_code code = live == nullptr
                                ? error_code{kInvalidArgument}
                                : Guarded([&] { return live->listener.Weigh(time_ms, out, atMs); });
    if (at_ms != nullptr) {
        *at_ms = atMs;
    }
    return code;
}

int32_t tessarin_take_live(tessarin_live* live, tessarin_live_stretch* out) {
    return Lend(live, out, [](LiveListener& listener, live_stretch& stretch) {
        return listener.Take(stretch);
    });
}

int32_t tessarin_finish_live(tessarin_live* live, tessarin_live_stretch* out) {
    return Lend(live, out, [](LiveListener& listener, live_stretch& stretch) {
        return listener.Finish(stretch);
    });
}

void tessarin_free_live(tessarin_live* live) {
    delete live;
}

int32_t tessarin_create_sentence_search(const tessarin_model* model, tessarin_language* language,
                                        const tessarin_audio* audio, const char* text,
                                        float min_score, const tessarin_search_options* options,
                                        const tessarin_progress* progress,
                                        tessarin_sentence_search** out) {
    const bool hasInput =
        model != nullptr && language != nullptr && audio != nullptr && text != nullptr;
    return Create(hasInput, out, [&](std::unique_ptr<tessarin_sentence_search>& made) {
        return std::isnan(min_score) ? error_code{kOutOfRange}
                                     : SearchSentences({*model, *audio, options, progress},
                                                       *language, text, min_score, made);
    });
}

const tessarin_sentence* tessarin_get_sentences(const tessarin_sentence_search* search,
                                                uint32_t* count) {
    return Items(search != nullptr ? &search->sentences : nullptr, count);
}

void tessarin_free_sentence_search(tessarin_sentence_search* search) {
    delete search;
}

const tessarin_model_facts* tessarin_get_model_facts(const tessarin_model* model) {
    return model != nullptr ? &model->facts : nullptr;
}

int32_t tessarin_create_lexicon_from_file(const char* path, tessarin_lexicon** out) {
    return Create(path != nullptr, out, [&](std::unique_ptr<tessarin_lexicon>& made) {
        uint32_t size = 0;
        const auto content = ReadWholeFile(path, &size, false);
        return content == nullptr ? kFileNotFound : LookIntoLexicon(content.get(), size, made);
    });
}

int32_t tessarin_create_lexicon_from_memory(const void* data, uint32_t size,
                                            tessarin_lexicon** out) {
    return Create(data != nullptr, out, [&](std::unique_ptr<tessarin_lexicon>& made) {
        return LookIntoLexicon(data, size, made);
    });
}

const char* tessarin_get_phoneme_label(uint32_t index) {
    return index < PhonemeAlphabet().size() ? PhonemeAlphabet()[index].label : nullptr;
}

const char* tessarin_get_phoneme_symbol(const char* label, uint32_t alphabet) {
    return label != nullptr ? SymbolInAlphabet(label, alphabet) : nullptr;
}

const tessarin_lexicon_facts* tessarin_get_lexicon_facts(const tessarin_lexicon* lexicon) {
    return lexicon != nullptr ? &lexicon->facts : nullptr;
}

int32_t tessarin_measure_audio(const tessarin_audio* audio, tessarin_audio_facts* out) {
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = {};
    if (audio == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] {
        *out = FindAudioFacts(*audio);
        return kNoError;
    });
}

int32_t tessarin_has_word(tessarin_language* language, const char* word, int32_t* out) {
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = 0;
    if (language == nullptr || word == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] {
        bool isKnown = false;
        const error_code code = FindWord(*language, word, isKnown);
        *out = isKnown ? 1 : 0;
        return code;
    });
}

void tessarin_free_lexicon(tessarin_lexicon* lexicon) {
    delete lexicon;
}

int32_t tessarin_create_script(tessarin_language* language, const char* text,
                               const tessarin_script_options* options, tessarin_script** out) {
    return Create(text != nullptr, out, [&](std::unique_ptr<tessarin_script>& made) {
        return MakeScript(language, text, options, made);
    });
}

int32_t tessarin_check_script_table(const char* table, char* reason, uint32_t reason_size) {
    WriteReason("", reason, reason_size);
    return table == nullptr ? error_code{kInvalidArgument} : Guarded([&] {
        const script_table_error error = ScriptTable().Add(table);
        if (error.line == 0) {
            return kNoError;
        }
        WriteReason("line " + std::to_string(error.line) + ": " + error.reason, reason,
                    reason_size);
        return kInvalidFile;
    });
}

const char* tessarin_get_script_text(const tessarin_script* script) {
    return script != nullptr ? script->reading.GetSpoken().c_str() : "";
}

const tessarin_script_part* tessarin_get_script_words(const tessarin_script* script,
                                                      uint32_t* count) {
    return Items(script != nullptr ? &script->words : nullptr, count);
}

const char* const* tessarin_get_script_readings(const tessarin_script* script, uint32_t word,
                                                uint32_t* count) {
    const bool isWord = script != nullptr && word < script->readings.size();
    return Items(isWord ? &script->readings[word] : nullptr, count);
}

const tessarin_script_part* tessarin_get_script_events(const tessarin_script* script,
                                                       uint32_t* count) {
    return Items(script != nullptr ? &script->events : nullptr, count);
}

const tessarin_script_part* tessarin_get_script_cues(const tessarin_script* script,
                                                     uint32_t* count) {
    return Items(script != nullptr ? &script->cues : nullptr, count);
}

const tessarin_script_part* tessarin_get_script_unsaid(const tessarin_script* script,
                                                       uint32_t* count) {
    return Items(script != nullptr ? &script->unsaid : nullptr, count);
}

int32_t tessarin_find_script_part(const tessarin_script* script, int32_t offset, int32_t length,
                                  tessarin_script_part* out) {
    return script == nullptr || out == nullptr ? error_code{kInvalidArgument}
                                               : FindScriptPart(*script, offset, length, *out);
}

const char* tessarin_get_word_reading(const tessarin_result* result, uint32_t word) {
    return result != nullptr && word < result->wordReadings.size()
               ? result->wordReadings[word].c_str()
               : "";
}

int32_t CreateScriptTranscriber(IVisemixTranscriber* inner, const tessarin_script* script,
                                IScriptTranscriber** out) {
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = nullptr;
    if (inner == nullptr || script == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] {
        return RefusingBadUtf8([&] {
            TranscriberInfo info{};
            inner->getTranscriberInfo(&info);
            auto text = std::make_shared<const SpanText>("", script->reading, info);
            *out = MakeScriptTranscriber(*inner, std::move(text)).release();
            return kNoError;
        });
    });
}

void tessarin_free_script(tessarin_script* script) {
    delete script;
}
