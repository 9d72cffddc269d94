#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "base/guarded.h"
#include "base/whole_file.h"
#include "c_api/create.h"
#include "c_api/weight_track.h"
#include "session/audio_samples.h"
#include "session/model_facts.h"
#include "session/near_characters.h"
#include "session/search_run.h"
#include "session/transcriber_pool.h"
#include "tessarin/tessarin.h"
#include "tessarin/tessarin_c.h"

using namespace tessarin;

static_assert(TESSARIN_OUT_OF_MEMORY == kOutOfMemory && TESSARIN_CANCELLED == kUserCancelled &&
              TESSARIN_INVALID_ARGUMENT == kInvalidArgument &&
              TESSARIN_OUT_OF_RANGE == kOutOfRange && TESSARIN_INTERNAL_ERROR == kInternalError &&
              TESSARIN_NOT_AVAILABLE == kNotAvailable &&
              TESSARIN_RECOGNITION_FAILED == kRecognitionFailed &&
              TESSARIN_FILE_NOT_FOUND == kFileNotFound && TESSARIN_INVALID_FILE == kInvalidFile &&
              TESSARIN_INVALID_UTF8 == kInvalidUtf8 && TESSARIN_NEWER_VERSION == kNewerVersion &&
              TESSARIN_EXCEPTION == kException);
static_assert(+TESSARIN_WORD == +kWordToken && +TESSARIN_TAG == +kTagToken &&
              +TESSARIN_CUT == +kCutToken && +TESSARIN_PUNCTUATION == +kPunctuationToken);
static_assert(+TESSARIN_TRACK_SMOOTH == +kSmoothFrames &&
              +TESSARIN_TRACK_EXCESS_LEVEL == +kExcessLevel);
static_assert(sizeof(void*) != 8 ||
              (sizeof(tessarin_phoneme) == 20 && sizeof(tessarin_span) == 32 &&
               sizeof(tessarin_token) == 32 && sizeof(tessarin_frame) == 92 &&
               sizeof(tessarin_search_options) == 40 && sizeof(tessarin_script_options) == 32 &&
               sizeof(tessarin_script_part) == 32 && sizeof(tessarin_track_options) == 64 &&
               sizeof(tessarin_match) == 32 && sizeof(tessarin_word_match) == 16));

namespace {

error_code MakeModel(const void* data, uint32_t size, std::unique_ptr<tessarin_model>& out) {
    auto model = std::make_unique<tessarin_model>();
    CAccousticHMM* hmm = nullptr;
    const error_code code = CreateAccHMM(data, size, nullptr, &hmm);
    model->hmm = model_owner(hmm);
    if (code == kNoError) {
        model->image.assign(static_cast<const char*>(data), size);
        CollectFacts(*model);
        out = std::move(model);
    }
    return code;
}

error_code MakeLanguage(const void* data, uint32_t size, std::unique_ptr<tessarin_language>& out) {
    if (size > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) {
        return kInvalidFile;
    }
    auto language =
        std::make_unique<tessarin_language>(std::string(static_cast<const char*>(data), size));
    const error_code code = language->Open();
    if (code == kNoError) {
        out = std::move(language);
    }
    return code;
}

template <class T, class Make> error_code FromFile(const char* path, T& out, Make make) {
    uint32_t size = 0;
    const auto content = ReadWholeFile(path, &size, false);
    return content == nullptr ? kFileNotFound : make(content.get(), size, out);
}

template <class Sample, class Convert>
int32_t CreateAudio(const Sample* samples, uint32_t count, uint32_t rateHz, tessarin_audio** out,
                    Convert convert) {
    return Create(samples != nullptr || count == 0, out,
                  [&](std::unique_ptr<tessarin_audio>& made) {
                      if (rateHz < 1 || rateHz > kHighestRateHz || count > kMostSamples) {
                          return kOutOfRange;
                      }
                      made = std::make_unique<tessarin_audio>();
                      made->rateHz = rateHz;
                      made->samples.resize(count);
                      std::transform(samples, samples + count, made->samples.begin(), convert);
                      return kNoError;
                  });
}

} // namespace

const char* tessarin_get_error_text(int32_t code) {
    return GetVisemixErrorMessage(code);
}

const char* tessarin_get_version(void) {
    return TESSARIN_VERSION;
}

