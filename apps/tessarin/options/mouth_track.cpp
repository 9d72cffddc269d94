#include "apps/tessarin/options/mouth_track.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/readers/arpabet.h"
#include "tessarin/owned.h"

namespace {

constexpr float kMaxStrength = 4.0f;

/// An option of the form NAME=NUMBER or NUMBER.
struct named_number {
    std::string name;
    float number = 0.0f;
    bool isNumber = false;
};

named_number ReadNamedNumber(const std::string& text) {
    named_number read;
    const size_t equals = text.find('=');
    read.name = equals == std::string::npos ? "" : text.substr(0, equals);
    const std::string number = equals == std::string::npos ? text : text.substr(equals + 1);
    char* end = nullptr;
    read.number = std::strtof(number.c_str(), &end);
    read.isNumber = !number.empty() && *end == '\0' && std::isfinite(read.number) &&
                    read.number >= 0.0f && (equals == std::string::npos || !read.name.empty());
    return read;
}

const std::map<std::string, float> kStrengths = {
    {"subtle", 0.7f}, {"normal", 1.0f}, {"strong", 1.3f}};
const std::map<std::string, uint32_t> kParts = {{"", TESSARIN_VOWELS | TESSARIN_CONSONANTS},
                                                {"vowels", TESSARIN_VOWELS},
                                                {"consonants", TESSARIN_CONSONANTS},
                                                {"lips", TESSARIN_LIPS},
                                                {"teeth", TESSARIN_TEETH}};

tessarin_strength ReadStrength(const std::string& text) {
    if (const auto named = kStrengths.find(text); named != kStrengths.end()) {
        return {kParts.at(""), named->second};
    }
    const named_number given = ReadNamedNumber(text);
    const auto part = kParts.find(given.name);
    if (part == kParts.end() || !given.isNumber || given.number > kMaxStrength) {
        throw Failure(kExitUsage, "--strength " + text +
                                      ": give subtle, normal, strong or a number from 0 to 4, or "
                                      "PART=NUMBER with vowels, consonants, lips or teeth");
    }
    return {part->second, given.number};
}

/// The options of the library, and what they borrow.
struct library_options {
    std::string rules;
    std::vector<named_number> gainNumbers;
    std::vector<tessarin_gain> gains;
    std::vector<tessarin_strength> strengths;
    tessarin_track_options flat{};
};

void ReadGains(const track_options& options, library_options* out) {
    for (const std::string& text : options.gains) {
        const named_number given = ReadNamedNumber(text);
        if (!given.isNumber || (!given.name.empty() && ArpabetFromLabels(given.name).empty())) {
            throw Failure(kExitUsage, "--gain " + text +
                                          ": give PHONEMES=LEVEL, such as pbm=0.5, or one level "
                                          "for all");
        }
        out->gainNumbers.push_back(given);
    }
    for (const named_number& each : out->gainNumbers) {
        out->gains.push_back({each.name.c_str(), each.number});
    }
}

void ReadOptions(const track_options& options, library_options* out) {
    out->rules = options.rules.empty() ? "" : ReadWholeFile(options.rules);
    RequireSize(options.rules, out->rules);
    ReadGains(options, out);
    out->strengths = ReadStrengths(options.strengths);
    tessarin_track_options& flat = out->flat;
    flat.size = sizeof flat;
    flat.flags = TESSARIN_TRACK_CURVES;
    flat.flags |= options.smooth ? +TESSARIN_TRACK_SMOOTH : 0;
    flat.flags |= options.commonKeys ? +TESSARIN_TRACK_COMMON_KEYS : 0;
    flat.flags |= options.plain ? +TESSARIN_TRACK_PLAIN : 0;
    flat.frame_rate = static_cast<float>(options.fps);
    flat.slope = static_cast<float>(options.slope);
    flat.max_weights = options.maxShapes;
    flat.rules = out->rules.empty() ? nullptr : out->rules.data();
    flat.rules_length = static_cast<int32_t>(out->rules.size());
    flat.gains = out->gains.data();
    flat.gain_count = static_cast<uint32_t>(out->gains.size());
    flat.strengths = out->strengths.data();
    flat.strength_count = static_cast<uint32_t>(out->strengths.size());
}

tessarin::flat::result_owner MakeResult(const timed_result& timings) {
    std::vector<tessarin_phoneme> phonemes;
    for (const timed_phoneme& each : timings.phonemes) {
        tessarin_phoneme& phoneme =
            phonemes.emplace_back(tessarin_phoneme{each.startMs, each.endMs, each.score, {}});
        std::strncpy(phoneme.label, each.label.c_str(), sizeof phoneme.label - 1);
    }
    tessarin::flat::result_owner result;
    int32_t code = tessarin_create_result_from_phonemes(
        phonemes.data(), static_cast<uint32_t>(phonemes.size()), tessarin::Out(result));
    if (code == TESSARIN_OK) {
        code = tessarin_set_loudness(result.get(), timings.loudness.data(),
                                     static_cast<uint32_t>(timings.loudness.size()));
    }
    if (code != TESSARIN_OK) {
        throw EngineFailure("mouth track", code);
    }
    return result;
}

void CollectFrames(const tessarin_track& track, timed_result* out) {
    uint32_t count = 0;
    const tessarin_frame* const frames = tessarin_get_track_frames(&track, &count);
    for (uint32_t i = 0; i < count; ++i) {
        out->frames.push_back(CopyFrame(frames[i]));
    }
}

void CollectCurves(const tessarin_track& track, timed_result* out) {
    uint32_t count = 0;
    const tessarin_curve* const curves = tessarin_get_curves(&track, &count);
    for (uint32_t i = 0; i < count; ++i) {
        weight_curve& curve = out->curves.emplace_back();
        curve.label = curves[i].label;
        curve.startMs = curves[i].start_ms;
        curve.endMs = curves[i].end_ms;
        for (uint32_t k = 0; k < curves[i].key_count; ++k) {
            curve.keys.emplace_back(curves[i].keys[k].time_ms, curves[i].keys[k].weight);
        }
    }
}

/// Adds the one mixture that stands best for a stretch of the track.
void AddStretch(const std::string& stretch, const tessarin_track& track, timed_result* out) {
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
    tessarin_frame mixture{};
    if (tessarin_quantize_track(&track, from, to, shapes, &mixture) == TESSARIN_OK) {
        out->stretches.push_back(CopyFrame(mixture));
    }
}

} // namespace

