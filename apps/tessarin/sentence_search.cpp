#include "apps/tessarin/sentence_search.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "apps/tessarin/console/failure.h"

using tessarin::CSyncMarker;
using tessarin::CTxMarker;

namespace {

/// A sentence in the transcriber's own text.
struct local_sentence {
    uint32_t start;
    uint32_t end;
    bool isBehindCut; ///< the engine searches what is behind a cut for itself
};

bool EndsSentence(const CTxMarker& token, tessarin::IVisemixTranscriber& transcriber) {
    const uint32_t character = transcriber.GetInputChar(static_cast<int32_t>(token.text_start));
    return token.kind == tessarin::kPunctuationToken &&
           (character == 0 || character == '.' || character == '?' || character == '!');
}

/// The sentences as the engine parts them: cuts divide them, too, and begin the next one.
std::vector<local_sentence> FindSentences(tessarin::IVisemixTranscriber& transcriber) {
    uint32_t count = 0;
    const CTxMarker* const tokens = transcriber.GetOutputMarkers(&count);
    std::vector<local_sentence> sentences;
    bool isOpen = false;
    bool hasWords = false;
    bool isBehindCut = false;
    const auto close = [&] {
        if (isOpen && !hasWords) {
            sentences.pop_back();
        }
        isOpen = hasWords = false;
    };
    for (uint32_t i = 0; i < count; ++i) {
        const CTxMarker& token = tokens[i];
        const bool isCut = token.kind == tessarin::kCutToken;
        if (isCut || EndsSentence(token, transcriber)) {
            close();
        }
        isBehindCut = isBehindCut || isCut;
        if (isCut || token.kind == tessarin::kWordToken) {
            if (!isOpen) {
                sentences.push_back({token.text_start, token.text_end, isBehindCut});
                isOpen = true;
            }
            hasWords = hasWords || !isCut;
            sentences.back().end = token.text_end;
            isBehindCut = isBehindCut && !hasWords;
        }
    }
    close();
    return sentences;
}

tessarin::results_owner MakeResults() {
    tessarin::ISyncResultsCollection* results = nullptr;
    const int32_t code = CreateSyncResultsCollection(0, &results);
    if (code != tessarin::kNoError) {
        throw EngineFailure("results", code);
    }
    return tessarin::results_owner(results);
}

tessarin::aligner_owner MakeRecognizer(int beam) {
    tessarin::ITextBasedPhnRecognizer* recognizer = nullptr;
    CreateTextBasedRecognizer(&recognizer);
    if (recognizer == nullptr) {
        throw EngineFailure("recognizer", tessarin::kOutOfMemory);
    }
    if (beam > 0) {
        recognizer->SetBeamWidth(beam);
    }
    recognizer->SetOutputOptions(1, 1);
    return tessarin::aligner_owner(recognizer);
}

using occurrences = std::vector<std::optional<searched_sentence::occurrence>>;

/// What `results` tell of each sentence.
occurrences Occurrences(const std::vector<local_sentence>& sentences,
                        tessarin::ISyncResultsCollection& results) {
    occurrences found;
    double before = 0.0;
    for (const local_sentence& each : sentences) {
        before = each.isBehindCut ? 0.0 : before;
        const CSyncMarker* const marker =
            std::find_if(results.begin(), results.end(), [&](const CSyncMarker& candidate) {
                return static_cast<uint32_t>(candidate.text_offset) == each.start;
            });
        found.emplace_back();
        if (marker != results.end()) {
            // The engine adds up the scores of a chain of sentences.
            const double score = double{marker->score} - before;
            before = marker->score;
            found.back() = {marker->start, marker->end, score};
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
    std::fill(text.begin() + static_cast<std::ptrdiff_t>(sentence.start),
              text.begin() + static_cast<std::ptrdiff_t>(end), ' ');
}

/// One run over a recording.
class SentenceSearch {
public:
    SentenceSearch(const recording_opener& recordingOpener, tessarin::CAccousticHMM& acousticModel,
                   const SpokenText& spokenText, tessarin::IVisemixTranscriber& textReader,
                   int beam, double leastOfFound, tessarin::ProgressSink& progressSink)
        : open(recordingOpener), model(acousticModel), text(spokenText), transcriber(textReader),
          recognizer(MakeRecognizer(beam)), leastScore(leastOfFound), progress(progressSink) {
        transcriber.Transcribe(text.GetLocal().c_str());
        all = FindSentences(transcriber);
        found.resize(all.size());
    }

    /// Looks for the sentences from `first` up to `end` in a stretch. Where some are found, the
    /// others are looked for between them; where none is, again without the one that fits worst, as
    /// each that was not said takes the time of its neighbours.
    void Search(recording_stretch stretch, size_t first, size_t end) {
        std::vector<size_t> left;
        for (size_t i = first; i < end; ++i) {
            left.push_back(i);
        }
        while (!left.empty() && stretch.toMs - stretch.fromMs >= kShortestMs) {
            const occurrences here = SearchOnce(stretch, left);
            if (TakeFound(here, left)) {
                SearchBetween(stretch, first, end);
                return;
            }
            const auto weakest = std::ranges::min_element(here, {}, ScoreOf);
            left.erase(left.begin() + (weakest - here.begin()));
        }
    }

    std::vector<searched_sentence> Take() const {
        std::vector<searched_sentence> sentences;
        for (size_t i = 0; i < all.size(); ++i) {
            const auto offset = static_cast<int32_t>(all[i].start);
            const auto length = static_cast<int32_t>(all[i].end - all[i].start);
            sentences.push_back(
                {text.GetUtf8(offset, length), text.FindOriginal(offset, length), found[i]});
        }
        return sentences;
    }
    size_t GetNumSentences() const { return all.size(); }

private:
    static constexpr int kShortestMs = 100;

    static double ScoreOf(const std::optional<searched_sentence::occurrence>& each) {
        constexpr double kNowhere = -1e30;
        return each ? each->score : kNowhere;
    }

    occurrences SearchOnce(const recording_stretch& stretch, const std::vector<size_t>& left) {
        std::string local = text.GetLocal();
        std::vector<local_sentence> wanted;
        for (size_t i = 0; i < all.size(); ++i) {
            if (std::ranges::find(left, i) == left.end()) {
                Erase(all[i], local);
            } else {
                wanted.push_back(all[i]);
            }
        }
        const tessarin::results_owner results = MakeResults();
        const opened_recording recording = open(stretch);
        const int32_t code =
            recognizer->RecognizePhonemes(recording.observations.get(), &model, local.c_str(),
                                          &transcriber, &progress, results.get());
        if (code != tessarin::kNoError) {
            throw EngineFailure("--sentences", code);
        }
        occurrences here = Occurrences(wanted, *results);
        for (auto& each : here) {
            if (each) {
                each->startMs += stretch.fromMs;
                each->endMs += stretch.fromMs;
            }
        }
        return here;
    }

    bool TakeFound(const occurrences& here, const std::vector<size_t>& left) {
        bool any = false;
        for (size_t i = 0; i < left.size(); ++i) {
            if (ScoreOf(here[i]) >= leastScore) {
                found[left[i]] = here[i];
                any = true;
            }
        }
        return any;
    }

    void SearchBetween(recording_stretch stretch, size_t first, size_t end) {
        const int toMs = stretch.toMs;
        for (size_t i = first; i <= end; ++i) {
            if (i < end && !found[i]) {
                continue;
            }
            stretch.toMs = i < end ? found[i]->startMs : toMs;
            Search(stretch, first, i);
            if (i < end) {
                stretch.fromMs = found[i]->endMs;
                first = i + 1;
            }
        }
    }

    const recording_opener& open;
    tessarin::CAccousticHMM& model;
    const SpokenText& text;
    tessarin::IVisemixTranscriber& transcriber;
    tessarin::aligner_owner recognizer;
    double leastScore;
    tessarin::ProgressSink& progress;
    std::vector<local_sentence> all;
    occurrences found; ///< of each sentence
};

} // namespace

std::vector<searched_sentence>
SearchForSentences(const recording_opener& open, const recording_stretch& stretch,
                   tessarin::CAccousticHMM& model, const SpokenText& text,
                   tessarin::IVisemixTranscriber& transcriber, int beam, double leastScore,
                   tessarin::ProgressSink& progress) {
    SentenceSearch search(open, model, text, transcriber, beam, leastScore, progress);
    search.Search(stretch, 0, search.GetNumSentences());
    return search.Take();
}
