#include "session/sentence_search.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

#include "session/progress_bridge.h"
#include "session/spoken_language.h"

namespace tessarin {

namespace {

constexpr int32_t kShortestMs = 100; ///< of a stretch that is searched
constexpr double kUsualMinScore = 5.5;

/// A sentence in the transcriber's own text.
struct local_sentence {
    uint32_t start;
    uint32_t end;
    bool isAfterCut; ///< the engine searches what follows a cut for itself
};

/// Where a sentence was said, and how much better it fits than noise does, for each observation.
struct occurrence {
    int32_t startMs;
    int32_t endMs;
    double score;
};
using occurrences = std::vector<std::optional<occurrence>>;

struct ms_range {
    int32_t fromMs;
    int32_t toMs;
};

bool EndsSentence(const CTxMarker& token, IVisemixTranscriber& transcriber) {
    const uint32_t character = transcriber.GetInputChar(static_cast<int32_t>(token.text_start));
    return token.kind == kPunctuationToken &&
           (character == 0 || character == '.' || character == '?' || character == '!');
}

/// The sentences as the engine divides them: cuts divide them, too, and begin the next one.
std::vector<local_sentence> FindSentences(IVisemixTranscriber& transcriber) {
    uint32_t count = 0;
    const CTxMarker* const tokens = transcriber.GetOutputMarkers(&count);
    std::vector<local_sentence> sentences;
    bool isOpen = false;
    bool hasWords = false;
    bool isAfterCut = false;
    const auto close = [&] {
        if (isOpen && !hasWords) {
            sentences.pop_back();
        }
        isOpen = hasWords = false;
    };
    for (uint32_t i = 0; i < count; ++i) {
        const CTxMarker& token = tokens[i];
        const bool isCut = token.kind == kCutToken;
        if (isCut || EndsSentence(token, transcriber)) {
            close();
        }
        isAfterCut = isAfterCut || isCut;
        if (isCut || token.kind == kWordToken) {
            if (!isOpen) {
                sentences.push_back({token.text_start, token.text_end, isAfterCut});
                isOpen = true;
            }
            hasWords = hasWords || !isCut;
            sentences.back().end = token.text_end;
            isAfterCut = isAfterCut && !hasWords;
        }
    }
    close();
    return sentences;
}

/// What `results` say of each sentence.
occurrences Occurrences(const std::vector<local_sentence>& sentences,
                        ISyncResultsCollection& results, int32_t shiftMs) {
    occurrences found;
    double before = 0.0;
    for (const local_sentence& each : sentences) {
        before = each.isAfterCut ? 0.0 : before;
        const CSyncMarker* const marker =
            std::find_if(results.begin(), results.end(), [&](const CSyncMarker& candidate) {
                return static_cast<uint32_t>(candidate.text_offset) == each.start;
            });
        found.emplace_back();
        if (marker != results.end()) {
            // The engine adds up the scores of a chain of sentences.
            const double score = double{marker->score} - before;
            before = marker->score;
            found.back() = {marker->start + shiftMs, marker->end + shiftMs, score};
        }
    }
    return found;
}

/// Puts blanks in the place of a sentence and of the mark that ends it; the others stay where they
/// are.
void Erase(const local_sentence& sentence, std::string& text) {
    size_t end = std::min<size_t>(sentence.end, text.size());
    while (end < text.size() && std::string_view(".?!").find(text[end]) != std::string_view::npos) {
        ++end;
    }
    const auto start = std::min<size_t>(sentence.start, end);
    std::fill(text.begin() + static_cast<std::ptrdiff_t>(start),
              text.begin() + static_cast<std::ptrdiff_t>(end), ' ');
}

double ScoreOf(const std::optional<occurrence>& each) {
    constexpr double kNowhere = -1e30;
    return each ? each->score : kNowhere;
}

/// One run over a recording.
class SentenceSearch {
public:
    SentenceSearch(const search_input& input, SpokenLanguage& spokenText, double leastScore)
        : image(input.model.image), audio(input.audio), spoken(spokenText), minScore(leastScore),
          progress(input.progress), all(FindSentences(spoken.GetTranscriber())), found(all.size()) {
    }

    error_code Open(int32_t beamWidth);
    /// Looks for the sentences from `first` up to `end` in a stretch. Where some are found, the
    /// others are looked for between them; where none is, again without the one that fits worst, as
    /// each that was not said takes the time of its neighbours.
    error_code Search(ms_range stretch, size_t first, size_t end);
    size_t GetNumSentences() const { return all.size(); }
    std::unique_ptr<tessarin_sentence_search> Take() const;

private:
    error_code SearchOnce(ms_range stretch, const std::vector<size_t>& left, occurrences& here);
    error_code SearchBetween(ms_range stretch, size_t first, size_t end);
    bool TakeFound(const occurrences& here, const std::vector<size_t>& left);

