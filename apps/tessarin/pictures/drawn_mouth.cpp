#include "apps/tessarin/pictures/drawn_mouth.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "apps/tessarin/page/view_page.h"

namespace {

using nlohmann::json;

constexpr double kHiddenTip = 120;

constexpr std::vector<drawn_point> drawn_mouth::*kCurves[] = {
    &drawn_mouth::outerUpper, &drawn_mouth::innerUpper, &drawn_mouth::innerLower,
    &drawn_mouth::outerLower, &drawn_mouth::tongue,     &drawn_mouth::tongueTip};

/// What mouth_shapes.json says of a shape; mouth_shapes.js explains the names.
struct description {
    explicit description(const json& shape)
        : x(shape.at("corner")[0]), y(shape.at("corner")[1]), dip(shape.at("dip")),
          peak(shape.at("peak")), gapTop(shape.at("gap")[0]), gapBottom(shape.at("gap")[1]),
          chin(shape.at("chin")), jaw(shape.at("jaw")), round(shape.value("round", 0.0)),
          tongue(shape.value("tongue", 20 + jaw)), back(shape.value("back", 38.0)),
          tip(shape.value("tip", kHiddenTip)) {}

    double x;
    double y;
    double dip;
    double peak;
    double gapTop;
    double gapBottom;
    double chin;
    double jaw;
    double round;
    double tongue;
    double back;
    double tip;
};

void ShapeOuterCurves(const description& of, drawn_mouth* mouth) {
    const auto& [x, y] = std::pair(of.x, of.y);
    const double flat = 1 - of.round;
    const double bow = std::min(14.0, x * 0.26);
    const double side = x - bow;
    mouth->outerUpper = {
        {0, of.dip},
        {bow * 0.4, of.dip},
        {bow * 0.5, of.peak},
        {bow, of.peak},
        {bow + side * (0.38 + 0.1 * of.round), of.peak},
        {x - side * 0.3 * flat, y + (of.peak - y) * (0.3 + 0.3 * of.round)},
        {x, y},
    };
    mouth->outerLower = {
        {0, of.chin},
        {x * (0.5 + 0.06 * of.round), of.chin},
        {x - x * 0.16 * flat, y + (of.chin - y) * (0.45 + 0.1 * of.round)},
        {x, y},
    };
}

void ShapeInnerCurves(const description& of, drawn_mouth* mouth) {
    const double flat = 1 - of.round;
    const double x = of.x - 4 - 5 * of.round;
    const double y = of.y;
    const double tubercle = 1.6 * flat;
    const double first = x * 0.34;
    const double side = x - first;
    mouth->innerUpper = {
        {0, of.gapTop + tubercle},
        {first * 0.5, of.gapTop + tubercle},
        {first * 0.5, of.gapTop},
        {first, of.gapTop},
        {first + side * (0.3 + 0.16 * of.round), of.gapTop},
        {x - side * 0.3 * flat, y + (of.gapTop - y) * (0.25 + 0.35 * of.round)},
        {x, y},
    };
    mouth->innerLower = {
        {0, of.gapBottom},
        {x * (0.46 + 0.1 * of.round), of.gapBottom},
        {x - x * 0.2 * flat, y + (of.gapBottom - y) * (0.35 + 0.2 * of.round)},
        {x, y},
    };
}

std::vector<drawn_point> Dome(double top, double width) {
    return {{0, top}, {width * 0.75, top}, {width, top + 14}, {width + 6, 140}};
}

drawn_mouth ShapeOf(const description& of) {
    drawn_mouth mouth;
    ShapeOuterCurves(of, &mouth);
    ShapeInnerCurves(of, &mouth);
    mouth.tongue = Dome(of.tongue, of.back);
    mouth.tongueTip = Dome(of.tip, 34);
    mouth.jaw = of.jaw;
    return mouth;
}

void AddWeighted(const drawn_mouth& part, double weight, drawn_mouth* sum) {
    for (const auto curve : kCurves) {
        std::vector<drawn_point>& points = sum->*curve;
        const std::vector<drawn_point>& added = part.*curve;
        points.resize(added.size(), {0, 0});
        for (size_t i = 0; i < points.size(); ++i) {
            points[i].x += weight * added[i].x;
            points[i].y += weight * added[i].y;
        }
    }
    sum->jaw += weight * part.jaw;
}

/// Weights may come from a file. A mouth of others than these would have no place in a picture.
double ShownWeight(float weight) {
    constexpr float kMostWeight = 1000.0f;
    return weight > 0.0f ? static_cast<double>(std::min(weight, kMostWeight)) : 0.0;
}

tooth_row TeethOf(const json& row) {
    return {row.at("sides"), row.at("edges"), row.at("root")};
}

} // namespace

DrawnMouths::DrawnMouths() {
    const json data = json::parse(kViewSources.shapes);
    std::map<std::string, drawn_mouth> shapes;
    for (const auto& [name, shape] : data.at("shapes").items()) {
        shapes[name] = ShapeOf(description(shape));
    }
    rest = shapes.at("rest");
    for (const auto& [label, parts] : data.at("phonemes").items()) {
        for (const auto& [name, share] : parts.items()) {
            AddWeighted(shapes.at(name), share, &ofPhoneme[label]);
        }
    }
    upperTeeth = TeethOf(data.at("teeth").at("upper"));
    lowerTeeth = TeethOf(data.at("teeth").at("lower"));
}

drawn_mouth DrawnMouths::Mix(const std::vector<std::pair<std::string, float>>& weights) const {
    std::vector<std::pair<const drawn_mouth*, double>> parts;
    double total = 0;
    for (const auto& [label, weight] : weights) {
        const auto phoneme = ofPhoneme.find(label);
        const double shown = ShownWeight(weight);
        if (phoneme != ofPhoneme.end() && shown > 0) {
            parts.emplace_back(&phoneme->second, shown);
            total += shown;
        }
    }
    const double scale = total > 1 ? 1 / total : 1;
    drawn_mouth sum;
    AddWeighted(rest, std::max(0.0, 1 - total), &sum);
    for (const auto& [mouth, weight] : parts) {
        AddWeighted(*mouth, weight * scale, &sum);
    }
    return sum;
}
