#include "apps/tessarin/options/mouth_track.h"

#include <cmath>
#include <cstdio>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/readers/arpabet.h"

namespace {

using tessarin::IPhnMixtureArticulator;

void LoadRules(const std::string& path, IPhnMixtureArticulator& articulator) {
    const std::string rules = path.empty() ? "" : ReadWholeFile(path);
    RequireSize(path, rules);
    const int32_t code =
        articulator.LoadArticulatorRules(rules.data(), static_cast<int32_t>(rules.size()));
    if (code != tessarin::kNoError) {
        throw EngineFailure(path, code);
    }
}

void SetGain(const std::string& gain, IPhnMixtureArticulator& articulator) {
    const size_t equals = gain.find('=');
    const std::string phonemes = equals == std::string::npos ? "" : gain.substr(0, equals);
    const std::string number = equals == std::string::npos ? gain : gain.substr(equals + 1);
    char* end = nullptr;
    const float factor = std::strtof(number.c_str(), &end);
    const bool isNumber = !number.empty() && *end == '\0' && std::isfinite(factor);
    const bool isPhonemes =
        phonemes.empty() ? equals == std::string::npos : !ArpabetFromLabels(phonemes).empty();
    if (!isNumber || factor < 0.0f || !isPhonemes) {
        throw Failure(kExitUsage, "--gain " + gain +
                                      ": give PHONEMES=FACTOR, such as pbm=1.5, or one factor "
                                      "for all");
    }
    articulator.SetGain(phonemes.c_str(), factor);
}

tessarin::articulator_owner MakeArticulator(const track_options& options) {
    IPhnMixtureArticulator* made = nullptr;
    const int32_t code = CreatePhonemeArticulator(&made, 0);
    if (code != tessarin::kNoError) {
        throw EngineFailure("articulator", code);
    }
    tessarin::articulator_owner articulator(made);
    LoadRules(options.rules, *articulator);
    if (options.fps > 0) {
        articulator->SetFrameRate(static_cast<float>(options.fps));
    }
    if (options.slope > 0) {
        articulator->SetEnvelopeSlope(static_cast<float>(options.slope));
    }
    if (options.maxShapes > 0) {
        articulator->SetMaxContributions(options.maxShapes);
    }
    for (const std::string& gain : options.gains) {
        SetGain(gain, *articulator);
    }
    uint32_t flags = articulator->GetFlags();
    flags |= options.smooth ? tessarin::kSmoothFrames : 0u;
    flags |= options.commonKeys ? tessarin::kCommonKeyTimes : 0u;
    articulator->SetFlags(flags);
    return articulator;
}

/// Adds the one mixture that stands best for a stretch of the track.
void AddStretch(const std::string& stretch, IPhnMixtureArticulator& articulator,
                timed_result* out) {
    int from = 0;
    int to = 0;
    int shapes = 0;
    int read = 0;
    const bool isWhole =
        (std::sscanf(stretch.c_str(), "%9d-%9d%n:%9d%n", &from, &to, &read, &shapes, &read) >= 2) &&
        static_cast<size_t>(read) == stretch.size() && from <= to && shapes >= 0;
    if (!isWhole) {
        throw Failure(kExitUsage, "--quantize " + stretch +
                                      ": give FROM-TO in milliseconds, or FROM-TO:SHAPES");
    }
    if (const tessarin::articulation* mixture = articulator.Quanitze(from, to, shapes)) {
        out->stretches.push_back(CopyFrame(*mixture));
    }
}

} // namespace

void AddTrackOptions(CLI::App& command, track_options* options) {
    command.add_option("--rules", options->rules, "Articulation rules [built in]")
        ->option_text("FILE");
    command.add_option("--fps", options->fps, "Frames per second of the mouth track [30]")
        ->check(CLI::Range(1.0, 1000.0))
        ->option_text("N");
    command.add_flag("--smooth", options->smooth,
                     "Make sure that lips that close are closed in at least one frame, and that no "
                     "other shape jumps");
    command
        .add_option(
            "--slope", options->slope,
            "With --smooth, the most that a weight may change from one frame to the next [0.25]")
        ->check(CLI::Range(0.001, 1.0))
        ->option_text("X");
    command
        .add_option("--max-shapes", options->maxShapes,
                    "Maximum number of phonemes in a frame [10]")
        ->check(CLI::Range(1, 10))
        ->option_text("N");
    command
        .add_option("--gain", options->gains,
                    "How strongly phonemes show: PHONEMES=FACTOR, such as pbm=1.5, or one factor "
                    "for all [1]")
        ->option_text("GAIN");
    command.add_flag("--common-keys", options->commonKeys,
                     "Put the keys of all curves at the same times");
    command
        .add_option("--quantize", options->stretch,
                    "Also find the one mixture that fits a stretch best: FROM-TO in ms, or "
                    "FROM-TO:SHAPES with a maximum number of shapes")
        ->option_text("STRETCH");
}

void MakeMouthTrack(const track_options& options, tessarin::ISyncResultsCollection& results,
                    timed_result* out) {
    const tessarin::articulator_owner articulator = MakeArticulator(options);
    int32_t code = articulator->GenerateArticulations(&results, nullptr);
    if (code != tessarin::kNoError) {
        throw EngineFailure("--fps", code);
    }
    CollectFrames(*articulator, out);
    code = articulator->GenerateEnvelopes();
    if (code != tessarin::kNoError) {
        throw EngineFailure("curves", code);
    }
    CollectCurves(*articulator, out);
    if (!options.stretch.empty()) {
        AddStretch(options.stretch, *articulator, out);
    }
}