const char* tessarin_get_near_text(uint32_t character) {
    const auto near = FindNearCharacters(character);
    return near ? near->data() : nullptr;
}

int32_t tessarin_create_model_from_file(const char* path, tessarin_model** out) {
    return Create(path != nullptr, out, [&](std::unique_ptr<tessarin_model>& made) {
        return FromFile(path, made, MakeModel);
    });
}

int32_t tessarin_create_model_from_memory(const void* data, uint32_t size, tessarin_model** out) {
    return Create(data != nullptr, out, [&](std::unique_ptr<tessarin_model>& made) {
        return MakeModel(data, size, made);
    });
}

int32_t tessarin_read_model_statistics(tessarin_model* model, const char* path,
                                       int32_t are_counts) {
    return model == nullptr || path == nullptr
               ? kInvalidArgument
               : LoadTrigramFileIntoHMM(model->hmm.get(), path, are_counts != 0 ? 1 : 0);
}

int32_t tessarin_set_model_statistics(tessarin_model* model, const void* data, uint32_t size,
                                      int32_t are_counts) {
    if (model == nullptr || (data == nullptr && size > 0)) {
        return kInvalidArgument;
    }
    return size > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())
               ? kInvalidFile
               : LoadTrigramIntoHMM(model->hmm.get(), static_cast<const char*>(data),
                                    static_cast<int32_t>(size), are_counts != 0 ? 1 : 0);
}

int32_t tessarin_read_model_limits(tessarin_model* model, const char* path) {
    return model == nullptr || path == nullptr
               ? kInvalidArgument
               : LoadPhoneConstraintsFileIntoHMM(model->hmm.get(), path, 0);
}

int32_t tessarin_read_model_calibration(tessarin_model* model, const char* path) {
    if (model == nullptr || path == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] {
        const auto set = [](const void* data, uint32_t size, tessarin_model& to) {
            return SetCalibration({static_cast<const char*>(data), size}, to);
        };
        return FromFile(path, *model, set);
    });
}

int32_t tessarin_set_model_calibration(tessarin_model* model, const void* data, uint32_t size) {
    if (model == nullptr || (data == nullptr && size > 0)) {
        return kInvalidArgument;
    }
    return Guarded([&] { return SetCalibration({static_cast<const char*>(data), size}, *model); });
}

void tessarin_free_model(tessarin_model* model) {
    delete model;
}

int32_t tessarin_create_language_from_file(const char* path, tessarin_language** out) {
    return Create(path != nullptr, out, [&](std::unique_ptr<tessarin_language>& made) {
        return FromFile(path, made, MakeLanguage);
    });
}

int32_t tessarin_create_language_from_memory(const void* data, uint32_t size,
                                             tessarin_language** out) {
    return Create(data != nullptr || size == 0, out, [&](std::unique_ptr<tessarin_language>& made) {
        return MakeLanguage(size == 0 ? "" : data, size, made);
    });
}

const char* tessarin_get_language_name(const tessarin_language* language) {
    return language != nullptr ? language->info.name : "";
}

int32_t tessarin_set_word(tessarin_language* language, const char* word, const char* phonemes) {
    if (language == nullptr || word == nullptr || phonemes == nullptr) {
        return kInvalidArgument;
    }
    return Guarded(
        [&] { return RefusingBadUtf8([&] { return language->SetWord(word, phonemes); }); });
}

void tessarin_free_language(tessarin_language* language) {
    delete language;
}

int32_t tessarin_create_audio_from_file(const char* path, uint32_t channel, tessarin_audio** out) {
    return Create(path != nullptr, out, [&](std::unique_ptr<tessarin_audio>& made) {
        return LoadAudio(path, channel, made);
    });
}

int32_t tessarin_create_audio_from_int16(const int16_t* samples, uint32_t count, uint32_t rate_hz,
                                         tessarin_audio** out) {
    return CreateAudio(samples, count, rate_hz, out, [](int16_t sample) { return sample; });
}

int32_t tessarin_create_audio_from_float(const float* samples, uint32_t count, uint32_t rate_hz,
                                         tessarin_audio** out) {
    return CreateAudio(samples, count, rate_hz, out, SampleFromFloat);
}

