#pragma once

#include <string>
#include <vector>

#include "apps/tessarin/options/mouth_shapes.h"
#include "apps/tessarin/timed_result.h"

/// Rises when a reader of the JSON of before would misread the new one.
inline constexpr int kJsonVersion = 1;

/// The whole result as one JSON object; text that is not valid UTF-8 gets replacement characters.
/// docs/result.schema.json describes it.
std::string WriteJson(const timed_result& result);

/// One row per marker, in time order, after a row with the names of the columns.
std::string WriteTsv(const timed_result& result);

/// A Praat TextGrid with the tiers `words` and `phones`, both without gaps.
std::string WriteTextGrid(const timed_result& result);

/// Captions of one line each, as WebVTT with the time of every word, and as SRT.
std::string WriteWebVtt(const timed_result& result);
std::string WriteSrt(const timed_result& result);

/// A row a frame: its time in ms, and the weight of each phoneme that the track has.
std::string WriteCurvesCsv(const timed_result& result);

/// A row a frame: its time in ms, and the weight of each shape.
std::string WriteShapesCsv(const timed_result& result, const MouthShapes& shapes);

/// Switches in the layouts that 2-D tools read, with times in seconds.
std::string WriteSwitchesTsv(const timed_result& result, const MouthShapes& shapes, int holdMs);
std::string WriteSwitchesXml(const timed_result& result, const MouthShapes& shapes, int holdMs);
std::string WriteSwitchesJson(const timed_result& result, const MouthShapes& shapes, int holdMs);

/// Switches for a Moho switch layer, by frames from 1 on.
std::string WriteMohoSwitches(const timed_result& result, const MouthShapes& shapes, int holdMs);
