#include "apps/tessarin/gltf/head_moves.h"

#include <algorithm>
#include <cmath>

namespace {

/// What a blend shape takes hold of.
enum class grip {
    jaw,        ///< all that hangs on it
    hinge,      ///< the same, by the angle of its joint in radians
    upper_lip,  //
    lower_lip,  //
    corner,     ///< of the mouth
    narrowing,  ///< of the lips, to the middle of the mouth
    cheek,      //
    nose,       ///< the skin beside it
    tongue_tip, //
    eye,        //
    lid,        //
    brow_inside,
    brow_outside,
};

enum class side { both, left, right };

struct head_move {
    std::string_view shape;
    grip hold;
    side where;
    head_vector by; ///< metres; x is outwards where the grip has two sides
};

constexpr head_move kMoves[] = {
    {"jawOpen", grip::hinge, side::both, {0.30, 0, 0}},
    {"jawForward", grip::jaw, side::both, {0, 0, 0.008}},
    {"jawLeft", grip::jaw, side::both, {0.009, 0, 0}},
    {"jawRight", grip::jaw, side::both, {-0.009, 0, 0}},
    {"mouthClose", grip::lower_lip, side::both, {0, 0.020, 0.006}},
    {"mouthClose", grip::upper_lip, side::both, {0, -0.004, 0}},
    {"mouthFunnel", grip::upper_lip, side::both, {0, 0.004, 0.009}},
    {"mouthFunnel", grip::lower_lip, side::both, {0, -0.005, 0.009}},
    {"mouthFunnel", grip::narrowing, side::both, {0.28, 0, 0.003}},
    {"mouthPucker", grip::upper_lip, side::both, {0, 0.001, 0.011}},
    {"mouthPucker", grip::lower_lip, side::both, {0, -0.001, 0.011}},
    {"mouthPucker", grip::narrowing, side::both, {0.48, 0, 0.005}},
    {"mouthLeft", grip::upper_lip, side::both, {0.008, 0, 0}},
    {"mouthLeft", grip::lower_lip, side::both, {0.008, 0, 0}},
    {"mouthRight", grip::upper_lip, side::both, {-0.008, 0, 0}},
    {"mouthRight", grip::lower_lip, side::both, {-0.008, 0, 0}},
    {"mouthSmileLeft", grip::corner, side::left, {0.008, 0.010, -0.005}},
    {"mouthSmileRight", grip::corner, side::right, {0.008, 0.010, -0.005}},
    {"mouthSmileLeft", grip::cheek, side::left, {0.001, 0.004, 0.003}},
    {"mouthSmileRight", grip::cheek, side::right, {0.001, 0.004, 0.003}},
    {"mouthFrownLeft", grip::corner, side::left, {0.002, -0.010, 0}},
    {"mouthFrownRight", grip::corner, side::right, {0.002, -0.010, 0}},
    {"mouthDimpleLeft", grip::corner, side::left, {0.004, 0.001, -0.007}},
    {"mouthDimpleRight", grip::corner, side::right, {0.004, 0.001, -0.007}},
    {"mouthStretchLeft", grip::corner, side::left, {0.010, -0.002, -0.005}},
    {"mouthStretchRight", grip::corner, side::right, {0.010, -0.002, -0.005}},
    {"mouthRollLower", grip::lower_lip, side::both, {0, 0.004, -0.010}},
    {"mouthRollUpper", grip::upper_lip, side::both, {0, -0.003, -0.009}},
    {"mouthShrugLower", grip::lower_lip, side::both, {0, 0.005, 0.004}},
    {"mouthShrugUpper", grip::upper_lip, side::both, {0, 0.004, 0.003}},
    {"mouthPressLeft", grip::upper_lip, side::left, {0, -0.002, -0.004}},
    {"mouthPressRight", grip::upper_lip, side::right, {0, -0.002, -0.004}},
    {"mouthPressLeft", grip::lower_lip, side::left, {0, 0.002, -0.004}},
    {"mouthPressRight", grip::lower_lip, side::right, {0, 0.002, -0.004}},
    {"mouthLowerDownLeft", grip::lower_lip, side::left, {0, -0.010, 0.002}},
    {"mouthLowerDownRight", grip::lower_lip, side::right, {0, -0.010, 0.002}},
    {"mouthUpperUpLeft", grip::upper_lip, side::left, {0, 0.008, 0.001}},
    {"mouthUpperUpRight", grip::upper_lip, side::right, {0, 0.008, 0.001}},
    {"cheekPuff", grip::cheek, side::both, {0.009, 0, 0.006}},
    {"cheekSquintLeft", grip::cheek, side::left, {0, 0.006, 0.003}},
    {"cheekSquintRight", grip::cheek, side::right, {0, 0.006, 0.003}},
    {"noseSneerLeft", grip::nose, side::left, {0, 0.004, 0.001}},
    {"noseSneerRight", grip::nose, side::right, {0, 0.004, 0.001}},
    {"tongueOut", grip::tongue_tip, side::both, {0, 0.006, 0.034}},
    {"eyeBlinkLeft", grip::lid, side::left, {1.0, 0, 0}},
    {"eyeBlinkRight", grip::lid, side::right, {1.0, 0, 0}},
    {"eyeSquintLeft", grip::lid, side::left, {0.35, 0, 0}},
    {"eyeSquintRight", grip::lid, side::right, {0.35, 0, 0}},
    {"eyeWideLeft", grip::lid, side::left, {-0.3, 0, 0}},
    {"eyeWideRight", grip::lid, side::right, {-0.3, 0, 0}},
    {"eyeLookUpLeft", grip::eye, side::left, {0, 0.005, -0.001}},
    {"eyeLookUpRight", grip::eye, side::right, {0, 0.005, -0.001}},
    {"eyeLookDownLeft", grip::eye, side::left, {0, -0.005, -0.001}},
    {"eyeLookDownRight", grip::eye, side::right, {0, -0.005, -0.001}},
    {"eyeLookInLeft", grip::eye, side::left, {-0.005, 0, -0.001}},
    {"eyeLookInRight", grip::eye, side::right, {-0.005, 0, -0.001}},
    {"eyeLookOutLeft", grip::eye, side::left, {0.005, 0, -0.001}},
    {"eyeLookOutRight", grip::eye, side::right, {0.005, 0, -0.001}},
    {"browDownLeft", grip::brow_inside, side::left, {-0.002, -0.007, 0}},
    {"browDownRight", grip::brow_inside, side::right, {-0.002, -0.007, 0}},
    {"browInnerUp", grip::brow_inside, side::both, {0, 0.008, 0}},
    {"browOuterUpLeft", grip::brow_outside, side::left, {0, 0.008, 0}},
    {"browOuterUpRight", grip::brow_outside, side::right, {0, 0.008, 0}},
};

/// The joints of the jaw are beside the ears.
constexpr double kJointY = 0.0;
constexpr double kJointZ = 0.010;

constexpr double kEyeY = 0.020;
constexpr double kEyeZ = 0.0765;

double Bell(double distance, double width) {
    return std::exp(-distance * distance / (width * width));
}

/// 1 on the line between the lips and falling off from it.
double NearLips(const head_vertex& vertex) {
    if (vertex.region != head_region::skin || vertex.surface == 0) {
        return 0;
    }
    const double beyond = std::max(std::abs(vertex.across) - kMouthHalfWidth, 0.0);
    return vertex.surface * Bell(std::hypot(beyond, vertex.above), 0.016);
}

/// How much of a vertex is on a side; at the middle both have half of it.
double ShareOf(side where, double x) {
    const double left = std::clamp(0.5 + x / 0.016, 0.0, 1.0);
    return where == side::both ? 1.0 : where == side::left ? left : 1 - left;
}

double NearPoint(const head_vertex& vertex, const head_vector& point, double width) {
    if (vertex.region != head_region::skin || vertex.surface == 0) {
        return 0;
    }
    return Bell(std::hypot(std::abs(vertex.place[0]) - point[0], vertex.place[1] - point[1],
                           vertex.place[2] - point[2]),
                width);
}

double HoldOf(grip hold, const head_vertex& vertex) {
    const double outwards = std::abs(vertex.place[0]);
    switch (hold) {
    case grip::jaw:
    case grip::hinge:
        return vertex.jaw;
    case grip::upper_lip:
        return NearLips(vertex) * vertex.upper;
    case grip::lower_lip:
        return NearLips(vertex) * vertex.lower;
    case grip::corner:
        return vertex.surface *
               Bell(std::hypot(std::abs(vertex.across) - kMouthHalfWidth, vertex.above), 0.020);
    case grip::narrowing:
        return NearLips(vertex);
    case grip::cheek:
        return NearPoint(vertex, {0.045, -0.030, 0.065}, 0.026);
    case grip::nose:
        return NearPoint(vertex, {0.014, -0.012, 0.092}, 0.014);
    case grip::tongue_tip:
        return vertex.region == head_region::tongue ? 1 : 0;
    case grip::eye:
        return vertex.region == head_region::eye ? 1 : 0;
    case grip::lid:
        return vertex.region == head_region::lid ? 1 : 0;
    case grip::brow_inside:
        return vertex.region == head_region::brow ? std::clamp((0.046 - outwards) / 0.03, 0.0, 1.0)
                                                  : 0;
    default:
        return vertex.region == head_region::brow ? std::clamp((outwards - 0.016) / 0.03, 0.0, 1.0)
                                                  : 0;
    }
}

/// From a place to where a turn about an axis along x brings it.
head_vector Turned(const head_vector& place, double y, double z, double angle) {
    const double up = place[1] - y;
    const double out = place[2] - z;
    return {0, up * std::cos(angle) - out * std::sin(angle) - up,
            out * std::cos(angle) + up * std::sin(angle) - out};
}

head_vector MoveBy(const head_move& move, const head_vertex& vertex) {
    switch (move.hold) {
    case grip::hinge:
        return Turned(vertex.place, kJointY, kJointZ, move.by[0]);
    case grip::lid:
        return Turned(vertex.place, kEyeY, kEyeZ, move.by[0]);
    case grip::narrowing:
        return {-move.by[0] * vertex.place[0], 0,
                move.by[2] * std::abs(vertex.across) / kMouthHalfWidth};
    case grip::corner:
    case grip::cheek:
    case grip::nose:
    case grip::eye:
    case grip::brow_inside:
        return {vertex.place[0] < 0 ? -move.by[0] : move.by[0], move.by[1], move.by[2]};
    default:
        return move.by;
    }
}

} // namespace

head_vector MoveOf(const head_vertex& vertex, std::string_view shape) {
    head_vector sum{};
    for (const head_move& move : kMoves) {
        if (move.shape != shape) {
            continue;
        }
        const double hold = HoldOf(move.hold, vertex) * ShareOf(move.where, vertex.place[0]);
        const head_vector by = hold > 1e-3 ? MoveBy(move, vertex) : head_vector{};
        for (size_t i = 0; i < 3; ++i) {
            sum[i] += hold * by[i];
        }
    }
    return sum;
}
