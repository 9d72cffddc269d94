#include "session/search_run.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <limits>
#include <span>

#include "session/match_parts.h"
#include "session/progress_bridge.h"
#include "session/script_parts.h"
#include "session/spoken_language.h"
#include "session/voice_adaptation.h"

namespace tessarin {

namespace {

/// One search over a stretch of audio. The observations may know the progress, and go first.
class Search {
public:
    Search(const search_input& input, CAccousticHMM& searched)
        : model(searched), audio(input.audio), progress(input.progress) {}

    error_code Open(const search_input& input);
    error_code Align(IVisemixTranscriber& transcriber, const std::string& calibration);
    error_code Recognize();
    /// Copies what was found; `spoken` is null without a text.
    std::unique_ptr<tessarin_result> TakeResult(const SpokenLanguage* spoken);
    /// Adds what the alignment says of the match to the result that was taken.
    void AddMatch(const SpanText& text, tessarin_result& taken) const {
        tessarin::AddMatch(*aligner, options.from_ms, text, taken);
    }

private:
    CAccousticHMM& model;
    const tessarin_audio& audio;
    tessarin_search_options options{};
    ProgressBridge progress;
    std::unique_ptr<SampleStream> stream;
    observations_owner observations;
    std::unique_ptr<tessarin_result> result;
    match_aligner_owner aligner;
};

error_code Search::Open(const search_input& input) {
    error_code code = ReadSearchOptions(input.options, options);
    if (code != kNoError) {
        return code;
    }
    std::span<const int16_t> stretch;
    code = FindStretch(audio, options.from_ms, options.to_ms, stretch);
    if (code != kNoError) {
        return code;
    }
    result = std::make_unique<tessarin_result>();
    ISyncResultsCollection* markers = nullptr;
    code = CreateSyncResultsCollection(kPostProcessScores, &markers);
    result->markers.reset(markers);
    if (code != kNoError) {
        return code;
    }
    stream = std::make_unique<SampleStream>(stretch, audio.rateHz);
    IObservationStream* opened = nullptr;
    code = CreateObservationStreamFromQuibStream(stream.get(), &model, &opened);
    observations.reset(opened);
    return code;
}

error_code Search::Align(IVisemixTranscriber& transcriber, const std::string& calibration) {
    IMatchAligner* made = nullptr;
    error_code code = CreateMatchAligner(&made);
    aligner.reset(made);
    if (code == kNoError) {
        code = aligner->SetMode(options.match_mode);
    }
    if (code == kNoError && !calibration.empty()) {
        code = aligner->SetCalibration(&model, calibration.data(),
                                       static_cast<uint32_t>(calibration.size()));
    }
    if (code != kNoError) {
        return code;
    }
    if (options.beam_width > 0) {
        aligner->SetBeamWidth(options.beam_width);
    }
    aligner->SetRetry((options.flags & TESSARIN_SEARCH_RETRY) != 0 ? 1 : 0);
    return aligner->Align(observations.get(), &model, nullptr, &transcriber, &progress,
                          result->markers.get());
}

error_code Search::Recognize() {
    ITextlessPhnRecognizer* made = nullptr;
    CreateTextlessPhnRecognizer(&made);
    if (made == nullptr) {
        return kOutOfMemory;
    }
    const free_recognizer_owner recognizer(made);
    return recognizer->RecognizePhonemes(observations.get(), &model, &progress,
                                         result->markers.get());
}

tessarin_phoneme PhonemeOf(const CSyncMarker& marker) {
    tessarin_phoneme phoneme{marker.start, marker.end, marker.score, {}};
    std::memcpy(phoneme.label, marker.label, sizeof phoneme.label);
    return phoneme;
}

int32_t KindOf(const CSyncMarker& marker) {
    switch (marker.type) {
    case kWordMarker:
        return TESSARIN_WORD;
    case kPunctuationMarker:
        return TESSARIN_PUNCTUATION;
    default:
        return TESSARIN_TAG;
    }
}

void AddSpan(const CSyncMarker& marker, const SpanText* text, tessarin_result& result) {
    SpanText::place place{marker.text_offset, marker.text_length};
    std::string spelling = marker.text != nullptr ? marker.text : "";
    int32_t kind = KindOf(marker);
    uint32_t flags = 0;
    if (text != nullptr) {
        const ScriptReading::source source =
            text->FindSource(marker.text_offset, marker.text_length);
        kind = source.event != nullptr ? SpanKindOf(*source.event) : kind;
        flags = source.word != nullptr ? source.word->flags : 0;
        place = text->FindOriginal(marker.text_offset, marker.text_length);
        spelling = text->GetOriginal(place);
    }
    if (marker.type == kWordMarker) {
        result.wordFlags.push_back(flags);
    }
    auto& spans = marker.type == kWordMarker ? result.words : result.events;
    spans.push_back({kind, marker.start, marker.end, place.offset, place.length,
                     Keep(std::move(spelling), result.texts)});
}

/// Finds out by the phonemes of each word, which begin at `starts` in the local text, what was said
/// of several readings.
void AddReadings(IScriptTranscriber& readings, const std::vector<uint32_t>& starts,
                 tessarin_result& result) {
    auto phoneme = result.phonemes.begin();
    for (size_t i = 0; i < starts.size(); ++i) {
        const tessarin_span& word = result.words[i];
        std::string said;
        for (; phoneme != result.phonemes.end() && phoneme->start_ms < word.end_ms; ++phoneme) {
            const std::string_view label = phoneme->label;
            said += phoneme->start_ms >= word.start_ms && label != "x" ? label : "";
        }
        result.wordReadings.emplace_back(readings.FindReading(starts[i], said.c_str()));
    }
}

std::unique_ptr<tessarin_result> Search::TakeResult(const SpokenLanguage* spoken) {
    const SpanText* const text = spoken != nullptr ? &spoken->GetText() : nullptr;
    std::vector<uint32_t> wordStarts;
    CSyncMarker* const end = result->markers->end();
    for (CSyncMarker* marker = result->markers->begin(); marker != end; ++marker) {
        marker->start = ShiftTime(marker->start, options.from_ms);
        marker->end = ShiftTime(marker->end, options.from_ms);
        switch (marker->type) {
        case kPhonemeMarker:
            result->phonemes.push_back(PhonemeOf(*marker));
            break;
        case kWordMarker:
            wordStarts.push_back(static_cast<uint32_t>(marker->text_offset));
            [[fallthrough]];
        case kPunctuationMarker:
        case kTagMarker:
            AddSpan(*marker, text, *result);
            break;
        default:
            break;
        }
    }
    if (spoken != nullptr && spoken->GetReadings() != nullptr) {
        AddReadings(*spoken->GetReadings(), wordStarts, *result);
    }
    result->loudness = audio.GetLoudness();
    return std::move(result);
}

bool HasFound(error_code code) {
    return code == kNoError || code == kRecognitionFailed;
}

std::string PhonemesOf(const CTxMarker& token) {
    std::string phonemes;
    for (int32_t g = 0; g < token.group_count; ++g) {
        const PhonemeGroup& group = token.groups[g];
        phonemes += g > 0 ? " " : "";
        for (int32_t a = 0; a < group.alternative_count; ++a) {
            phonemes += a > 0 ? "|" : "";
            phonemes += group.alternatives[a];
        }
    }
    return phonemes;
}

} // namespace

int32_t ShiftTime(int32_t ms, int32_t shiftMs) {
    return static_cast<int32_t>(
        std::min<int64_t>(int64_t{ms} + shiftMs, std::numeric_limits<int32_t>::max()));
}

const char* Keep(std::string text, std::vector<std::unique_ptr<std::string>>& texts) {
    return texts.emplace_back(std::make_unique<std::string>(std::move(text)))->c_str();
}

error_code ReadSearchOptions(const tessarin_search_options* given, tessarin_search_options& out) {
    out = {};
    if (given == nullptr) {
        return kNoError;
    }
    // The sizes that the struct has had. What an older one lacks stays 0, which stands for the
    // default, so that its text is read as a script. Only its match mode is exact, not automatic:
    // its host expects a marker for each word and reads neither verdict nor unsaid words.
    constexpr size_t kFirstSize = offsetof(tessarin_search_options, flags);
    constexpr size_t kSecondSize = offsetof(tessarin_search_options, match_mode);
    constexpr size_t kThirdSize = offsetof(tessarin_search_options, script);
    constexpr size_t kFourthSize = offsetof(tessarin_search_options, adapt_mode);
    constexpr std::array kSizes = {kFirstSize, kSecondSize, kThirdSize, kFourthSize, sizeof out};
    if (std::ranges::find(kSizes, given->size) == kSizes.end()) {
        return kInvalidArgument;
    }
    out.match_mode = TESSARIN_MATCH_EXACT;
    std::memcpy(&out, given, given->size);
    const bool isKnown = (out.flags & ~uint32_t{TESSARIN_SEARCH_RETRY}) == 0 &&
                         out.match_mode <= TESSARIN_MATCH_LOOSE &&
                         out.adapt_mode <= TESSARIN_ADAPT_ON;
    return isKnown ? kNoError : kInvalidArgument;
}

error_code SetCalibration(std::string_view text, tessarin_model& model) {
    model.calibration.clear();
    IMatchAligner* made = nullptr;
    error_code code = CreateMatchAligner(&made);
    const match_aligner_owner aligner(made);
    if (code == kNoError) {
        code = text.size() > std::numeric_limits<uint32_t>::max()
                   ? error_code{kInvalidFile}
                   : aligner->SetCalibration(model.hmm.get(), text.data(),
                                             static_cast<uint32_t>(text.size()));
    }
    if (code == kNoError) {
        model.calibration = text;
    }
    return code;
}

error_code Align(const search_input& input, tessarin_language& language, const char* text,
                 std::unique_ptr<tessarin_result>& out) {
    tessarin_search_options options{};
    text_reading how;
    error_code code = ReadSearchOptions(input.options, options);
    if (code == kNoError) {
        code = ReadScriptOptions(options.script, how);
    }
    if (code != kNoError) {
        return code;
    }
    const SpokenLanguage spoken(language, text, how);
    if (spoken.GetCode() != kNoError) {
        return spoken.GetCode();
    }
    Search search(input, *input.model.hmm);
    code = search.Open(input);
    if (code != kNoError) {
        return code;
    }
    code = search.Align(spoken.GetTranscriber(), input.model.calibration);
    if (HasFound(code)) {
        out = search.TakeResult(&spoken);
        search.AddMatch(spoken.GetText(), *out);
    }
    return code;
}

error_code Recognize(const search_input& input, std::unique_ptr<tessarin_result>& out) {
    adapted_model adapted;
    error_code code = AdaptToVoice(input, adapted);
    if (code != kNoError) {
        return code;
    }
    Search search(input, adapted.hmm ? *adapted.hmm : *input.model.hmm);
    code = search.Open(input);
    if (code != kNoError) {
        return code;
    }
    code = search.Recognize();
    if (HasFound(code)) {
        out = search.TakeResult(nullptr);
        out->adaptationGain = adapted.hmm ? adapted.gain : -1.0f;
    }
    return code;
}

error_code Transcribe(tessarin_language& language, const char* text,
                      const tessarin_script_options* options,
                      std::unique_ptr<tessarin_transcript>& out) {
    text_reading how;
    const error_code code = ReadScriptOptions(options, how);
    if (code != kNoError) {
        return code;
    }
    const SpokenLanguage spoken(language, text, how);
    if (spoken.GetCode() != kNoError) {
        return spoken.GetCode();
    }
    out = std::make_unique<tessarin_transcript>();
    uint32_t count = 0;
    const CTxMarker* const tokens = spoken.GetTranscriber().GetOutputMarkers(&count);
    for (uint32_t i = 0; i < count; ++i) {
        const CTxMarker& token = tokens[i];
        const SpanText::place place =
            spoken.GetText().FindOriginal(static_cast<int32_t>(token.text_start),
                                          static_cast<int32_t>(token.text_end - token.text_start));
        const ScriptReading::source source =
            spoken.GetText().FindSource(static_cast<int32_t>(token.text_start),
                                        static_cast<int32_t>(token.text_end - token.text_start));
        const int32_t kind =
            source.event != nullptr ? SpanKindOf(*source.event) : static_cast<int32_t>(token.kind);
        out->tokens.push_back({kind, place.offset, place.length,
                               token.kind == kCutToken ? token.value : -1,
                               Keep(spoken.GetText().GetOriginal(place), out->texts),
                               Keep(PhonemesOf(token), out->texts)});
    }
    return kNoError;
}

} // namespace tessarin
