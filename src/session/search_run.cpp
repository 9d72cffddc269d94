#include "session/search_run.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "session/locale_use.h"

namespace tessarin {

namespace {

/// The caller's functions as the engine calls them.
class ProgressBridge final : public ProgressSink {
public:
    explicit ProgressBridge(const tessarin_progress* functions) {
        if (functions != nullptr) {
            progress = *functions;
        }
    }

    void SetStatus(const char* text) override {
        if (progress.on_status != nullptr) {
            progress.on_status(progress.user, text);
        }
    }
    bool OnProgress(uint32_t done, uint32_t total) override {
        return progress.on_progress != nullptr &&
               progress.on_progress(progress.user, done, total) != 0;
    }

private:
    tessarin_progress progress{};
};

/// One search over a stretch of audio. The observations may know the progress, and go first.
class Search {
public:
    explicit Search(const search_input& input)
        : model(*input.model.hmm), audio(input.audio), progress(input.progress) {
        if (input.options != nullptr) {
            options = *input.options;
        }
    }

    error_code Open(const search_input& input);
    error_code Align(IVisemixTranscriber& transcriber);
    error_code Recognize();
    /// Copies what was found; `text` is null without one.
    std::unique_ptr<tessarin_result> TakeResult(const SpanText* text);

private:
    CAccousticHMM& model;
    const tessarin_audio& audio;
    tessarin_search_options options{};
    ProgressBridge progress;
    std::unique_ptr<SampleStream> stream;
    observations_owner observations;
    std::unique_ptr<tessarin_result> result;
};

error_code Search::Open(const search_input& input) {
    if (input.options != nullptr && options.size != sizeof options) {
        return kInvalidArgument;
    }
    std::span<const int16_t> stretch;
    error_code code = FindStretch(audio, options.from_ms, options.to_ms, stretch);
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

error_code Search::Align(IVisemixTranscriber& transcriber) {
    ITextBasedPhnRecognizer* made = nullptr;
    CreateTextBasedRecognizer(&made);
    if (made == nullptr) {
        return kOutOfMemory;
    }
    const aligner_owner aligner(made);
    if (options.beam_width > 0) {
        aligner->SetBeamWidth(options.beam_width);
    }
    return aligner->AlignTranscription(observations.get(), &model, &transcriber, &progress,
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

/// Has a time in a stretch count from the beginning of the audio, held to the range of the result.
void Shift(int32_t shiftMs, int32_t& ms) {
    ms = static_cast<int32_t>(
        std::min<int64_t>(int64_t{ms} + shiftMs, std::numeric_limits<int32_t>::max()));
}

const char* Keep(std::string text, std::vector<std::unique_ptr<std::string>>& texts) {
    return texts.emplace_back(std::make_unique<std::string>(std::move(text)))->c_str();
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
    if (text != nullptr) {
        place = text->FindOriginal(marker.text_offset, marker.text_length);
        spelling = text->GetOriginal(place);
    }
    auto& spans = marker.type == kWordMarker ? result.words : result.events;
    spans.push_back({KindOf(marker), marker.start, marker.end, place.offset, place.length,
                     Keep(std::move(spelling), result.texts)});
}

std::unique_ptr<tessarin_result> Search::TakeResult(const SpanText* text) {
    CSyncMarker* const end = result->markers->end();
    for (CSyncMarker* marker = result->markers->begin(); marker != end; ++marker) {
        Shift(options.from_ms, marker->start);
        Shift(options.from_ms, marker->end);
        switch (marker->type) {
        case kPhonemeMarker:
            result->phonemes.push_back(PhonemeOf(*marker));
            break;
        case kWordMarker:
        case kPunctuationMarker:
        case kTagMarker:
            AddSpan(*marker, text, *result);
            break;
        default:
            break;
        }
    }
    return std::move(result);
}

bool HasFound(error_code code) {
    return code == kNoError || code == kRecognitionFailed;
}

/// The transcriber's tokens of a text that it was given in its own code page.
class SpokenLanguage {
public:
    SpokenLanguage(tessarin_language& language, const char* text) : borrowed(language) {
        code = borrowed.GetCode();
        if (code == kNoError) {
            Read(language.info, text);
        }
    }

    error_code GetCode() const { return code; }
    IVisemixTranscriber& GetTranscriber() const { return *borrowed.Get(); }
    const SpanText& GetText() const { return *spanText; }

private:
    void Read(const TranscriberInfo& info, const char* text) {
        if (std::strlen(text) > static_cast<size_t>(std::numeric_limits<int32_t>::max()) / 4) {
            code = kOutOfRange;
            return;
        }
        const LocaleUse use(info);
        code = RefusingBadUtf8([&] {
            spanText = std::make_unique<SpanText>(text, info);
            borrowed.Get()->Transcribe(spanText->GetLocal().c_str());
            return kNoError;
        });
    }

    BorrowedTranscriber borrowed;
    std::unique_ptr<SpanText> spanText;
    error_code code;
};

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

error_code Align(const search_input& input, tessarin_language& language, const char* text,
                 std::unique_ptr<tessarin_result>& out) {
    const SpokenLanguage spoken(language, text);
    if (spoken.GetCode() != kNoError) {
        return spoken.GetCode();
    }
    Search search(input);
    error_code code = search.Open(input);
    if (code != kNoError) {
        return code;
    }
    code = search.Align(spoken.GetTranscriber());
    if (HasFound(code)) {
        out = search.TakeResult(&spoken.GetText());
    }
    return code;
}

error_code Recognize(const search_input& input, std::unique_ptr<tessarin_result>& out) {
    Search search(input);
    error_code code = search.Open(input);
    if (code != kNoError) {
        return code;
    }
    code = search.Recognize();
    if (HasFound(code)) {
        out = search.TakeResult(nullptr);
    }
    return code;
}

error_code Transcribe(tessarin_language& language, const char* text,
                      std::unique_ptr<tessarin_transcript>& out) {
    const SpokenLanguage spoken(language, text);
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
        out->tokens.push_back({static_cast<int32_t>(token.kind), place.offset, place.length,
                               token.kind == kCutToken ? token.value : -1,
                               Keep(spoken.GetText().GetOriginal(place), out->texts),
                               Keep(PhonemesOf(token), out->texts)});
    }
    return kNoError;
}

} // namespace tessarin
