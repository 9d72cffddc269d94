#pragma once

#include "apps/tessarin/pictures/canvas.h"
#include "apps/tessarin/pictures/drawn_mouth.h"

inline constexpr int kMouthWidth = 136;
inline constexpr int kMouthHeight = 150;

/// Paints a mouth and the face around it, as on the page of `view`, with its upper left corner at
/// (`left`, `top`).
void DrawMouth(const DrawnMouths& mouths, const drawn_mouth& mouth, int left, int top,
               Canvas& canvas);
