#include "apps/tessarin/gltf/head_parts.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>

namespace {

constexpr double kPi = std::numbers::pi;

/// Half axes of the skull.
constexpr head_vector kSkull = {0.079, 0.112, 0.095};

/// The direction of the mouth from the middle of the head, and the one that is up for it.
constexpr double kMouthTilt = 0.40;

constexpr size_t kAround = 56;

head_vector operator+(const head_vector& a, const head_vector& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

head_vector operator-(const head_vector& a, const head_vector& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

head_vector operator*(const head_vector& a, double factor) {
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}

head_vector Cross(const head_vector& a, const head_vector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double Smooth(double from, double to, double x) {
    const double t = std::clamp((x - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

/// The surface of the head in a direction: an ellipsoid, narrower towards the chin.
head_vector SkullAt(const head_vector& direction) {
    const double x = direction[0] / kSkull[0];
    const double y = direction[1] / kSkull[1];
    const double z = direction[2] / kSkull[2];
    head_vector place = direction * (1 / std::sqrt(x * x + y * y + z * z));
    const double down = std::clamp(-place[1] / kSkull[1], 0.0, 1.0);
    place[0] *= 1 - 0.32 * down * down;
    place[2] += 0.012 * down * Smooth(0.0, 0.06, place[2]); // the chin stands out
    return place;
}

/// A ring around the mouth: how far it is from the middle as an angle, how flat, and how far its
/// skin stands out from the skull.
struct mouth_ring {
    double angle;
    double flatness; ///< height by width
    double outMetres;
    double surface;
};

/// From the back of the mouth over the lips to the back of the head.
constexpr std::array<mouth_ring, 20> kRings = {{
    {0.01, 0.75, -0.050, 0.0},  {0.18, 0.75, -0.050, 0.0},  {0.27, 0.80, -0.030, 0.1},
    {0.28, 0.65, -0.014, 0.3},  {0.275, 0.16, -0.006, 0.8}, {0.28, 0.02, 0.000, 1.0},
    {0.295, 0.14, 0.0045, 1.0}, {0.315, 0.27, 0.0045, 1.0}, {0.335, 0.38, 0.0015, 1.0},
    {0.37, 0.52, 0.000, 1.0},   {0.43, 0.70, 0.000, 1.0},   {0.52, 0.88, 0.000, 1.0},
    {0.65, 1.0, 0.000, 1.0},    {0.82, 1.0, 0.000, 1.0},    {1.02, 1.0, 0.000, 1.0},
    {1.28, 1.0, 0.000, 1.0},    {1.6, 1.0, 0.000, 1.0},     {2.0, 1.0, 0.000, 1.0},
    {2.5, 1.0, 0.000, 1.0},     {3.1, 1.0, 0.000, 1.0},
}};
constexpr size_t kInnerLip = 5; ///< the ring where the lips meet
constexpr size_t kOuterLip = 8; ///< the last of their colour

head_vertex RingVertex(const mouth_ring& ring, size_t step) {
    const double turn = 2 * kPi * static_cast<double>(step) / kAround;
    const double across = ring.angle * std::cos(turn);
    const double above = ring.angle * std::sin(turn) * ring.flatness;
    const double angle = std::hypot(across, above);
    const head_vector forward = {0, -std::sin(kMouthTilt), std::cos(kMouthTilt)};
    const head_vector up = {0, std::cos(kMouthTilt), std::sin(kMouthTilt)};
    const head_vector aside = {1, 0, 0};
    const double share = std::sin(angle) / std::max(angle, 1e-9);
    const head_vector direction =
        forward * std::cos(angle) + aside * (across * share) + up * (above * share);

    head_vertex vertex;
    // Lips are fullest in the middle; within the mouth all goes straight back.
    const double fullness =
        ring.outMetres > 0 ? ring.outMetres * (1 - 0.8 * std::pow(std::cos(turn), 4)) : 0.0;
    vertex.place =
        SkullAt(direction) + forward * fullness + head_vector{0, 0, std::min(ring.outMetres, 0.0)};
    const double reach = std::hypot(kSkull[1] * up[1], kSkull[2] * up[2]);
    vertex.across = across / 0.28 * kMouthHalfWidth;
    vertex.above = above * reach;
    vertex.upper = Smooth(0.0, 0.45, std::sin(turn));
    vertex.lower = Smooth(0.0, 0.45, -std::sin(turn));
    vertex.jaw = Smooth(0.30, -0.45, std::sin(turn)) * Smooth(-0.02, 0.05, vertex.place[2]);
    vertex.surface = ring.surface;
    return vertex;
}

/// A grid of rows of `columns` vertices; a closed one joins its last column to its first.
void AddGrid(size_t firstVertex, size_t rows, size_t columns, bool isClosed, head_part* part) {
    const size_t quads = isClosed ? columns : columns - 1;
    for (size_t row = 0; row + 1 < rows; ++row) {
        for (size_t column = 0; column < quads; ++column) {
            const size_t next = (column + 1) % columns;
            const size_t corners[] = {row * columns + column, (row + 1) * columns + column,
                                      (row + 1) * columns + next, row * columns + next};
            for (const size_t corner : {0, 1, 2, 0, 2, 3}) {
                part->triangles.push_back(static_cast<uint16_t>(firstVertex + corners[corner]));
            }
        }
    }
}

head_part MakeRings(head_material material, size_t first, size_t last) {
    head_part part;
    part.material = material;
    for (size_t ring = first; ring <= last; ++ring) {
        for (size_t step = 0; step < kAround; ++step) {
            part.vertices.push_back(RingVertex(kRings[ring], step));
        }
    }
    AddGrid(0, last - first + 1, kAround, true, &part);
    return part;
}

struct sphere {
    head_vector middle;
    head_vector radii;
    double fromLatitude = -kPi / 2;
    double toLatitude = kPi / 2;
    double tilt = 0; ///< of its axis backwards, about x
};

void AddSphere(const sphere& shape, head_region region, double jaw, head_part* part) {
    constexpr size_t kRows = 9;
    constexpr size_t kColumns = 16;
    const size_t first = part->vertices.size();
    for (size_t row = 0; row < kRows; ++row) {
        const double latitude = shape.toLatitude + (shape.fromLatitude - shape.toLatitude) *
                                                       static_cast<double>(row) / (kRows - 1);
        for (size_t column = 0; column < kColumns; ++column) {
            const double longitude = 2 * kPi * static_cast<double>(column) / kColumns;
            const head_vector flat = {std::cos(latitude) * std::sin(longitude) * shape.radii[0],
                                      std::sin(latitude) * shape.radii[1],
                                      std::cos(latitude) * std::cos(longitude) * shape.radii[2]};
            const double c = std::cos(shape.tilt);
            const double s = std::sin(shape.tilt);
            head_vertex vertex;
            vertex.place = shape.middle + head_vector{flat[0], c * flat[1] + s * flat[2],
                                                      c * flat[2] - s * flat[1]};
            vertex.region = region;
            vertex.jaw = jaw;
            part->vertices.push_back(vertex);
        }
    }
    AddGrid(first, kRows, kColumns, true, part);
}

/// A curved row of teeth: from `gum` to `edge`, in front of the inside of the mouth.
void AddTeeth(double gum, double edge, head_region region, head_part* part) {
    constexpr size_t kColumns = 15;
    const head_vector middle = RingVertex(kRings[kInnerLip], kAround / 4).place;
    const size_t first = part->vertices.size();
    const double top = std::max(gum, edge);
    const double bottom = std::min(gum, edge);
    for (const double height : {top, (top + bottom) / 2, bottom}) {
        for (size_t column = 0; column < kColumns; ++column) {
            const double x = 0.024 * (2.0 * static_cast<double>(column) / (kColumns - 1) - 1);
            head_vertex vertex;
            vertex.place = middle + head_vector{x, height, -0.011 - 16 * x * x};
            vertex.region = region;
            vertex.jaw = region == head_region::lower_teeth ? 1.0 : 0.0;
            part->vertices.push_back(vertex);
        }
    }
    AddGrid(first, 3, kColumns, false, part);
}

head_part MakeTeeth() {
    head_part part;
    part.material = head_material::teeth;
    AddTeeth(0.011, 0.0030, head_region::upper_teeth, &part);
    AddTeeth(-0.011, -0.0035, head_region::lower_teeth, &part);
    return part;
}

template <class Add> head_part MakePart(head_material material, Add add) {
    head_part part;
    part.material = material;
    for (const double side : {1.0, -1.0}) {
        add(side, &part);
    }
    return part;
}

head_vector EyeAt(double side) {
    return {side * 0.030, 0.020, 0.0765};
}

} // namespace

std::vector<head_part> MakeHeadParts() {
    std::vector<head_part> parts;
    parts.push_back(MakeRings(head_material::mouth, 0, kInnerLip));
    parts.push_back(MakeRings(head_material::lips, kInnerLip, kOuterLip));
    parts.push_back(MakeRings(head_material::skin, kOuterLip, kRings.size() - 1));
    head_part& skin = parts.back();
    AddSphere({{0, -0.002, 0.095}, {0.0105, 0.020, 0.016}}, head_region::skin, 0, &skin);
    for (const double side : {1.0, -1.0}) {
        AddSphere({{side * 0.079, 0.002, 0.0}, {0.007, 0.023, 0.014}}, head_region::skin, 0, &skin);
        AddSphere({EyeAt(side), {0.0150, 0.0150, 0.0150}, 0.25, kPi / 2, 0.25}, head_region::lid, 0,
                  &skin);
    }
    parts.push_back(MakeTeeth());
    const head_vector mouth = RingVertex(kRings[kInnerLip], kAround / 4).place;
    head_part tongue;
    tongue.material = head_material::tongue;
    AddSphere({mouth + head_vector{0, -0.009, -0.030}, {0.017, 0.006, 0.020}}, head_region::tongue,
              1.0, &tongue);
    parts.push_back(tongue);
    parts.push_back(MakePart(head_material::white, [](double side, head_part* part) {
        AddSphere({EyeAt(side), {0.0138, 0.0138, 0.0138}}, head_region::skin, 0, part);
    }));
    parts.push_back(MakePart(head_material::iris, [](double side, head_part* part) {
        const head_vector front = EyeAt(side) + head_vector{0, 0, 0.0098};
        AddSphere({front, {0.0058, 0.0058, 0.0047}}, head_region::eye, 0, part);
    }));
    parts.push_back(MakePart(head_material::hair, [](double side, head_part* part) {
        AddSphere({{side * 0.031, 0.044, 0.0825}, {0.016, 0.0030, 0.0045}}, head_region::brow, 0,
                  part);
        if (side > 0) {
            AddSphere({{0, 0.004, -0.006}, {0.083, 0.117, 0.098}, 0.30, kPi / 2, 0.36},
                      head_region::skin, 0, part);
        }
    }));
    return parts;
}

std::vector<head_vector> NormalsOf(const head_part& part) {
    std::vector<head_vector> normals(part.vertices.size(), head_vector{});
    for (size_t i = 0; i + 2 < part.triangles.size(); i += 3) {
        const uint16_t* const corners = &part.triangles[i];
        const head_vector& a = part.vertices[corners[0]].place;
        const head_vector face =
            Cross(part.vertices[corners[1]].place - a, part.vertices[corners[2]].place - a);
        for (size_t k = 0; k < 3; ++k) {
            normals[corners[k]] = normals[corners[k]] + face;
        }
    }
    for (head_vector& normal : normals) {
        const double length = std::hypot(normal[0], normal[1], normal[2]);
        normal = length > 0 ? normal * (1 / length) : head_vector{0, 0, 1};
    }
    return normals;
}
