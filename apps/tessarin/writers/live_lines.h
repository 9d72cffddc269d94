#pragma once

#include <string>

#include "apps/tessarin/options/mouth_shapes.h"
#include "tessarin/tessarin_c.h"

/// A JSON object in a line of its own: the stretch, its phonemes and its frames, all in
/// milliseconds since the audio began.
std::string WriteLiveJson(const tessarin_live_stretch& stretch);

/// The names of the columns of WriteLiveShapes.
std::string WriteShapesHeader(const MouthShapes& shapes);

/// A row a frame: when it begins, in milliseconds, and the weight of each shape of the map.
std::string WriteLiveShapes(const tessarin_live_stretch& stretch, const MouthShapes& shapes);
