#pragma once

#include "apps/tessarin/pictures/canvas.h"
#include "apps/tessarin/timed_result.h"

/// A contact sheet: every third frame of the mouth track, drawn, with its time, its phoneme and its
/// word beneath. Throws Failure if there is nothing to draw, or more than a sheet can hold.
Canvas DrawMouthSheet(const timed_result& result);
