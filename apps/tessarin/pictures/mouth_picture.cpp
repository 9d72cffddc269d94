#include "apps/tessarin/pictures/mouth_picture.h"

#include <algorithm>
#include <cmath>

// The colours, the places of what does not move, and the order of the parts are those of mouth.svg.

namespace {

constexpr drawn_point kUpperLeft = {-104, -86};
constexpr double kScale = kMouthWidth / 208.0;

constexpr color kBackdrop = {238, 234, 229};
constexpr color kNeck = {183, 122, 93};
constexpr color kShade = {164, 97, 63};
constexpr color kHighlight = {251, 220, 194};

drawn_path WholeCurve(const std::vector<drawn_point>& half) {
    std::vector<drawn_point> whole;
    for (size_t i = half.size(); i-- > 1;) {
        whole.push_back({-half[i].x, half[i].y});
    }
    whole.insert(whole.end(), half.begin(), half.end());
    return FlattenCubics(whole);
}

drawn_path AreaBetween(const std::vector<drawn_point>& upper,
                       const std::vector<drawn_point>& lower) {
    drawn_path area = WholeCurve(upper);
    const drawn_path back = WholeCurve(lower);
    area.insert(area.end(), back.rbegin(), back.rend());
    return area;
}

drawn_path Mirrored(drawn_path path) {
    for (drawn_point& point : path) {
        point.x = -point.x;
    }
    return path;
}

/// The edge of cheek and chin. The jaw turns about its joint, so that the chin sinks most.
drawn_path FaceEdge(double jaw) {
    return WholeCurve({{0, 124 + jaw * 0.8},
                       {26, 124 + jaw * 0.8},
                       {46, 118 + jaw * 0.76},
                       {66, 100 + jaw * 0.66},
                       {96, 74 + jaw * 0.45},
                       {118, 44 + jaw * 0.15},
                       {126, -6},
                       {131, -40},
                       {134, -80},
                       {135, -130}});
}

/// A tooth from its root to its edge, whose corners are round.
drawn_path Tooth(double left, double right, double root, double edge) {
    constexpr double kRound = 3;
    // The control point of a quadratic curve, as of a cubic one.
    constexpr double kThird = kRound / 3;
    const double in = edge > root ? -1 : 1;
    drawn_path path = {{left, root}};
    const drawn_path corner = FlattenCubics({{left, edge + in * kRound},
                                             {left, edge + in * kThird},
                                             {left + kThird, edge},
                                             {left + kRound, edge}});
    path.insert(path.end(), corner.begin(), corner.end());
    for (auto point = corner.rbegin(); point != corner.rend(); ++point) {
        path.push_back({left + right - point->x, point->y});
    }
    path.push_back({right, root});
    return path;
}

class MouthPainter {
public:
    MouthPainter(const DrawnMouths& all, const drawn_mouth& shown, int left, int top,
                 Canvas& canvas)
        : mouths(all), mouth(shown),
          painter(canvas, left, top, kMouthWidth, kMouthHeight, kUpperLeft, kScale),
          gap(painter.Area(AreaBetween(shown.innerUpper, shown.innerLower))),
          face(painter.Area(FaceEdge(shown.jaw))) {
        canvas.FillRect(left, top, kMouthWidth, kMouthHeight, kBackdrop);
    }

    void Paint() {
        PaintSkin();
        PaintCreases();
        PaintNose();
        PaintInside();
        PaintLips();
    }

private:
    void PaintSkin() {
        painter.Paint(painter.Area({{-90, 20}, {-100, 200}, {100, 200}, {90, 20}}), Plain(kNeck));
        painter.Paint(painter.Ellipse({0, 128 + 0.6 * mouth.jaw}, {86, 30}, 9),
                      Plain({125, 74, 53}), 0.45);
        painter.Paint(
            face,
            RadialGradient({-12, -30}, 215,
                           {{0, {243, 200, 168}}, {0.5, {232, 179, 147}}, {1, {201, 138, 107}}}));
        painter.Paint(painter.Line(FaceEdge(mouth.jaw), 22, 9), Plain({169, 105, 76}), 0.45, &face);
        for (const double side : {-1.0, 1.0}) {
            painter.Paint(painter.Ellipse({side * 86, -14}, {34, 44}, 9), Plain({229, 143, 120}),
                          0.28, &face);
        }
        painter.Paint(painter.Ellipse({-4, 88 + 0.8 * mouth.jaw}, {34, 20}, 9), Plain(kHighlight),
                      0.5, &face);
    }

