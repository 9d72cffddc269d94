#pragma once

#include <string>

#include "apps/tessarin/options/mouth_shapes.h"
#include "apps/tessarin/timed_result.h"

/// Which mouths a character has, and how cues are written.
struct cue_style {
    std::string format = "tsv";   ///< tsv, xml, json or dat
    std::string extended = "GHX"; ///< drawings beside A to F
    bool hasPrestonBlairNames = false;
};

/// The map to the drawings that a character has: what others would show is shown by A or C.
MouthShapes ShapesForCues(const cue_style& style);

std::string WriteCues(const timed_result& result, const cue_style& style);
