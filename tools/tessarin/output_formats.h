#pragma once

#include <string>

#include "tools/tessarin/timed_result.h"

/// The whole result as one JSON object; text that is not valid UTF-8 gets replacement characters.
std::string WriteJson(const timed_result& result);

/// One row a marker, in time order, behind a row with the names of the columns.
std::string WriteTsv(const timed_result& result);
