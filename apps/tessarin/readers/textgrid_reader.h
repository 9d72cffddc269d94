#pragma once

#include <string>
#include <string_view>
#include <vector>

struct grid_interval {
    double startMs;
    double endMs;
    std::string text;
};

struct grid_tier {
    std::string name;
    std::vector<grid_interval> intervals; ///< none in a tier of points
};

/// The tiers of a Praat TextGrid in its long or its short text form. Throws std::invalid_argument
/// when it is not one.
std::vector<grid_tier> ReadTextGrid(std::string_view text);
