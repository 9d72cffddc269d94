#pragma once

#include <array>
#include <cstdint>
#include <vector>

/// A place or a move in metres: x to the left of the head, y up, z out of the face.
using head_vector = std::array<double, 3>;

/// What of the head a vertex belongs to, as far as it moves by itself.
enum class head_region { skin, upper_teeth, lower_teeth, tongue, eye, lid, brow };

/// A vertex, and where it stands as seen from the middle of the mouth.
struct head_vertex {
    head_vector place;
    head_region region = head_region::skin;
    double across = 0;  ///< from the middle of the mouth to its left, in metres; where it is lips
    double above = 0;   ///< the line between the lips
    double upper = 0;   ///< 1 where it goes with the upper lip, 0 at the corners
    double lower = 0;   ///< 1 where it goes with the lower lip
    double jaw = 0;     ///< 1 where it goes with the jaw
    double surface = 0; ///< 1 on the face, 0 deep in the mouth
};

enum class head_material { skin, lips, mouth, teeth, tongue, white, iris, hair };

/// What is of one material.
struct head_part {
    head_material material = head_material::skin;
    std::vector<head_vertex> vertices;
    std::vector<uint16_t> triangles;
};

/// Half the width of the mouth, in metres.
inline constexpr double kMouthHalfWidth = 0.026;

/// A simple head, its mouth closed.
std::vector<head_part> MakeHeadParts();

/// The normal of each vertex.
std::vector<head_vector> NormalsOf(const head_part& part);