void AddStrengthOption(CLI::App& command, std::vector<std::string>* strengths) {
    command
        .add_option("--strength", *strengths,
                    "How far the mouth leaves rest: subtle, normal, strong or a factor from 0 to "
                    "4, lips and teeth excepted; or PART=FACTOR for vowels, consonants, lips or "
                    "teeth; may be repeated [normal]")
        ->allow_extra_args(false)
        ->option_text("STRENGTH");
}

std::vector<tessarin_strength> ReadStrengths(const std::vector<std::string>& strengths) {
    std::vector<tessarin_strength> read;
    for (const std::string& text : strengths) {
        read.push_back(ReadStrength(text));
    }
    return read;
}

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
                    "Added to the level of phonemes, which is their loudness from 0 to 1: "
                    "PHONEMES=LEVEL, such as AEAH=0.2, or one level for all [0]; for a factor see "
                    "--strength")
        ->option_text("GAIN");
    AddStrengthOption(command, &options->strengths);
    command
        .add_flag("--plain", options->plain,
                  "Make the track as the articulator does by itself: loudness against full scale, "
                  "and its own built-in rules")
        ->excludes("--strength");
    command.add_flag("--common-keys", options->commonKeys,
                     "Put the keys of all curves at the same times");
    command
        .add_option("--quantize", options->stretch,
                    "Also find the one mixture that fits a stretch best: FROM-TO in ms, or "
                    "FROM-TO:SHAPES with a maximum number of shapes")
        ->option_text("STRETCH");
}

void MakeMouthTrack(const track_options& options, timed_result* out) {
    library_options library;
    ReadOptions(options, &library);
    const tessarin::flat::result_owner result = MakeResult(*out);
    tessarin::flat::track_owner track;
    const int32_t code = tessarin_create_track(result.get(), &library.flat, tessarin::Out(track));
    if (code != TESSARIN_OK) {
        throw EngineFailure(options.rules.empty() ? "--fps" : options.rules, code);
    }
    CollectFrames(*track, out);
    CollectCurves(*track, out);
    if (!options.stretch.empty()) {
        AddStretch(options.stretch, *track, out);
    }
}
