#pragma once

#include <string>

#include "apps/tessarin/pictures/canvas.h"

/// The bytes of a PNG file of the picture. Throws Failure.
std::string WritePng(const Canvas& picture);
