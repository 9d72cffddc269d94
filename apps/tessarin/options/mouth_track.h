#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "apps/tessarin/options/engine_data.h"
#include "apps/tessarin/timed_result.h"

/// How the mouth track is made of timed phonemes.
struct track_options {
    std::string rules;
    double fps = 0; ///< 0: the rate of the rules
    bool smooth = false;
    double slope = 0; ///< 0: the engine's
    int maxShapes = 0;
    std::vector<std::string> gains;     ///< PHONEMES=LEVEL, or a level for all
    std::vector<std::string> strengths; ///< a name or a factor, or PART=FACTOR
    bool plain = false;
    bool commonKeys = false;
    std::string stretch; ///< FROM-TO or FROM-TO:SHAPES, in milliseconds
};

/// How far the mouth leaves rest.
void AddStrengthOption(CLI::App& command, std::vector<std::string>* strengths);
/// Throws Failure.
std::vector<tessarin_strength> ReadStrengths(const std::vector<std::string>& strengths);

void AddTrackOptions(CLI::App& command, track_options* options);

/// Makes the mouth track of the phonemes of `result`, and adds it. Throws Failure.
void MakeMouthTrack(const track_options& options, timed_result* result);