    void PaintCreases() {
        const double chin = mouth.outerLower.front().y;
        painter.Paint(
            painter.Line(
                FlattenCubics(
                    {{-34, chin + 13}, {-16, chin + 21}, {16, chin + 21}, {34, chin + 13}}),
                9, 5),
            Plain({157, 91, 65}), 0.5, &face);
        painter.Paint(painter.Line(WholeCurve(mouth.outerLower), 10, 5), Plain({169, 100, 75}), 0.4,
                      &face);
        painter.Paint(painter.Line(WholeCurve(mouth.outerUpper), 5, 1.6), Plain(kHighlight), 0.55,
                      &face);
        PaintBothSides({{7, -52}, {8, -42}, {10, -36}, {12, -28}}, 4, 1.6, {184, 116, 85}, 0.5);
        // The fold from the wing of the nose gives way to the corner of the mouth.
        const drawn_point corner = mouth.outerUpper.back();
        const double out = 0.55 * (corner.x - 61);
        PaintBothSides(
            {{32, -60}, {46, -52}, {70 + out, -34 + corner.y * 0.4}, {76 + out, -4 + corner.y}}, 5,
            5, kShade, 0.26);
    }

    void PaintNose() {
        const drawn_path nose = FlattenCubics({{-24, -118},
                                               {-26, -96},
                                               {-40, -88},
                                               {-40, -74},
                                               {-40, -60},
                                               {-26, -58},
                                               {-17, -62},
                                               {-8, -54},
                                               {8, -54},
                                               {17, -62},
                                               {26, -58},
                                               {40, -60},
                                               {40, -74},
                                               {40, -88},
                                               {26, -96},
                                               {24, -118}});
        painter.Paint(painter.Area(nose), Plain({238, 188, 156}));
        painter.Paint(painter.Line(FlattenCubics({{-40, -76},
                                                  {-40, -60},
                                                  {-26, -58},
                                                  {-17, -62},
                                                  {-8, -54},
                                                  {8, -54},
                                                  {17, -62},
                                                  {26, -58},
                                                  {40, -60},
                                                  {40, -76}}),
                                   7, 5),
                      Plain(kShade), 0.55);
        painter.Paint(painter.Ellipse({-3, -84}, {13, 12}, 5), Plain({255, 232, 212}), 0.75);
        const drawn_path nostril = FlattenCubics(
            {{29, -66}, {24, -73}, {13, -71}, {10, -63}, {15, -66}, {22, -66}, {29, -66}});
        painter.Paint(painter.Area(nostril), Plain({107, 53, 39}));
        painter.Paint(painter.Area(Mirrored(nostril)), Plain({107, 53, 39}));
        PaintBothSides({{39, -80}, {43, -68}, {34, -59}, {25, -61}}, 2, 0, kShade, 0.8);
    }

