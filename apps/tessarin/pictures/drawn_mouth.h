#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "apps/tessarin/pictures/path_painter.h"

/// A mouth as its curves, which run from the middle to the right side, in units of the drawing.
struct drawn_mouth {
    std::vector<drawn_point> outerUpper;
    std::vector<drawn_point> innerUpper;
    std::vector<drawn_point> innerLower;
    std::vector<drawn_point> outerLower;
    std::vector<drawn_point> tongue;
    std::vector<drawn_point> tongueTip;
    double jaw = 0; ///< how far it has dropped
};

/// Teeth of the right half from the middle on: where each ends, and how high its edge is while the
/// jaw is shut.
struct tooth_row {
    std::vector<double> sides;
    std::vector<double> edges;
    double root = 0;
};

/// The mouths of the phonemes, as the page of `view` draws them.
class DrawnMouths {
public:
    DrawnMouths();

    /// For the weights of a frame, by phoneme. What is missing to a sum of 1 is a mouth at rest; a
    /// larger sum is scaled down, since a mouth cannot exceed its shapes.
    drawn_mouth Mix(const std::vector<std::pair<std::string, float>>& weights) const;

    const tooth_row& GetUpperTeeth() const { return upperTeeth; }
    const tooth_row& GetLowerTeeth() const { return lowerTeeth; }

private:
    drawn_mouth rest;
    std::map<std::string, drawn_mouth> ofPhoneme;
    tooth_row upperTeeth;
    tooth_row lowerTeeth;
};
