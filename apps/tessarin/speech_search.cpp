#include "apps/tessarin/speech_search.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/match_report.h"
#include "apps/tessarin/readers/spoken_text.h"

namespace {

/// In the order of tessarin::match_mode.
const std::vector<std::string> kMatchModes = {"auto", "exact", "loose"};

/// That of another model is not used, and that is said.
void SetCalibration(const std::string& path, const std::string& text,
                    tessarin::CAccousticHMM& model, tessarin::IMatchAligner& aligner) {
    RequireSize(path, text);
    const int32_t code =
        aligner.SetCalibration(&model, text.data(), static_cast<uint32_t>(text.size()));
    if (code == tessarin::kInvalidArgument) {
        std::fprintf(stderr, "tessarin: %s: belongs to another model; there is no confidence\n",
                     path.c_str());
    } else if (code != tessarin::kNoError) {
        throw EngineFailure(path, code);
    }
}

/// A text of marks alone would be found in every recording.
void RequireWords(const std::string& local) {
    constexpr const char* kMarks = " \t\r\n\f\v.,;:!?\"'()-\x85\x91\x92\x93\x94\x96\x97\xA0";
    if (local.find_first_not_of(kMarks) == std::string::npos) {
        throw Failure(kExitFailed, "the text has no words, only marks; give the words that are "
                                   "said, or use recognize, which needs none");
    }
}

} // namespace

recording_search SearchForText(const SpokenText& text, tessarin::IVisemixTranscriber& transcriber,
                               const data_options& data, const text_search_options& options) {
    RequireWords(text.GetLocal());
    tessarin::IMatchAligner* made = nullptr;
    const int32_t code = CreateMatchAligner(&made);
    if (code != tessarin::kNoError) {
        throw EngineFailure("recognizer", code);
    }
    const std::shared_ptr<tessarin::IMatchAligner> aligner = tessarin::match_aligner_owner(made);
    if (options.beam > 0) {
        aligner->SetBeamWidth(options.beam);
    }
    aligner->SetRetry(options.retry ? 1 : 0);
    aligner->SetMode(
        static_cast<uint32_t>(std::ranges::find(kMatchModes, options.match) - kMatchModes.begin()));
    const std::string path = CalibrationPath(data);
    const std::string calibration = path.empty() ? "" : ReadWholeFile(path);
    return [aligner, &text, &transcriber, path,
            calibration](opened_recording& recording, tessarin::CAccousticHMM& model,
                         tessarin::ProgressSink& progress,
                         tessarin::ISyncResultsCollection& results, match_report& report) {
        if (!path.empty()) {
            SetCalibration(path, calibration, model, *aligner);
        }
        const int32_t found =
            aligner->Align(recording.observations.get(), &model, text.GetLocal().c_str(),
                           &text.TranscriberOr(transcriber), &progress, &results);
        report = ReadMatch(*aligner);
        return found;
    };
}

recording_search SearchForSounds() {
    tessarin::ITextlessPhnRecognizer* made = nullptr;
    CreateTextlessPhnRecognizer(&made);
    if (made == nullptr) {
        throw EngineFailure("recognizer", tessarin::kOutOfMemory);
    }
    const std::shared_ptr<tessarin::ITextlessPhnRecognizer> recognizer =
        tessarin::free_recognizer_owner(made);
    return [recognizer](opened_recording& recording, tessarin::CAccousticHMM& model,
                        tessarin::ProgressSink& progress, tessarin::ISyncResultsCollection& results,
                        match_report& /*report*/) {
        return recognizer->RecognizePhonemes(recording.observations.get(), &model, &progress,
                                             &results);
    };
}

void AddTextSearchOptions(CLI::App& command, text_search_options* options) {
    command
        .add_option("--beam", options->beam,
                    "Width of the search in states, 500 to 8000 [2000]; raise it if the search "
                    "loses the text")
        ->check(CLI::Range(500, 8000))
        ->option_text("N");
    command.add_flag("--retry", options->retry,
                     "Slide the search window ahead where the search loses the text");
    command
        .add_option("--match", options->match,
                    "exact: all of the text was said and nothing else; loose: words may be "
                    "missing and other speech may stand between them; auto: loose where the "
                    "recording shows it [auto]")
        ->check(CLI::IsMember(kMatchModes))
        ->option_text("exact|auto|loose");
}

void AddSoundSearchOptions(CLI::App& command, sound_search_options* options) {
    auto* trigrams = command.add_option("--trigrams", options->trigrams,
                                        "Statistics of phoneme sequences [the project's own]");
    trigrams->option_text("FILE");
    command.add_flag("--counts", options->areCounts, "The numbers in --trigrams are counts")
        ->needs(trigrams);
    auto* noTrigrams = command
                           .add_flag("--no-trigrams", options->noTrigrams,
                                     "Search without statistics of phoneme sequences")
                           ->excludes(trigrams);
    // Only the search with statistics knows limits.
    command
        .add_option("--limits", options->limits,
                    "Longest durations: lines of phonemes and milliseconds")
        ->excludes(noTrigrams)
        ->option_text("FILE");
}

tessarin::model_owner LoadSoundModel(const sound_search_options& options,
                                     const data_options& data) {
    tessarin::model_owner model = LoadHearingModel(data);
    if (!options.noTrigrams) {
        const std::string path = DataPathOr(options.trigrams, data, kTrigramsName);
        const uint8_t normalise = options.areCounts || options.trigrams.empty() ? 1 : 0;
        const int32_t code = LoadTrigramFileIntoHMM(model.get(), path.c_str(), normalise);
        if (code != tessarin::kNoError) {
            throw EngineFailure(path, code);
        }
    }
    if (!options.limits.empty()) {
        const int32_t code =
            LoadPhoneConstraintsFileIntoHMM(model.get(), options.limits.c_str(), 0);
        if (code != tessarin::kNoError) {
            throw EngineFailure(options.limits, code);
        }
    }
    return model;
}
