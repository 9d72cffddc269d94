#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/tessarin/options/mouth_shapes.h"
#include "apps/tessarin/timed_result.h"

struct speaking_asset;

/// How one output is written, beside the result itself.
struct write_settings {
    MouthShapes shapes; ///< empty for a format without shapes
    int holdMs = 0;     ///< of switches
    std::optional<double> tolerance;
    std::shared_ptr<const speaking_asset> into; ///< null for a head of our own
    uint32_t alphabet = 0;                      ///< a tessarin_alphabet, of phonemes
    std::string file;                           ///< that is written, for what refers to others
};

/// Rises when a reader of the JSON of before would misread the new one.
inline constexpr int kJsonVersion = 1;

/// The whole result as one JSON object; text that is not valid UTF-8 gets replacement characters.
/// docs/result.schema.json describes it. With an alphabet beside the labels, phonemes have a
/// symbol.
std::string WriteJson(const timed_result& result, uint32_t alphabet = 0);

/// One row per marker, in time order, after a row with the names of the columns.
std::string WriteTsv(const timed_result& result, uint32_t alphabet);

/// A Praat TextGrid with the tiers `words` and `phones`, both without gaps.
std::string WriteTextGrid(const timed_result& result, uint32_t alphabet);

/// Captions of one line each, as WebVTT with the time of every word, and as SRT.
std::string WriteWebVtt(const timed_result& result);
std::string WriteSrt(const timed_result& result);

/// A row a frame: its time in ms, and the weight of each phoneme that the track has.
std::string WriteCurvesCsv(const timed_result& result, uint32_t alphabet);

/// A row a frame: its time in ms, and the weight of each shape.
std::string WriteShapesCsv(const timed_result& result, const MouthShapes& shapes);

/// Switches in the layouts that 2-D tools read, with times in seconds.
std::string WriteSwitchesTsv(const timed_result& result, const MouthShapes& shapes, int holdMs);
std::string WriteSwitchesXml(const timed_result& result, const MouthShapes& shapes, int holdMs);
std::string WriteSwitchesJson(const timed_result& result, const MouthShapes& shapes, int holdMs);

/// Switches for a Moho switch layer, by frames from 1 on.
std::string WriteMohoSwitches(const timed_result& result, const MouthShapes& shapes, int holdMs);

/// A glTF asset whose morph targets speak, as a binary file or as text.
std::string WriteGlb(const timed_result& result, const write_settings& settings);
std::string WriteGltf(const timed_result& result, const write_settings& settings);

/// The expressions of a VRM 1.0 model, as an animation of its own file.
std::string WriteVrmAnimation(const timed_result& result, const write_settings& settings);

/// The table of face capture apps: a row a frame with its timecode, 52 blend shapes, and the turns
/// of head and eyes, which are 0. Throws Failure for a rate that has no timecodes.
std::string WriteCaptureCsv(const timed_result& result, const MouthShapes& shapes);

/// Label tracks of Audacity: beginning and end in seconds, and a word or a phoneme.
std::string WriteWordLabels(const timed_result& result);
std::string WritePhonemeLabels(const timed_result& result, uint32_t alphabet);

/// An annotation document of ELAN with the tiers `words` and `phones`.
std::string WriteElan(const timed_result& result, const write_settings& settings);

/// The words as a page with an element for each, and the times at which a reader of SMIL speaks
/// them; `settings.file` is where the times are written, and the page stands beside it.
std::string WriteWordPage(const timed_result& result, const write_settings& settings);
std::string WriteSmil(const timed_result& result, const write_settings& settings);