const int16_t* tessarin_get_audio_samples(const tessarin_audio* audio, uint32_t* count) {
    return Items(audio != nullptr ? &audio->samples : nullptr, count);
}

uint32_t tessarin_get_audio_rate_hz(const tessarin_audio* audio) {
    return audio != nullptr ? audio->rateHz : 0;
}

void tessarin_free_audio(tessarin_audio* audio) {
    delete audio;
}

int32_t tessarin_create_transcript(tessarin_language* language, const char* text,
                                   tessarin_transcript** out) {
    return tessarin_create_script_transcript(language, text, nullptr, out);
}

int32_t tessarin_create_script_transcript(tessarin_language* language, const char* text,
                                          const tessarin_script_options* options,
                                          tessarin_transcript** out) {
    return Create(language != nullptr && text != nullptr, out,
                  [&](std::unique_ptr<tessarin_transcript>& made) {
                      return Transcribe(*language, text, options, made);
                  });
}

const tessarin_token* tessarin_get_transcript_tokens(const tessarin_transcript* transcript,
                                                     uint32_t* count) {
    return Items(transcript != nullptr ? &transcript->tokens : nullptr, count);
}

void tessarin_free_transcript(tessarin_transcript* transcript) {
    delete transcript;
}

int32_t tessarin_create_alignment(const tessarin_model* model, tessarin_language* language,
                                  const tessarin_audio* audio, const char* text,
                                  const tessarin_search_options* options,
                                  const tessarin_progress* progress, tessarin_result** out) {
    const bool hasInput =
        model != nullptr && language != nullptr && audio != nullptr && text != nullptr;
    return Create(hasInput, out, [&](std::unique_ptr<tessarin_result>& made) {
        return Align({*model, *audio, options, progress}, *language, text, made);
    });
}

int32_t tessarin_create_recognition(const tessarin_model* model, const tessarin_audio* audio,
                                    const tessarin_search_options* options,
                                    const tessarin_progress* progress, tessarin_result** out) {
    return Create(model != nullptr && audio != nullptr, out,
                  [&](std::unique_ptr<tessarin_result>& made) {
                      return Recognize({*model, *audio, options, progress}, made);
                  });
}

const tessarin_phoneme* tessarin_get_phonemes(const tessarin_result* result, uint32_t* count) {
    return Items(result != nullptr ? &result->phonemes : nullptr, count);
}

const tessarin_span* tessarin_get_words(const tessarin_result* result, uint32_t* count) {
    return Items(result != nullptr ? &result->words : nullptr, count);
}

uint32_t tessarin_get_word_flags(const tessarin_result* result, uint32_t word) {
    return result != nullptr && word < result->wordFlags.size() ? result->wordFlags[word] : 0;
}

const tessarin_span* tessarin_get_events(const tessarin_result* result, uint32_t* count) {
    return Items(result != nullptr ? &result->events : nullptr, count);
}

float tessarin_get_adaptation_gain(const tessarin_result* result) {
    return result != nullptr ? result->adaptationGain : -1.0f;
}

const tessarin_match* tessarin_get_match(const tessarin_result* result) {
    return result != nullptr && result->match ? &*result->match : nullptr;
}

const tessarin_word_match* tessarin_get_word_matches(const tessarin_result* result,
                                                     uint32_t* count) {
    return Items(result != nullptr ? &result->wordMatches : nullptr, count);
}

const tessarin_span* tessarin_get_unsaid_words(const tessarin_result* result, uint32_t* count) {
    return Items(result != nullptr ? &result->unsaid : nullptr, count);
}

const float* tessarin_get_phoneme_confidences(const tessarin_result* result, uint32_t* count) {
    return Items(result != nullptr ? &result->phonemeConfidences : nullptr, count);
}

void tessarin_free_result(tessarin_result* result) {
    delete result;
}

int32_t tessarin_create_track(const tessarin_result* result, const tessarin_track_options* options,
                              tessarin_track** out) {
    return Create(result != nullptr, out, [&](std::unique_ptr<tessarin_track>& made) {
        return MakeTrack(*result, options, made);
    });
}

const tessarin_frame* tessarin_get_track_frames(const tessarin_track* track, uint32_t* count) {
    return Items(track != nullptr ? &track->frames : nullptr, count);
}

void tessarin_free_track(tessarin_track* track) {
    delete track;
}
