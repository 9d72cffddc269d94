#pragma once

#include <functional>
#include <vector>

#include "apps/tessarin/pictures/canvas.h"

/// A place in a drawing; y grows downwards.
struct drawn_point {
    double x;
    double y;
};

using drawn_path = std::vector<drawn_point>;

/// The curve as straight pieces: `points` has one to begin with, and three for each cubic.
drawn_path FlattenCubics(const std::vector<drawn_point>& points);

/// The share of each pixel of a painter's box that something covers, row by row.
using coverage = std::vector<float>;

/// The colour at a place.
using paint_source = std::function<color(drawn_point)>;

/// A gradient stop; they are in the order of their places, 0 to 1.
struct gradient_stop {
    double place;
    color paint;
};

/// From `top` to `bottom`.
paint_source VerticalGradient(double top, double bottom, std::vector<gradient_stop> stops);
paint_source RadialGradient(drawn_point centre, double radius, std::vector<gradient_stop> stops);
paint_source Plain(color paint);

/// Paints smooth shapes into a box of a canvas, in units of the drawing.
class PathPainter {
public:
    /// The box's upper left pixel and size, what place of the drawing lies there, and the pixels of
    /// a unit.
    PathPainter(Canvas& target, int boxLeft, int boxTop, int boxWidth, int boxHeight,
                drawn_point first, double pixelsPerUnit);

    /// Inside a closed path, by the even-odd rule.
    coverage Area(const drawn_path& path) const;
    /// Along a path, with round ends; `blur` is the standard deviation of a soft edge.
    coverage Line(const drawn_path& path, double lineWidth, double blur) const;
    coverage Ellipse(drawn_point centre, drawn_point radii, double blur) const;

    /// Covers the box by `share` of the paint, where `clip`, if given, lets it.
    void Paint(const coverage& where, const paint_source& paint, double share = 1.0,
               const coverage* clip = nullptr);

private:
    size_t Size() const { return static_cast<size_t>(width) * static_cast<size_t>(height); }
    float& At(coverage& values, int x, int y) const;
    drawn_point CentreOf(int x, int y) const;

    Canvas& canvas;
    int left;
    int top;
    int width;
    int height;
    drawn_point origin;
    double scale;
};
