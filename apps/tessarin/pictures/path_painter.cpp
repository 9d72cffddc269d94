#include "apps/tessarin/pictures/path_painter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace {

constexpr int kCubicPieces = 8;
constexpr int kRowsInPixel = 4;
/// An edge that is not soft is as soft as a pixel.
constexpr double kSharpestPixels = 0.4;
/// A soft edge has ended at so many standard deviations.
constexpr double kBlurReach = 3.0;

/// The share of a half plane's blurred edge, `distance` inside it.
double SoftStep(double distance, double blur) {
    return 0.5 * (1.0 + std::erf(distance / (blur * std::numbers::sqrt2)));
}

double DistanceToPiece(drawn_point from, drawn_point a, drawn_point b) {
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double square = dx * dx + dy * dy;
    const double along =
        square > 0 ? std::clamp(((from.x - a.x) * dx + (from.y - a.y) * dy) / square, 0.0, 1.0)
                   : 0.0;
    return std::hypot(from.x - a.x - along * dx, from.y - a.y - along * dy);
}

color AtStop(const std::vector<gradient_stop>& stops, double place) {
    const auto next = std::ranges::find_if(
        stops, [place](const gradient_stop& stop) { return stop.place >= place; });
    if (next == stops.begin()) {
        return stops.front().paint;
    }
    if (next == stops.end()) {
        return stops.back().paint;
    }
    const gradient_stop& before = *(next - 1);
    const double share = (place - before.place) / (next->place - before.place);
    return Mixed(before.paint, next->paint, static_cast<float>(share));
}

/// The pixels between two places of a row, those at its ends in part.
void AddRun(float* row, int width, double from, double to, float share) {
    from = std::clamp(from, 0.0, static_cast<double>(width));
    to = std::clamp(to, 0.0, static_cast<double>(width));
    for (int x = static_cast<int>(from); x < width && x < to; ++x) {
        const double covered = std::min(to, x + 1.0) - std::max(from, static_cast<double>(x));
        row[x] += share * static_cast<float>(covered);
    }
}

} // namespace

drawn_path FlattenCubics(const std::vector<drawn_point>& points) {
    drawn_path path = {points.front()};
    for (size_t i = 0; i + 3 < points.size(); i += 3) {
        const drawn_point* const p = &points[i];
        for (int piece = 1; piece <= kCubicPieces; ++piece) {
            const double t = static_cast<double>(piece) / kCubicPieces;
            const double u = 1 - t;
            const double a = u * u * u;
            const double b = 3 * u * u * t;
            const double c = 3 * u * t * t;
            const double d = t * t * t;
            path.push_back({a * p[0].x + b * p[1].x + c * p[2].x + d * p[3].x,
                            a * p[0].y + b * p[1].y + c * p[2].y + d * p[3].y});
        }
    }
    return path;
}

paint_source VerticalGradient(double top, double bottom, std::vector<gradient_stop> stops) {
    return [=](drawn_point at) { return AtStop(stops, (at.y - top) / (bottom - top)); };
}

paint_source RadialGradient(drawn_point centre, double radius, std::vector<gradient_stop> stops) {
    return [=](drawn_point at) {
        return AtStop(stops, std::hypot(at.x - centre.x, at.y - centre.y) / radius);
    };
}

paint_source Plain(color paint) {
    return [paint](drawn_point) { return paint; };
}

PathPainter::PathPainter(Canvas& target, int boxLeft, int boxTop, int boxWidth, int boxHeight,
                         drawn_point first, double pixelsPerUnit)
    : canvas(target), left(boxLeft), top(boxTop), width(boxWidth), height(boxHeight), origin(first),
      scale(pixelsPerUnit) {}

float& PathPainter::At(coverage& values, int x, int y) const {
    return values[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
}

drawn_point PathPainter::CentreOf(int x, int y) const {
    return {origin.x + (x + 0.5) / scale, origin.y + (y + 0.5) / scale};
}

coverage PathPainter::Area(const drawn_path& path) const {
    coverage result(Size());
    std::vector<double> crossings;
    for (int row = 0; row < height * kRowsInPixel; ++row) {
        const double y = origin.y + (row + 0.5) / kRowsInPixel / scale;
        crossings.clear();
        for (size_t i = 0; i < path.size(); ++i) {
            const drawn_point a = path[i];
            const drawn_point b = path[(i + 1) % path.size()];
            if ((a.y <= y) != (b.y <= y)) {
                crossings.push_back((a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x) - origin.x) *
                                    scale);
            }
        }
        std::ranges::sort(crossings);
        for (size_t i = 0; i + 1 < crossings.size(); i += 2) {
            AddRun(&At(result, 0, row / kRowsInPixel), width, crossings[i], crossings[i + 1],
                   1.0f / kRowsInPixel);
        }
    }
    return result;
}

coverage PathPainter::Line(const drawn_path& path, double lineWidth, double blur) const {
    coverage result(Size());
    const double soft = std::max(blur, kSharpestPixels / scale);
    const double reach = lineWidth / 2 + kBlurReach * soft;
    const auto [leftmost, rightmost] = std::ranges::minmax(path, {}, &drawn_point::x);
    const auto [highest, lowest] = std::ranges::minmax(path, {}, &drawn_point::y);
    const auto pixel = [this](double place, double first, int most) {
        return static_cast<int>(
            std::clamp((place - first) * scale, 0.0, static_cast<double>(most)));
    };
    const int endX = pixel(rightmost.x + reach, origin.x, width - 1);
    const int endY = pixel(lowest.y + reach, origin.y, height - 1);
    for (int y = pixel(highest.y - reach, origin.y, height - 1); y <= endY; ++y) {
        for (int x = pixel(leftmost.x - reach, origin.x, width - 1); x <= endX; ++x) {
            double nearest = std::numeric_limits<double>::infinity();
            for (size_t i = 0; i + 1 < path.size(); ++i) {
                nearest = std::min(nearest, DistanceToPiece(CentreOf(x, y), path[i], path[i + 1]));
            }
            if (nearest < reach) {
                At(result, x, y) = static_cast<float>(SoftStep(lineWidth / 2 - nearest, soft) -
                                                      SoftStep(-lineWidth / 2 - nearest, soft));
            }
        }
    }
    return result;
}

coverage PathPainter::Ellipse(drawn_point centre, drawn_point radii, double blur) const {
    coverage result(Size());
    const double soft = std::max(blur, kSharpestPixels / scale);
    const double shorter = std::min(radii.x, radii.y);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const drawn_point at = CentreOf(x, y);
            const double outside =
                std::hypot((at.x - centre.x) / radii.x, (at.y - centre.y) / radii.y) - 1;
            if (outside * shorter < kBlurReach * soft) {
                At(result, x, y) = static_cast<float>(SoftStep(-outside * shorter, soft));
            }
        }
    }
    return result;
}

void PathPainter::Paint(const coverage& where, const paint_source& paint, double share,
                        const coverage* clip) {
    for (size_t i = 0; i < where.size(); ++i) {
        const float covered =
            std::min(where[i], 1.0f) * (clip != nullptr ? std::min((*clip)[i], 1.0f) : 1.0f);
        if (covered > 0) {
            const int x = static_cast<int>(i % static_cast<size_t>(width));
            const int y = static_cast<int>(i / static_cast<size_t>(width));
            canvas.Tint(left + x, top + y, paint(CentreOf(x, y)),
                        covered * static_cast<float>(share));
        }
    }
}