    const std::string& image;
    /// Its own, since the published search loads duration limits into the model that it is given,
    /// where they stay: in a shared one they would change what every later search finds.
    model_owner model;
    const tessarin_audio& audio;
    SpokenLanguage& spoken;
    double minScore;
    ProgressBridge progress;
    aligner_owner aligner;
    std::vector<local_sentence> all;
    occurrences found; ///< of each sentence
};

error_code SentenceSearch::Open(int32_t beamWidth) {
    CAccousticHMM* opened = nullptr;
    const error_code code =
        CreateAccHMM(image.data(), static_cast<uint32_t>(image.size()), nullptr, &opened);
    model.reset(opened);
    if (code != kNoError) {
        return code;
    }
    ITextBasedPhnRecognizer* made = nullptr;
    CreateTextBasedRecognizer(&made);
    aligner.reset(made);
    if (made == nullptr) {
        return kOutOfMemory;
    }
    if (beamWidth > 0) {
        aligner->SetBeamWidth(beamWidth);
    }
    aligner->SetOutputOptions(1, 1);
    return kNoError;
}

error_code SentenceSearch::Search(ms_range stretch, size_t first, size_t end) {
    std::vector<size_t> left;
    for (size_t i = first; i < end; ++i) {
        left.push_back(i);
    }
    while (!left.empty() && stretch.toMs - stretch.fromMs >= kShortestMs) {
        occurrences here;
        const error_code code = SearchOnce(stretch, left, here);
        if (code != kNoError) {
            return code;
        }
        if (TakeFound(here, left)) {
            return SearchBetween(stretch, first, end);
        }
        const auto weakest = std::ranges::min_element(here, {}, ScoreOf);
        left.erase(left.begin() + (weakest - here.begin()));
    }
    return kNoError;
}

error_code SentenceSearch::SearchOnce(ms_range stretch, const std::vector<size_t>& left,
                                      occurrences& here) {
    std::string local = spoken.GetText().GetLocal();
    std::vector<local_sentence> wanted;
    for (size_t i = 0; i < all.size(); ++i) {
        if (std::ranges::find(left, i) == left.end()) {
            Erase(all[i], local);
        } else {
            wanted.push_back(all[i]);
        }
    }
    spoken.Transcribe(local);
    ISyncResultsCollection* collection = nullptr;
    error_code code = CreateSyncResultsCollection(0, &collection);
    const results_owner results(collection);
    std::span<const int16_t> samples;
    if (code == kNoError) {
        code = FindStretch(audio, stretch.fromMs, stretch.toMs, samples);
    }
    SampleStream stream(samples, audio.rateHz);
    IObservationStream* opened = nullptr;
    if (code == kNoError) {
        code = CreateObservationStreamFromQuibStream(&stream, model.get(), &opened);
    }
    const observations_owner observations(opened);
    if (code == kNoError) {
        code = aligner->AlignTranscription(observations.get(), model.get(),
                                           &spoken.GetTranscriber(), &progress, results.get());
    }
    if (code == kNoError) {
        here = Occurrences(wanted, *results, stretch.fromMs);
    }
    return code;
}

bool SentenceSearch::TakeFound(const occurrences& here, const std::vector<size_t>& left) {
    bool any = false;
    for (size_t i = 0; i < left.size(); ++i) {
        if (ScoreOf(here[i]) >= minScore) {
            found[left[i]] = here[i];
            any = true;
        }
    }
    return any;
}

error_code SentenceSearch::SearchBetween(ms_range stretch, size_t first, size_t end) {
    const int32_t toMs = stretch.toMs;
    for (size_t i = first; i <= end; ++i) {
        if (i < end && !found[i]) {
            continue;
        }
        stretch.toMs = i < end ? found[i]->startMs : toMs;
        const error_code code = Search(stretch, first, i);
        if (code != kNoError) {
            return code;
        }
        if (i < end) {
            stretch.fromMs = found[i]->endMs;
            first = i + 1;
        }
    }
    return kNoError;
}

std::unique_ptr<tessarin_sentence_search> SentenceSearch::Take() const {
    auto out = std::make_unique<tessarin_sentence_search>();
    for (size_t i = 0; i < all.size(); ++i) {
        const SpanText::place place = spoken.GetText().FindOriginal(
            static_cast<int32_t>(all[i].start), static_cast<int32_t>(all[i].end - all[i].start));
        out->texts.push_back(std::make_unique<std::string>(spoken.GetText().GetOriginal(place)));
        const occurrence said = found[i].value_or(occurrence{-1, -1, 0.0});
        out->sentences.push_back({said.score, out->texts.back()->c_str(), found[i] ? 1 : 0,
                                  said.startMs, said.endMs, place.offset, place.length});
    }
    return out;
}

} // namespace

error_code SearchSentences(const search_input& input, tessarin_language& language, const char* text,
                           double minScore, std::unique_ptr<tessarin_sentence_search>& out) {
    tessarin_search_options options{};
    error_code code = ReadSearchOptions(input.options, options);
    std::span<const int16_t> samples;
    if (code == kNoError) {
        code = FindStretch(input.audio, options.from_ms, options.to_ms, samples);
    }
    if (code != kNoError) {
        return code;
    }
    text_reading how;
    code = ReadScriptOptions(options.script, how);
    if (code != kNoError) {
        return code;
    }
    SpokenLanguage spoken(language, text, how);
    if (spoken.GetCode() != kNoError) {
        return spoken.GetCode();
    }
    SentenceSearch search(input, spoken, minScore == 0.0 ? kUsualMinScore : minScore);
    code = search.Open(options.beam_width);
    const int64_t audioMs =
        int64_t{1000} * static_cast<int64_t>(input.audio.samples.size()) / input.audio.rateHz;
    const auto lengthMs =
        static_cast<int32_t>(std::min<int64_t>(audioMs, std::numeric_limits<int32_t>::max()));
    const int32_t toMs = options.to_ms == 0 ? lengthMs : options.to_ms;
    if (code == kNoError) {
        code = search.Search({options.from_ms, toMs}, 0, search.GetNumSentences());
    }
    if (code == kNoError) {
        out = search.Take();
    }
    return code;
}

} // namespace tessarin