    void PaintInside() {
        painter.Paint(gap, RadialGradient({0, 34}, 70, {{0, {42, 13, 16}}, {1, {90, 34, 38}}}));
        const double back = mouth.tongue.front().y;
        painter.Paint(
            painter.Area(WholeCurve(mouth.tongue)),
            VerticalGradient(back, 140,
                             {{0, {205, 115, 119}}, {0.35, {185, 89, 95}}, {1, {125, 51, 57}}}),
            1, &gap);
        painter.Paint(painter.Line({{0, back + 7}, {0, back + 60}}, 5, 1.6), Plain({107, 38, 45}),
                      0.45, &gap);
        PaintTeeth(mouths.GetLowerTeeth(), mouth.jaw);
        const drawn_path tip = WholeCurve(mouth.tongueTip);
        painter.Paint(painter.Area(tip), Plain({210, 125, 128}), 1, &gap);
        painter.Paint(painter.Line(tip, 1.2, 0), Plain({141, 61, 67}), 1, &gap);
        PaintTeeth(mouths.GetUpperTeeth(), 0);
        drawn_path edge = AreaBetween(mouth.innerUpper, mouth.innerLower);
        edge.push_back(edge.front());
        painter.Paint(painter.Line(edge, 10, 5), Plain({42, 5, 8}), 0.5, &gap);
    }

    void PaintTeeth(const tooth_row& row, double drop) {
        for (size_t i = 0; i < row.edges.size(); ++i) {
            const double root = row.root + drop;
            const double edge = row.edges[i] + drop;
            const drawn_path right = Tooth(row.sides[i], row.sides[i + 1], root, edge);
            for (const drawn_path& tooth : {right, Mirrored(right)}) {
                painter.Paint(
                    painter.Area(tooth),
                    VerticalGradient(
                        std::min(root, edge), std::max(root, edge),
                        {{0, {226, 214, 196}}, {0.6, {251, 246, 236}}, {1, {239, 230, 216}}}),
                    1, &gap);
                painter.Paint(painter.Line(tooth, 0.8, 0), Plain({203, 185, 164}), 1, &gap);
            }
        }
    }

    void PaintLips() {
        const double seam = mouth.innerLower.front().y;
        const double chin = mouth.outerLower.front().y;
        const double lowest = std::max(chin, mouth.outerLower.back().y);
        const double highest = std::min(seam, mouth.innerLower.back().y);
        painter.Paint(
            painter.Area(AreaBetween(mouth.innerLower, mouth.outerLower)),
            VerticalGradient(highest, lowest,
                             {{0, {185, 96, 95}}, {0.45, {207, 127, 120}}, {1, {184, 101, 95}}}));
        const double shine = seam + 0.34 * (chin - seam);
        const double reach = mouth.outerUpper.back().x * 0.3;
        painter.Paint(painter.Line(FlattenCubics({{-reach, shine - 1},
                                                  {-reach / 3, shine + 1},
                                                  {reach / 3, shine + 1},
                                                  {reach, shine - 1}}),
                                   6, 2.4),
                      Plain({255, 255, 255}), 0.3);
        painter.Paint(
            painter.Area(AreaBetween(mouth.outerUpper, mouth.innerUpper)),
            VerticalGradient(-28, 8,
                             {{0, {201, 120, 114}}, {0.55, {179, 93, 92}}, {1, {150, 69, 74}}}));
        painter.Paint(painter.Line(WholeCurve(mouth.innerUpper), 2.2, 0), Plain({88, 25, 31}));
        const drawn_point corner = mouth.outerUpper.back();
        PaintBothSides({{corner.x - 2, corner.y - 1},
                        {corner.x + 0.7, corner.y - 0.3},
                        {corner.x + 2, corner.y + 1.7},
                        {corner.x + 2, corner.y + 4}},
                       3, 1.6, {122, 58, 51}, 0.45);
    }

    void PaintBothSides(const std::vector<drawn_point>& cubics, double lineWidth, double blur,
                        color paint, double share) {
        const drawn_path right = FlattenCubics(cubics);
        for (const drawn_path& path : {right, Mirrored(right)}) {
            painter.Paint(painter.Line(path, lineWidth, blur), Plain(paint), share, &face);
        }
    }

    const DrawnMouths& mouths;
    const drawn_mouth& mouth;
    PathPainter painter;
    coverage gap;
    coverage face;
};

} // namespace

void DrawMouth(const DrawnMouths& mouths, const drawn_mouth& mouth, int left, int top,
               Canvas& canvas) {
    MouthPainter(mouths, mouth, left, top, canvas).Paint();
}
